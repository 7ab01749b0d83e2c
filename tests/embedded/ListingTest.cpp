#include "embedded/Gauge.h"

namespace tracery::test {

class ListingTest : public EmbeddedTest {};

TEST_F(ListingTest, ClassesAreShownInTheOrderTheyBecameKnownWithTheirOwnMembers)
{
    host->defineClass(
        {.name = "my.Display",
         .superclass = "lab.Gauge",
         .isAbstract = true,
         .constructor = [](HostInputs, std::size_t) { return HostOutputs(); },
         .properties = {{"Title", "asciiString", nullptr, Access::public_, Access::protected_, "shown above"}},
         .methods = {{"draw"}}});
    std::string text;
    for (const embedded::ClassListing& listing : host->listClasses())
        text += embedded::formatClass(listing);
    EXPECT_EQ(text, R"(handle, abstract
  methods
    public  delete(...)
veltra.graphics.animation.ScopeLineAnimator < handle
  properties
    Parent  any  read-write  0  what the line is drawn in; -1 for nothing
  methods
    public static  addXY(object, double)
    public static  [points double matrix] = getXY(object)
    public static  reset(object)
lab.Gauge < lab.Base
  constructor
    [level double scalar] = Gauge(double scalar, [double scalar])
  methods
    protected  [level double scalar] = onChange(double scalar, [double scalar])
    public     [level double scalar] = twice(double scalar, [double scalar])
    public     [level double scalar] = twice()
lab.Base < handle, abstract, hidden
  properties
    Level    double scalar             read-write                    3022  "The Level"
    Reading  double scalar             read-only                     3022  "The Reading"
    Secret   double scalar             get protected, set protected  3022  "The Secret"
    Mode     ModeEnum {0 Auto, 2 Off}  read-write                    3022  "The Mode"
  methods
    protected abstract  [level double scalar] = onChange(double scalar, [double scalar])
  methods of the host
    enable
my.Display < lab.Gauge, abstract
  constructor
    Display(...)
  properties
    Title  asciiString  get public, set protected  0  shown above
  methods
    public abstract  draw(...)
)");
}

} // namespace tracery::test
