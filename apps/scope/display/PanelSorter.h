#pragma once

#include "libraries.h"

#include <tracery/figures/Figure.h>

#include <string>
#include <vector>

namespace scope {

/// Sorts traces into panels, in order of appearance, and finds comfortable limits for each.
class PanelSorter {
public:
    /// Adds a trace to the panel of the key. Returns the panel's number.
    /// seen  the lowest and highest value of the trace in the picture; reversed when there is none
    std::size_t add(const std::string& key, const std::string& yUnit, Trace trace, const Limits& seen);
    /// The panels, with limits that hold what is seen of their traces.
    std::vector<Panel> finish();

private:
    std::vector<std::string> keys_;
    std::vector<Limits> limits_;
    std::vector<Panel> panels_;
};

} // namespace scope
