#include "input/Recording.h"
#include "input/Text.h"

namespace scope {

InputError::InputError(const std::string& path, const std::string& where, const std::string& message)
    : std::runtime_error(oneLine(path + ": " + (where.empty() ? where : where + ": ") + message))
{}

} // namespace scope
