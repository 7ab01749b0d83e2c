// Random operations on a SpectrumBuffer and on the plain rules, compared bit for bit.

#include "buffers/SpectrumBufferModel.h"

#include <random>

using namespace tracery::test;

namespace {

TEST(SpectrumBufferModelTest, RandomOperationsAgreeWithThePlainRules)
{
    for (unsigned seed = 1; seed <= 500; ++seed) {
        std::mt19937 random(seed);
        RandomSpectrum run(random);
        for (int i = 0; i < 100; ++i) {
            run.step();
            if (HasFailure())
                FAIL() << "seed " << seed << ", step " << i;
        }
    }
}

} // namespace
