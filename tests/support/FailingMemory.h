#pragma once

#include <new>

namespace tracery::test {

/// Lets this thread allocate `count` times with operator new before one allocation fails; negative for no end. Works in
/// programs that FailingMemory.cpp is part of.
void allowAllocations(long count);

/// Runs `call` with memory for `allocations` allocations; returns whether that was enough.
template <class Call>
bool runs(long allocations, Call&& call)
{
    struct Limit {
        explicit Limit(long count) { allowAllocations(count); }
        ~Limit() { allowAllocations(-1); }
        Limit(const Limit&) = delete;
    };
    try {
        const Limit limit(allocations);
        call();
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

} // namespace tracery::test
