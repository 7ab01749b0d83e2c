// Graphics of one's own: a host whose line animator draws into them. The library finds the animator's class by its name
// and hands it the points of each line, thinned to the columns of the display; here they become text.
// Prints:
//    |   ******                  ******                   ******                  *|
//    | ***     ***             ***     ***             ***     ***             *** |
//    |*          ***         ***         ***         ***         ***          **   |
//    |             ***     ***             ***     ***             ***     ***     |
//    |               ******                   ******                  ******       |
#include "BareHost.h"

#include <tracery/TimeScopeLine.h>
#include <tracery/host/Arrays.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace tracery;

namespace {
const char* const kAnimator = "veltra.graphics.animation.ScopeLineAnimator";
/// The animator's class, and its only object, the line.
struct Line : hostobj::COSClass, hostobj::COSInterface {
    hostobj::COSNameID getName() const override { return kAnimator; }
    const char* className() const override { return kAnimator; }
    bool isA(const hostobj::COSNameID& name) const override { return name == kAnimator; }
    std::shared_ptr<hostobj::InstancePayload> payload() const override { return nullptr; }
};
struct TextGraphics : BareHost {
    hostobj::COSClassPtr findClass(const Name& name) const override { return name == kAnimator ? line : nullptr; }
    Outputs callStaticMethod(const Name&, const Name& method, Inputs inputs, std::size_t) override
    {
        auto point = realValues(inputs[1]).begin(); // after the line: times and values in turn
        for (std::uint64_t i = 0; method == "addXY" && i < getN(inputs[1]); ++i, point += 2)
            rows.at(static_cast<std::size_t>(std::lround(2 - 2 * point[1]))).at(std::size_t(point[0] * 77)) = '*';
        return {};
    }
    std::shared_ptr<Line> line = std::make_shared<Line>();
    std::vector<std::string> rows = std::vector(5, std::string(77, ' '));
};
} // namespace

int main()
{
    TextGraphics host;
    const HostScope attached(host);
    TimeScopeLine line; // looks the animator up
    line.setLine(hostobj::omCreateScalar(host.line).get());
    const HostArrayPtr points = makeMatrix(2, 100000);
    auto point = realValues(points.get()).begin();
    for (int i = 0; i < 100000; ++i) {
        *point++ = i / 1e5;
        *point++ = std::sin(20 * i / 1e5);
    }
    line.plotData(points.get(), true, 77); // 77 columns a second
    for (const std::string& row : host.rows)
        std::printf("|%s|\n", row.c_str());
    return host.rows[0][6] == '*' && host.rows[4][18] == '*' ? 0 : 1;
}
