// In every test program: kernels that are not known are no reason to test others.

#include <tracery/Kernels.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

const bool checked = [] {
    try {
        return tracery::kernelsInUse() != nullptr;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        std::_Exit(2);
    }
}();

} // namespace
