#include "Harness.h"
#include "PlainSubjects.h"

#include <stdexcept>

namespace tracery::bench {

Rows pipelineRows()
{
    return {{"pipeline", "4 ports at 1 MS/s, a second of signal", {{}, 3.5, 0.16}, [] {
                 const auto ours = makePipeline();
                 const auto plain = tracery_plain::bench::makePipeline();
                 if (ours.points == 0 || ours.points != plain.points || ours.sum != plain.sum)
                     throw std::logic_error("the pipelines draw different points");
                 return Work{1, ours.runOneSecond, {}, plain.runOneSecond};
             }}};
}

} // namespace tracery::bench
