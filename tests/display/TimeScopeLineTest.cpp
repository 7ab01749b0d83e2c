#include "support/Expect.h"
#include "support/TestHost.h"

#include <tracery/TimeScopeLine.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <random>

using namespace tracery;
using namespace tracery::test;

namespace {

using Doubles = std::vector<double>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

/// A line at a host whose animator answers `drawn` and remembers what it was asked and given.
class TimeScopeLineTest : public ::testing::Test {
protected:
    TimeScopeLineTest()
    {
        host.onStaticCall = [this](std::string call, HostInputs inputs, std::size_t wanted) {
            calls.push_back(call.substr(call.rfind('.') + 1));
            EXPECT_EQ(call, host.knownClass.text() + "." + calls.back());
            EXPECT_EQ(wanted, calls.back() == "getXY" ? 1U : 0U);
            EXPECT_EQ(inputs[0], line->getLine());
            EXPECT_EQ(getArrayScope(inputs[0]), HostArrayScope::persistent);
            if (inputs.size() == 2 && inputs[1] != whole.get()) {
                EXPECT_EQ(getArrayScope(inputs[1]), HostArrayScope::persistent);
            }
            if (replacesLine)
                line->setLine(objectArray({graphics}).get());
            EXPECT_EQ(omGetArrayElement(inputs[0], 0), graphics);
            added = inputs.size() < 2 ? Doubles() : inputs[1] == whole.get() ? Doubles{77} : realOf(inputs[1]);
            return std::move(drawn);
        };
        host.knownClass = "veltra.graphics.animation.ScopeLineAnimator";
        line.emplace();
    }
    Doubles widened(Doubles y, HostArrayPtr points, double from, bool split = false, std::size_t p = 0,
                    std::size_t q = 0)
    {
        line->setLine(objectArray({graphics}).get());
        drawn.clear();
        drawn.push_back(std::move(points));
        line->resetLineYExtents(y.data(), from, split, p, q);
        return y;
    }

