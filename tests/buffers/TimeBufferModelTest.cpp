// Random operations on a TimeBuffer and on a plain model of it, compared bit for bit.

#include "buffers/TimeBufferModel.h"

using namespace tracery;

namespace {

TEST(TimeBufferModelTest, RandomOperationsAgreeWithThePlainModel)
{
    for (unsigned seed = 0; seed < 400 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        test::RandomBuffer buffer(random);
        for (int i = 0; i < 60 && !HasFatalFailure(); ++i)
            buffer.step();
    }
}

} // namespace
