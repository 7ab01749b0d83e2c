#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>

namespace tracery {

/// Shows a detector a block. When an event cannot be kept for want of memory, the block has not been seen: the detector
/// and the queue are as before, so that the same block may come again.
template <class Detector, class Update>
void allOrNothing(Detector& detector, AbstractTimeDomainTrigger::EventQueue& queue, Update&& update)
{
    const Detector before = detector;
    const std::size_t events = queue.size();
    try {
        update();
    } catch (...) {
        queue.erase(queue.begin() + static_cast<std::ptrdiff_t>(events), queue.end());
        detector = before;
        throw;
    }
}

} // namespace tracery
