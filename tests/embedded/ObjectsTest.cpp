#include "embedded/Gauge.h"

#include <map>

namespace tracery::test {

namespace {

struct Trial {
    const char* error;
    std::function<void()> call;
};

void expectErrors(const std::vector<Trial>& trials)
{
    for (std::size_t i = 0; i < trials.size(); ++i)
        EXPECT_EQ(failure(trials[i].call), trials[i].error) << "trial " << i;
}

/// A body that returns a constant.
embedded::HostBody constant(double value)
{
    return [value](HostInputs, std::size_t) { return outputs(number(value)); };
}

} // namespace

class ObjectsTest : public EmbeddedTest {};

TEST_F(ObjectsTest, ConstructionMakesTheLibraryObjectAndThenCallsTheConstructor)
{
    const HostArrayPtr five = number(5);
    const HostArray* inputs[] = {five.get()};
    const HostObjectRef gauge = host->construct("lab.Gauge", inputs);
    EXPECT_EQ(get(gauge, "Level"), 5);
    EXPECT_EQ(gaugeOf(gauge).self.lock(), gauge);
    EXPECT_STREQ(gauge->className(), "lab.Gauge");
    EXPECT_TRUE(gauge->isA("lab.Base") && gauge->isA("handle") && !gauge->isA("lab"));
    EXPECT_EQ(numberIn(host->callStatic("lab.Gauge", "twice", inputs).at(0).get()), 10);
    EXPECT_EQ(numberIn(host->call(gauge, "twice").at(0).get()), 10);
    EXPECT_EQ(host->objects().objectOfHandle(host->handleOf(gauge)), gauge);
    const HostObjectRef wrapped = host->objects().wrapPayload("lab.Base", std::make_unique<GaugePayload>(nullptr));
    ++census.made;
    EXPECT_EQ(get(wrapped, "Level"), 0);
    const double whole = host->handleOf(gauge); // a later object has a higher one
    for (const double handle : {-1.0, 0.0, whole + 0.5, whole + 2, 1e300, getNaN(), getInf()})
        EXPECT_EQ(host->objects().objectOfHandle(handle), nullptr) << handle;
    EXPECT_EQ(host->getNumberOfLiveObjects(), 2U);
}

TEST_F(ObjectsTest, APublishedClassCanBeTakenBack)
{
    COSPackage& lab = host->objects().rootPackage().findOrCreatePackage("lab");
    host->defineClass({.name = "lab.Own"});
    for (const char* name : {"Gauge", "Own", "Nobody"})
        lab.removeClass(name);
    EXPECT_EQ(host->objects().findClass("lab.Gauge"), nullptr);
    EXPECT_NE(host->objects().findClass("lab.Own"), nullptr) << "the program's";
    lab.addClass(std::make_unique<GaugeClassInfo>(census, "Gauge"));
    EXPECT_NE(host->construct("lab.Gauge"), nullptr);
}

TEST_F(ObjectsTest, ConstructionThatFailsLeavesNothing)
{
    HostObjectRef kept;
    host->defineClass({.name = "my.Orphan", .superclass = "my.Nobody"});
    host->defineClass({.name = "my.Egg", .superclass = "my.Hen"});
    host->defineClass({.name = "my.Hen", .superclass = "my.Egg"});
    host->defineClass({.name = "my.Idle", .superclass = "lab.Base"});
    host->defineClass({.name = "my.Plain", .superclass = ""});
    host->defineClass(
        {.name = "my.Bad", .superclass = "lab.Gauge", .constructor = [&](HostInputs in, std::size_t) -> HostOutputs {
             kept = omGetArrayElement(in[0], 0);
             throw Error(errors::EmptyInput);
         }});
    const HostArray* one[] = {nullptr};
    expectErrors(
        {{"UnknownClass", [&] { host->construct("lab.Nothing"); }},
         {"UnknownClass", [&] { host->construct("my.Orphan"); }},
         {"InheritanceCycle", [&] { host->construct("my.Egg"); }},
         {"AbstractClass", [&] { host->construct("lab.Base"); }},
         {"AbstractClass", [&] { host->construct("handle"); }},
         {"MissingMethod", [&] { host->construct("my.Idle"); }},
         {"InvalidNumberOfArguments", [&] { host->construct("my.Plain", one); }},
         {"EmptyInput", [&] { host->construct("my.Bad"); }},
         {"InvalidObject", [&] { host->objects().wrapPayload("lab.Gauge", nullptr); }},
         {"InvalidObject", [&] { host->objects().wrapPayload("my.Plain", std::make_unique<GaugePayload>(nullptr)); }}});
    EXPECT_FALSE(host->isValid(kept));
    EXPECT_EQ(census.returned, 1);
    kept.reset();
    EXPECT_EQ(host->getNumberOfLiveObjects(), 0U);
}

TEST_F(ObjectsTest, DefinitionsAreCheckedAndAFailedPackageLeavesNothing)
{
    class Twice final : public COSPackageInfo {
    public:
        explicit Twice(Census& census) : census_(census) {}
        COSNameID getName() const override { return "pair.inner"; }
        void addClasses(COSPackage& package) const override
        {
            package.findOrCreatePackage("more");
            for (int i = 0; i < 2; ++i)
                package.addClass(std::make_unique<GaugeClassInfo>(census_, "Gauge"));
        }

    private:
        Census& census_;
    };
    const std::size_t before = host->listClasses().size();
    host->objects().rootPackage().findOrCreatePackage("pair").removeClient(host->objects().publicClient());
    const std::shared_ptr<const HostArray> text = HostArrayPtr(createString("text"));
    expectErrors({{"DuplicateClass", [&] { host->objects().addPackage(std::make_unique<Twice>(census)); }},
                  {"DuplicateClass", [&] { host->defineClass({.name = "handle"}); }},
                  {"InvalidName", [&] { host->defineClass({.name = "a..b"}); }},
                  {"InvalidName", [&] { host->objects().rootPackage().findOrCreatePackage(""); }},
                  {"DuplicateMember",
                   [&] {
                       host->defineClass({.name = "A", .methods = {{"m"}, {"m"}}});
                   }},
                  {"InvalidTypeString",
                   [&] {
                       host->defineClass({.name = "A", .properties = {{"P", "number"}}});
                   }},
                  {"InvalidArgumentType", [&] {
                       host->defineClass({.name = "A", .properties = {{"P", "double", text}}});
                   }}});
    EXPECT_EQ(host->listClasses().size(), before);
    EXPECT_EQ(host->objects().findClass("pair.inner.Gauge"), nullptr);
    for (const char* package : {"pair", "pair.inner", "pair.inner.more"})
        EXPECT_EQ(host->objects().findPackage(package), nullptr) << package;
    EXPECT_NE(host->objects().findPackage("veltra.graphics"), nullptr);
}

TEST_F(ObjectsTest, AccessHoldsForProgramsAndNotForTheLibrary)
{
    const HostObjectRef gauge = host->construct("lab.Gauge");
    const HostArrayPtr two = number(2), text(createString("2"));
    expectErrors({{"UnknownProperty", [&] { host->get(gauge, "level"); }},
                  {"AccessDenied", [&] { host->get(gauge, "Secret"); }},
                  {"AccessDenied", [&] { host->set(gauge, "Secret", two.get()); }},
                  {"ReadOnlyProperty", [&] { host->set(gauge, "Reading", two.get()); }},
                  {"InvalidArgumentType", [&] { host->set(gauge, "Level", text.get()); }},
                  {"InvalidArgumentType", [&] { host->set(gauge, "Level", nullptr); }},
                  {"AccessDenied", [&] { host->call(gauge, "onChange"); }},
                  {"UnknownMethod", [&] { host->call(gauge, "Gauge"); }},
                  {"UnknownMethod", [&] { host->callStatic("lab.Gauge", "delete"); }},
                  {"MissingMethod", [&] { host->call(gauge, "enable"); }},
                  {"UnknownClass", [&] { host->callStatic("lab.Nothing", "twice"); }}});
    EXPECT_EQ(get(gauge, "Level"), 1);
    EXPECT_EQ(numberIn(host->objects().callMethod(gauge, "onChange", {}, 1).at(0).get()), 7);
    EXPECT_EQ(numberIn(host->objects().getProperty(gauge, "Secret").get()), 1);
    host->setOwn(gauge, "Reading", two.get());
    EXPECT_EQ(get(gauge, "Reading"), 2);
}

TEST_F(ObjectsTest, TheMostDerivedBodyWinsAndConstructorsOfAncestorsCanBeCalled)
{
    const auto construct = [this](HostInputs in, std::size_t) {
        return host->objects().callMethod(omGetArrayElement(in[0], 0), "Gauge", in.subspan(1), 0);
    };
    host->defineClass({.name = "my.Top", .superclass = "my.Mid", .methods = {{"who", constant(3)}, {"still"}}});
    host->defineClass({.name = "my.Mid",
                       .superclass = "lab.Gauge",
                       .constructor = construct,
                       .methods = {{"who", constant(2)}, {"still", constant(4)}, {"onChange", constant(5)}}});
    const HostArrayPtr nine = number(9);
    const HostArray* inputs[] = {nine.get()};
    const HostObjectRef top = host->construct("my.Top", inputs);
    EXPECT_EQ(get(top, "Level"), 9);
    const std::map<std::string, double> expected{{"who", 3}, {"still", 4}, {"onChange", 5}};
    for (const auto& [method, value] : expected)
        EXPECT_EQ(numberIn(host->call(top, method).at(0).get()), value) << method;
    EXPECT_EQ(numberIn(host->call(top, "twice", inputs).at(0).get()), 18);
    EXPECT_TRUE(host->objects().hasMethod(top, "onChange"));
    EXPECT_FALSE(host->objects().hasMethod(top, "enable"));
}

TEST_F(ObjectsTest, HostPropertiesAreConvertedAndEachObjectHasItsOwn)
{
    const std::shared_ptr<const HostArray> three = number(3);
    host->defineClass({.name = "my.Note",
                       .properties = {{"Size", "double scalar", three},
                                      {"Any"},
                                      {"Fixed", "any", three, Access::public_, Access::private_}}});
    const HostObjectRef a = host->construct("my.Note"), b = host->construct("my.Note");
    const HostArrayPtr flag(createLogicalScalar(true)), text(createString("x"));
    host->set(a, "Size", flag.get());
    host->set(a, "Any", text.get());
    EXPECT_TRUE(isDouble(host->get(a, "Size").get()));
    EXPECT_EQ(get(a, "Size"), 1);
    EXPECT_EQ(get(b, "Size"), 3);
    EXPECT_EQ(host->get(b, "Any"), nullptr);
    host->set(a, "Any", nullptr);
    EXPECT_EQ(host->get(a, "Any"), nullptr);
    expectErrors({{"InvalidArgumentType", [&] { host->set(a, "Size", text.get()); }},
                  {"ReadOnlyProperty", [&] { host->set(a, "Fixed", text.get()); }}});
    EXPECT_EQ(get(a, "Size"), 1);
}

TEST_F(ObjectsTest, MissingDeletedAndForeignObjectsAreIdentifiedErrors)
{
    EmbeddedHost other;
    publish(other);
    const HostObjectRef deleted = host->construct("lab.Gauge");
    host->deleteObject(deleted);
    EXPECT_EQ(census.returned, 1);
    for (const HostObjectRef& object : {HostObjectRef(), deleted, other.construct("lab.Gauge")}) {
        EXPECT_FALSE(host->isValid(object));
        EXPECT_FALSE(host->objects().hasMethod(object, "onChange"));
        expectErrors({{"InvalidObject", [&] { host->get(object, "Level"); }},
                      {"InvalidObject", [&] { host->set(object, "Level", nullptr); }},
                      {"InvalidObject", [&] { host->call(object, "twice"); }},
                      {"InvalidObject", [&] { host->handleOf(object); }},
                      {object == deleted ? "none" : "InvalidObject", [&] { host->deleteObject(object); }},
                      {object == deleted ? "none" : "InvalidObject", [&] { host->call(object, "delete"); }}});
    }
}

TEST_F(ObjectsTest, BodiesMayDeleteTheirObjectDefineClassesAndCallBack)
{
    const auto body = [this](HostInputs in, std::size_t) {
        EXPECT_EQ(Host::current(), host.get());
        const HostObjectRef self = omGetArrayElement(in[0], 0);
        const auto held = self->payload();
        host->call(self, "delete");
        EXPECT_EQ(self->payload(), nullptr);
        EXPECT_EQ(census.returned, 0) << "held here";
        host->defineClass({.name = "my.New", .superclass = "lab.Gauge"});
        return outputs(host->get(host->construct("my.New"), "Level"));
    };
    host->defineClass({.name = "my.Odd", .superclass = "lab.Gauge", .methods = {{"go", body}}});
    const HostObjectRef odd = host->construct("my.Odd");
    EXPECT_EQ(numberIn(host->call(odd, "go").at(0).get()), 1);
    EXPECT_FALSE(host->isValid(odd));
    EXPECT_EQ(census.returned, 2);
}

TEST_F(ObjectsTest, TheHostMayGoBeforeItsObjects)
{
    host->defineClass({.name = "my.Node", .superclass = "lab.Gauge", .properties = {{"Next", "handle"}}});
    const HostObjectRef a = host->construct("my.Node"), b = host->construct("my.Node");
    host->set(a, "Next", omCreateScalar(b).get());
    host->set(b, "Next", omCreateScalar(a).get());
    host->defineClass(
        {.name = "my.Keeper", .methods = {{"keep", [a](HostInputs, std::size_t) { return HostOutputs(); }}}});
    const HostObjectRef keeper = host->construct("my.Keeper");
    const std::weak_ptr<COSInterface> watch = a;
    host.reset();
    EXPECT_EQ(census.returned, 2);
    EXPECT_EQ(a->payload(), nullptr);
    EXPECT_TRUE(a->isA("lab.Base"));
    EXPECT_EQ(a.use_count(), 1) << "neither the cycle nor the body holds it";
}

} // namespace tracery::test