    TestHost host; // it throws when an object is released, which the end of a line does not pass on
    std::optional<HostScope> scope{host};
    HostObjectRef graphics = std::make_shared<FakeObject<int>>();
    std::vector<std::string> calls;
    HostOutputs drawn;
    HostArrayPtr whole = matrix(2, 4, {0, 1, 0.1, 5, 0.2, -3, 1, 0});
    Doubles added;
    bool replacesLine = false;
    std::optional<TimeScopeLine> line;
};

TEST_F(TimeScopeLineTest, DrawsWholeOrThinnedOnceThereIsALine)
{
    line->plotData(whole.get(), false, 1);
    line->reset();
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(line->getSLA(), nullptr);
    line->setLine(objectArray({graphics}).get());
    line->setLine(nullptr);
    line->setLine(line->getLine());
    EXPECT_EQ(line->getSLA(), graphics);
    EXPECT_EQ(graphics.use_count(), 2);
    line->plotData(whole.get(), false, 1);
    EXPECT_EQ(added, Doubles{77}) << "the array itself";
    line->plotData(nullptr, false, 1);
    line->plotData(whole.get(), true, 1);
    EXPECT_EQ(added, realOf(whole.get())) << "each point is an extreme";
    line->plotData(matrix(2, 1, {1.1, 4}).get(), true, 1);
    EXPECT_EQ(added, Doubles{}) << "the column that the call before ended in goes on";
    replacesLine = true; // in the middle of a call
    line->reset();
    line->plotData(matrix(2, 1, {9, 4}).get(), true, 1);
    line->resetLineYExtents(Doubles(4).data(), 0, false, 0, 0);
    EXPECT_EQ(calls, (std::vector<std::string>{"addXY", "addXY", "addXY", "reset", "addXY", "getXY"}));
}

TEST_F(TimeScopeLineTest, ALineThatEndsReleasesItsObjectAtItsHostIfThatIsAttached)
{
    using Objects = std::vector<COSInterfacePtr>;
    TestHost other;
    line.emplace(); // never had a line
    line->setLine(objectArray({std::make_shared<FakeObject<int>>()}).get());
    line->setLine(objectArray({graphics, nullptr}).get());
    EXPECT_EQ(host.released, Objects());
    {
        const HostScope inner(other);
        line.emplace();
        EXPECT_EQ(std::exchange(host.released, {}), Objects{graphics}) << "also when another host is the current one";
    }
    line->setLine(objectArray({graphics}).get());
    scope.reset();
    line.reset();
    EXPECT_EQ(host.released, Objects());
    EXPECT_EQ(graphics.use_count(), 1);
}

TEST(TimeScopeLineWithoutHostTest, OnlyDrawingNeedsAHost)
{
    TimeScopeLine line;
    line.setLine(row({1}).get());
    EXPECT_EQ(line.getTransform(), nullptr);
    EXPECT_EQ(realOf(HostArrayPtr(line.getLineThinData(row({3, 2, 5, 4}).get(), 1, 1, false)).get()), (Doubles{3, 2}));
    EXPECT_EQ(failure([&] { line.plotData(row({9, 2}).get(), true, 1); }), "NoHost");
    EXPECT_EQ(realOf(HostArrayPtr(line.getLineThinData(row({9.1, 4}).get(), 1, 1, true)).get()), (Doubles{9.1, 4}))
        << "the points that were not drawn opened no column";
    using Line = TimeScopeLine;
    const std::pair<double (Line::*)(int) const, void (Line::*)(int, double)> pairs[] = {
        {&Line::getPixelMinMaxValue, &Line::setPixelMinMaxValue},
        {&Line::getPixelMinMaxImgValue, &Line::setPixelMinMaxImgValue},
        {&Line::getPixelMinMaxTimeValue, &Line::setPixelMinMaxTimeValue}};
    for (const auto& [get, set] : pairs) {
        EXPECT_EQ((line.*get)(1), -kInf);
        (line.*set)(0, 3);
        (line.*set)(2, 4);
        EXPECT_EQ((line.*get)(0), 3);
        EXPECT_TRUE(std::isnan((line.*get)(2)));
    }
    line.initDataThinningMinMax();
    for (const auto& [get, set] : pairs)
        EXPECT_EQ((line.*get)(0), kInf);
}

TEST_F(TimeScopeLineTest, ExtentsWidenAsThePlainRuleSays)
{
    std::mt19937 random(3);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    const auto value = [&] { return below(6) == 0 ? kNaN : below(40) == 0 ? kInf : below(21) - 10.0; };
    for (unsigned round = 0; round < 5000; ++round) {
        Doubles pairs, times, values, y{value(), value(), value(), value()};
        for (double time = below(3); times.size() < round % 9; time += below(3)) {
            times.push_back(time);
            values.push_back(value());
            pairs.insert(pairs.end(), {time, values.back()});
        }
        const double from = below(14) - 1.0;
        const bool split = below(2) == 0;
        const std::size_t p = below(3), q = below(3), axes = split && p <= q ? 1 : 0;
        const Doubles actual = widened(y, matrix(2, times.size(), pairs), from, split, p, q);
        auto first = values.begin() + (std::lower_bound(times.begin(), times.end(), from) - times.begin());
        if (first != values.end() && std::isnan(*first))
            ++first;
        if (first != values.end()) {
            const auto [lowest, highest] = std::minmax_element(first, values.end());
            y[axes] = *lowest < y[axes] ? *lowest : y[axes];
            y[axes + 2] = *highest > y[axes + 2] ? *highest : y[axes + 2];
        }
        ASSERT_TRUE(sameBits(actual, y)) << round;
    }
}

TEST_F(TimeScopeLineTest, AnAnswerThatIsNoPointsChangesNothing)
{
    const Doubles y(4, 1);
    std::vector<HostArrayPtr> odd(5);
    odd[1].reset(createString("text"));
    odd[2] = matrix(3, 1, {1, 9, 2});
    odd[3].reset(createDoubleMatrix(2, 2, HostComplexity::complex));
    setRealData((odd[4] = matrix(2, 1, {9, 9})).get(), nullptr);
    for (HostArrayPtr& answer : odd)
        EXPECT_EQ(widened(y, std::move(answer), -kInf), y);
    EXPECT_EQ(widened(y, matrix(2, 2, {5, 7, 1, 8}), 6), y) << "unordered times stay in bounds";
}

TEST_F(TimeScopeLineTest, FindsItsParentByObjectOrHandle)
{
    line->setLine(objectArray({graphics}).get());
    const HostObjectRef transform = host.objectOfHandles = std::make_shared<FakeObject<int>>();
    const auto parentFor = [&](HostArrayPtr value) {
        host.parentOf = [&](const HostObjectRef& object) { return object == graphics ? std::move(value) : nullptr; };
        return line->getTransform();
    };
    EXPECT_EQ(parentFor(objectArray({transform})), transform);
    EXPECT_EQ(parentFor(row({7})), transform);
    for (const Doubles& none : {Doubles{-1}, Doubles{}, Doubles{7, 7}})
        EXPECT_EQ(parentFor(row(none)), nullptr);
    EXPECT_EQ(parentFor(nullptr), nullptr);
    EXPECT_EQ(parentFor(makeMatrix(1, 1, HostComplexity::complex)), nullptr);
    EXPECT_EQ(parentFor(HostArrayPtr(createString("7"))), nullptr);
    EXPECT_EQ(line->getParent(nullptr), nullptr);
}

} // namespace
