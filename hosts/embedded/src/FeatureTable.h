#pragma once

#include <tracery/host/Services.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tracery::embedded {

/// Features by name, in the order of the names.
class FeatureTable final : public Features {
public:
    void registerFeature(const std::string& name, int defaultValue, FeatureCallback changed, void* userData) override;
    std::optional<int> getFeature(const std::string& name) const override;
    void set(const std::string& name, int value);

private:
    using Callback = std::pair<FeatureCallback, void*>;
    struct Feature {
        int value;
        std::vector<Callback> callbacks;
    };
    std::map<std::string, Feature> features_;
};

} // namespace tracery::embedded
