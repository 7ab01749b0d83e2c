#include "embedded/Gauge.h"

#include <random>

namespace tracery::test {

using embedded::LineAnimator;

class LineAnimatorTest : public EmbeddedTest {
protected:
    HostOutputs call(const char* method, const HostArray* line, const HostArray* points = nullptr)
    {
        const HostArray* inputs[] = {line, points};
        return host->callStatic(LineAnimator::kClassName, method, HostInputs(inputs, points != nullptr ? 2 : 1),
                                method == std::string("getXY") ? 1 : 0);
    }
    std::vector<double> pointsOf(const HostObjectRef& line)
    {
        const auto points = host->animator().points(line);
        return {points.begin(), points.end()};
    }
};

TEST_F(LineAnimatorTest, WhatIsAddedInBlocksComesBackWhole)
{
    host->defineClass({.name = "my.Line", .superclass = LineAnimator::kClassName});
    const HostObjectRef lines[] = {host->construct(LineAnimator::kClassName), host->construct("my.Line")};
    std::vector<double> expected[2];
    std::mt19937 random(3);
    for (int block = 0; block < 200; ++block) {
        const std::size_t i = random() % 2;
        const HostArrayPtr line = omCreateScalar(lines[i]);
        const std::uint64_t pairs = random() % 20;
        std::vector<double> values;
        for (std::uint64_t k = 0; k < 2 * pairs; ++k)
            values.push_back(static_cast<double>(random()));
        const bool asMatrix = random() % 2 == 0;
        call("addXY", line.get(), matrix(asMatrix ? 2 : 2 * pairs, asMatrix ? pairs : 1, values).get());
        expected[i].insert(expected[i].end(), values.begin(), values.end());
        if (random() % 50 == 0) {
            call("reset", line.get());
            expected[i].clear();
        }
        const HostArrayPtr all = std::move(call("getXY", line.get()).at(0));
        ASSERT_EQ(getDimensions(all.get())[0], 2U);
        ASSERT_TRUE(sameBits(realOf(all.get()), expected[i]));
    }
    for (std::size_t i = 0; i < 2; ++i) {
        host->animator().append(lines[i], host->animator().points(lines[i]));
        const std::vector<double> once = expected[i];
        expected[i].insert(expected[i].end(), once.begin(), once.end());
        EXPECT_TRUE(sameBits(pointsOf(lines[i]), expected[i])) << "a line may be given its own points";
    }
}

TEST_F(LineAnimatorTest, TheParentIsMinusOneUntilItIsSet)
{
    const HostObjectRef line = host->construct(LineAnimator::kClassName), parent = host->construct("lab.Gauge");
    EXPECT_EQ(get(line, "Parent"), -1);
    host->set(line, "Parent", omCreateScalar(parent).get());
    EXPECT_EQ(omGetArrayElement(host->get(line, "Parent").get(), 0), parent);
    host->set(line, "Parent", nullptr);
    EXPECT_EQ(host->get(line, "Parent"), nullptr);
}

TEST_F(LineAnimatorTest, OtherInputsAreIdentifiedErrorsAndChangeNothing)
{
    EmbeddedHost other;
    const HostObjectRef line = host->construct(LineAnimator::kClassName), deleted = host->construct("lab.Gauge");
    const HostArrayPtr good = omCreateScalar(line), points = row({1, 2}), text(createString("12"));
    const HostArrayPtr complex(createDoubleMatrix(2, 1, HostComplexity::complex));
    const HostArrayPtr hollow(createDoubleMatrix(2, 1, HostComplexity::real));
    setRealData(hollow.get(), nullptr);
    call("addXY", good.get(), points.get());
    const HostArrayPtr odd = row({1, 2, 3});
    for (const HostArray* bad : {odd.get(), text.get(), complex.get(), hollow.get()})
        EXPECT_EQ(failure([&] { call("addXY", good.get(), bad); }), "InvalidArgumentType");
    const std::uint64_t none[] = {0, 0};
    const HostArrayPtr empty(createObjectArray("any", 2, none)),
        gauge = omCreateScalar(host->construct("lab.Gauge")),
        foreign = omCreateScalar(other.construct(LineAnimator::kClassName)), dead = omCreateScalar(deleted);
    host->deleteObject(deleted);
    for (const HostArray* bad :
         {static_cast<HostArray*>(nullptr), points.get(), empty.get(), gauge.get(), foreign.get(), dead.get()})
        for (const char* method : {"addXY", "getXY", "reset"})
            EXPECT_EQ(failure([&] { call(method, bad, *method == 'a' ? points.get() : nullptr); }), "InvalidObject");
    EXPECT_EQ(failure([&] { call("addXY", good.get()); }), "InvalidNumberOfArguments");
    EXPECT_EQ(failure([&] { host->callStatic(LineAnimator::kClassName, "reset"); }), "InvalidNumberOfArguments");
    EXPECT_EQ(pointsOf(line), (std::vector<double>{1, 2}));
}

} // namespace tracery::test
