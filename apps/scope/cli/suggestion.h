#pragma once

#include <string>
#include <vector>

namespace scope {

/// "; did you mean 'spectrum'?" when one of the known words is close to this one, else nothing.
std::string suggestion(const std::string& word, const std::vector<std::string>& known);

} // namespace scope
