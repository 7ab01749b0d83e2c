#include <tracery/host/Error.h>

namespace tracery {

namespace {
std::string joined(const ErrorKind& kind) { return std::string(kind.component) + ':' + kind.name; }
} // namespace

Error::Error(const ErrorKind& kind) : Error(kind, kind.text) {}
Error::Error(const ErrorKind& kind, const std::string& detail)
    : std::runtime_error(joined(kind) + ": " + detail), kind_(kind)
{}
Error::~Error() = default;
std::string Error::identifier() const { return joined(kind_); }

} // namespace tracery
