#include "support/FakeHost.h"

#include <optional>

namespace tracery::test {

TEST(HostTest, TheCurrentHostIsTheLastOneAttachedThatLives)
{
    std::optional<FakeHost> a(std::in_place), b(std::in_place), c(std::in_place);
    for (FakeHost* host : {&*a, &*b, &*a}) {
        Host::attach(*host);
        EXPECT_EQ(Host::current(), host);
    }
    Host::detach(*a);
    EXPECT_EQ(Host::current(), &*a) << "once more";
    Host::detach(*a);
    {
        const HostScope outer(*a), inner(*c);
        a.reset();
        EXPECT_EQ(Host::current(), &*c);
        c.reset();
        EXPECT_EQ(Host::current(), &*b) << "no scope has a host";
    }
    b.reset();
    EXPECT_EQ(Host::current(), nullptr);
}

} // namespace tracery::test
