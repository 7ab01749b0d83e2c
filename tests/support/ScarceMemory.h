#pragma once

#include "support/Expect.h"
#include "support/FailingMemory.h"

#include <new>
#include <string>

namespace tracery::test {

/// Does operations of a model's subject, some of them first with too little memory: nothing has happened then, and they
/// succeed, or are refused, when they are done again. `Random` generates the choices.
template <class Random>
class ScarceMemory {
public:
    explicit ScarceMemory(Random& random) : random_(random) {}

    /// operation  returns what it was refused with, "none" when it was not
    /// unchanged  expects that nothing has happened
    template <class Operation, class Unchanged>
    void attempt(const std::string& expected, Operation&& operation, Unchanged&& unchanged)
    {
        if (random_() % 4 == 0) {
            const long allocations = static_cast<long>(random_() % (random_() % 4 == 0 ? 40 : 6));
            const auto shortage = random_() % 2 == 0 ? Shortage::lasting : Shortage::ofOneAllocation;
            const std::size_t arrays = getNumberOfLiveArrays();
            std::string got;
            try {
                const MemoryLimit limit(allocations, shortage);
                got = operation();
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(memoryRanOut());
            }
            if (!got.empty() && !(memoryRanOut() && got == std::bad_alloc().what())) {
                EXPECT_EQ(got, expected);
                return;
            }
            ++failures_;
            EXPECT_EQ(getNumberOfLiveArrays(), arrays);
            unchanged();
        }
        EXPECT_EQ(operation(), expected);
    }
    /// Of what must do without memory.
    template <class Operation>
    static void withoutMemory(Operation&& operation)
    {
        const MemoryLimit limit(0, Shortage::lasting);
        operation();
    }
    std::size_t failures() const { return failures_; }

private:
    Random& random_;
    std::size_t failures_ = 0;
};

} // namespace tracery::test
