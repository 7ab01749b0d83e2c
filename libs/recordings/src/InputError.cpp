#include <tracery/basics/Text.h>
#include <tracery/recordings/Recording.h>

namespace tracery::recordings {

using namespace basics;

InputError::InputError(const std::string& path, const std::string& where, const std::string& message, Kind kind)
    : std::runtime_error(oneLine(path + ": " + (where.empty() ? where : where + ": ") + message)), kind_(kind)
{}

} // namespace tracery::recordings
