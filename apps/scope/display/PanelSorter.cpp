#include "display/PanelSorter.h"

#include <algorithm>
#include <utility>

namespace scope {

std::size_t PanelSorter::add(const std::string& key, const std::string& yUnit, Trace trace, const Limits& seen)
{
    const auto panel = static_cast<std::size_t>(std::find(keys_.begin(), keys_.end(), key) - keys_.begin());
    if (panel == keys_.size()) {
        keys_.push_back(key);
        limits_.emplace_back();
        panels_.emplace_back().yUnit = yUnit;
    }
    limits_[panel].extend(seen);
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

} // namespace scope
