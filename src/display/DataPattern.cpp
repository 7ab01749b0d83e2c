#include <tracery/DataPattern.h>
#include <tracery/host/HostArray.h>

#include <algorithm>

namespace tracery {

DataPattern::DataPattern(int patternLength)
    : history_(3 * static_cast<std::size_t>(std::max(patternLength, 0))),
      patternLength_(static_cast<std::size_t>(std::max(patternLength, 0)))
{}

bool DataPattern::addValueAndCheckPattern(double value)
{
    history_.push_back(value);
    // Every (NaN, number, NaN) is seen when its last value arrives. Its first value is then among the oldest
    // N of a full history, and is so for N values, the one just added included.
    if (newestValueEndsMatch())
        matchStaysFor_ = patternLength_;
    else if (matchStaysFor_ > 0)
        --matchStaysFor_;
    return history_.full() && hasNaNPattern();
}

bool DataPattern::newestValueEndsMatch() const
{
    const std::size_t count = history_.size();
    return count > 2 * patternLength_ && isNaN(history_[count - 1]) && !isNaN(history_[count - 1 - patternLength_]) &&
           isNaN(history_[count - 1 - 2 * patternLength_]);
}

} // namespace tracery
