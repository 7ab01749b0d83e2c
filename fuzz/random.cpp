// A target on random inputs, for the tests: no fuzzer is needed. usage: PROGRAM INPUTS [BYTES]
// Inputs have up to so many bytes, 2000 unless said otherwise.
// Prints what was reached, and ends with 1 when that is less than it must be.

#include "Floor.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int count, char** arguments)
{
    std::mt19937 random(7);
    const unsigned longest = count > 2 ? static_cast<unsigned>(std::atoi(arguments[2])) : 2000;
    for (int inputs = std::atoi(arguments[1]); inputs > 0; --inputs) {
        std::vector<std::uint8_t> input(random() % longest);
        std::generate(input.begin(), input.end(), [&] { return static_cast<std::uint8_t>(random()); });
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    int missing = 0;
    for (const auto* floor : tracery::fuzz::Floor::all()) {
        std::printf("%s: %zu, at least %zu\n", floor->state().c_str(), floor->reached(), floor->least());
        missing += floor->reached() < floor->least() ? 1 : 0;
    }
    return missing > 0 ? 1 : 0;
}
