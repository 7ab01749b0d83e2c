#include "display/PanelSorter.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace scope {

std::size_t PanelSorter::add(const std::string& key, const std::string& yUnit, Trace trace, const Limits& seen)
{
    const auto panel = static_cast<std::size_t>(std::find(keys_.begin(), keys_.end(), key) - keys_.begin());
    if (panel == keys_.size()) {
        keys_.push_back(key);
        limits_.push_back(noLimits());
        panels_.emplace_back().yUnit = yUnit;
    }
    extend(limits_[panel], seen);
    panels_[panel].traces.push_back(std::move(trace));
    return panel;
}

std::vector<Panel> PanelSorter::finish()
{
    for (std::size_t i = 0; i < panels_.size(); ++i) {
        const Limits comfortable = comfortableLimits(limits_[i].low, limits_[i].high);
        panels_[i].yMin = comfortable.low;
        panels_[i].yMax = comfortable.high;
    }
    return std::move(panels_);
}

Limits noLimits() { return {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}; }

void extend(Limits& limits, double value)
{
    limits.low = std::min(limits.low, value);
    limits.high = std::max(limits.high, value);
}

void extend(Limits& limits, const Limits& other)
{
    limits.low = std::min(limits.low, other.low);
    limits.high = std::max(limits.high, other.high);
}

} // namespace scope
