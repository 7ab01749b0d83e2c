#pragma once

#include "support/Expect.h"
#include "support/FailingMemory.h"

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace tracery::test {

/// All that can be read of an object, as one list.
using Observation = std::vector<double>;

/// What must hold after a failure: nothing has happened; or the same call again ends as if there had been none.
enum class Promise { nothingHappened, canBeRepeated };

/// How many operations were swept in this program, and how many of their allocations failed; the
/// XML report of the tests has them.
struct SweepTotals {
    long operations = 0;
    long faults = 0;
};
inline SweepTotals sweepTotals;

/// What an operation hands out as arrays: destroyed at the end, and nothing when it fails.
template <std::size_t n>
struct HandedOut {
    HostArray* arrays[n] = {};
    HandedOut() = default;
    ~HandedOut()
    {
        for (HostArray* array : arrays) {
            EXPECT_TRUE(array == nullptr || std::uncaught_exceptions() == 0) << "handed out by a call that failed";
            destroyArray(array);
        }
    }
    HandedOut(const HandedOut&) = delete;
    HostArray*& operator[](std::size_t i) { return arrays[i]; }
};

/// Fails the operation's first allocation, then its second, and so on until it needs no more; then the same with all
/// allocations from that one on. It must fail for want of memory and for nothing else, leave no array behind, keep its
/// promise, and come out the same when it is called again with memory. Returns how many allocations there are.
/// make     gives a pointer to an object in the state before, a new one each time
/// observe  of the object
template <class Make, class Operate, class Observe>
long failEveryAllocation(const std::string& name, Make&& make, Operate&& operate, Observe&& observe,
                         Promise promise = Promise::nothingHappened)
{
    const Observation expected = [&] {
        auto undisturbed = make();
        operate(*undisturbed);
        return observe(*undisturbed);
    }();
    ++sweepTotals.operations;
    const auto complaints = [] {
        return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
    };
    const int complaintsBefore = complaints();
    long faults = 0;
    for (const Shortage shortage : {Shortage::ofOneAllocation, Shortage::lasting}) {
        for (long n = 0;; ++n) {
            SCOPED_TRACE(testing::Message() << name << ", allocation " << n << " fails"
                                            << (shortage == Shortage::lasting ? " and all after it" : ""));
            auto object = make();
            const Observation before = observe(*object);
            const std::size_t arrays = getNumberOfLiveArrays();
            std::string failedWith;
            try {
                const MemoryLimit limit(n, shortage);
                operate(*object);
            } catch (const std::bad_alloc&) {
                failedWith = errors::OutOfMemory.name;
            } catch (const Error& error) {
                failedWith = error.name();
            } catch (const std::exception& error) {
                failedWith = error.what();
            }
            const bool ranOut = memoryRanOut();
            if (!failedWith.empty()) {
                EXPECT_TRUE(ranOut);
                EXPECT_EQ(failedWith, errors::OutOfMemory.name);
                if (promise == Promise::nothingHappened) {
                    EXPECT_EQ(getNumberOfLiveArrays(), arrays);
                    EXPECT_TRUE(sameBits(observe(*object), before)) << "half done";
                }
                operate(*object);
            }
            EXPECT_TRUE(sameBits(observe(*object), expected)) << "not as without the failure";
            if (!ranOut)
                break;
            ++faults;
            if (complaints() != complaintsBefore)
                return faults; // one complaint an operation says enough
        }
    }
    sweepTotals.faults += faults;
    testing::Test::RecordProperty("operationsSoFar", static_cast<int>(sweepTotals.operations));
    testing::Test::RecordProperty("faultsSoFar", static_cast<int>(sweepTotals.faults));
    return faults;
}

} // namespace tracery::test
