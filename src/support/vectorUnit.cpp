#include "support/vectorUnit.h"

#include <cstdlib>
#include <cstring>

namespace tracery {

namespace {

bool hasAvx2()
{
#if defined(__x86_64__)
    const char* wanted = std::getenv("TRACERY_KERNELS");
    return (wanted == nullptr || std::strcmp(wanted, "baseline") != 0) && __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

} // namespace

const bool kHasAvx2 = hasAvx2();

} // namespace tracery
