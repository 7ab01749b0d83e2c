#include "support/TestHost.h"

#include <tracery/host/Error.h>

#include <optional>
#include <type_traits>
#include <utility>

namespace tracery::test {

TEST(ErrorTest, KeepsWhatItWasMadeOfAndIsCopiedWithoutFail)
{
    static_assert(std::is_nothrow_copy_constructible_v<Error> && std::is_nothrow_copy_assignable_v<Error>);
    std::optional<Error> copy;
    {
        std::string component = "my:scripts", name = "TooHot", text = "cool it";
        Error made({component.c_str(), name.c_str(), text.c_str()});
        component = name = text = "gone";
        copy = made;
        const Error moved = std::move(made);
        EXPECT_EQ(made.identifier(), moved.identifier());
    }
    EXPECT_STREQ(copy->what(), "my:scripts:TooHot: cool it");
    EXPECT_EQ(copy->identifier(), "my:scripts:TooHot");
    EXPECT_EQ(std::string(copy->component()) + copy->name(), "my:scriptsTooHot");
    EXPECT_EQ(Error({nullptr, nullptr, nullptr}, "x").identifier(), ":");
}

TEST(HostTest, TheCurrentHostIsTheLastOneAttachedThatLives)
{
    std::optional<TestHost> a(std::in_place), b(std::in_place), c(std::in_place);
    for (TestHost* host : {&*a, &*b, &*a}) {
        Host::attach(*host);
        EXPECT_EQ(Host::current(), host);
    }
    Host::detach(*a);
    EXPECT_EQ(Host::current(), &*a) << "once more";
    Host::detach(*a);
    EXPECT_FALSE(a->isAttached() || c->isAttached());
    {
        const HostScope outer(*a), inner(*c);
        a.reset();
        EXPECT_EQ(Host::current(), &*c);
        EXPECT_TRUE(c->isAttached() && b->isAttached());
        c.reset();
        EXPECT_EQ(Host::current(), &*b) << "no scope has a host";
    }
    b.reset();
    EXPECT_EQ(Host::current(), nullptr);
}

} // namespace tracery::test
