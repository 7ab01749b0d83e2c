#include "support/vectorUnit.h"

#include <tracery/Kernels.h>
#include <tracery/host/Error.h>

#include <cstdlib>
#include <string>

namespace tracery {

namespace {

bool processorHasAvx2()
{
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

/// The form that the environment asks for; empty for any. Never destroyed: it may be asked for until the very end.
const std::string& wanted()
{
    static const std::string& word = *new std::string([] {
        const char* set = std::getenv("TRACERY_KERNELS");
        return set != nullptr ? set : "";
    }());
    return word;
}

} // namespace

const bool kHasAvx2 = processorHasAvx2() && wanted() != "baseline";

const char* kernelsInUse()
{
    const bool known = wanted().empty() || wanted() == "baseline" || (wanted() == "avx2" && processorHasAvx2());
    if (!known)
        throw Error(errors::UnknownKernels, "TRACERY_KERNELS: there are no kernels '" + wanted() +
                                                "' for this processor, known are baseline" +
                                                (processorHasAvx2() ? " and avx2" : ""));
    return kHasAvx2 ? "avx2" : "baseline";
}

} // namespace tracery
