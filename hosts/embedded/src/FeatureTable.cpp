#include "FeatureTable.h"

#include <algorithm>

namespace tracery::embedded {

void FeatureTable::registerFeature(const std::string& name, int defaultValue, FeatureCallback changed, void* userData)
{
    Feature& feature = features_.try_emplace(name, Feature{defaultValue, {}}).first->second;
    const Callback callback(changed, userData);
    if (changed != nullptr && std::ranges::find(feature.callbacks, callback) == feature.callbacks.end())
        feature.callbacks.push_back(callback);
}

std::optional<int> FeatureTable::getFeature(const std::string& name) const
{
    const auto entry = features_.find(name);
    return entry != features_.end() ? std::optional(entry->second.value) : std::nullopt;
}

void FeatureTable::set(const std::string& name, int value)
{
    const auto [entry, isNew] = features_.try_emplace(name, Feature{value, {}});
    if (isNew || entry->second.value == value)
        return;
    entry->second.value = value;
    const std::vector<Callback> callbacks = entry->second.callbacks;
    for (const auto& [changed, userData] : callbacks) {
        if (entry->second.value != value) // a callback has set it anew, and all were told of that
            return;
        changed(value, userData);
    }
}

} // namespace tracery::embedded
