#include <tracery/host/Error.h>

namespace tracery {

namespace {
std::string textOf(const char* text) { return text != nullptr ? text : ""; }
std::string joined(const std::string& a, const std::string& b) { return a + ':' + b; }
} // namespace

struct Error::Texts {
    std::string component;
    std::string name;
};

Error::Error(const ErrorKind& kind) : Error(kind, textOf(kind.text)) {}
Error::Error(const ErrorKind& kind, const std::string& detail)
    : std::runtime_error(joined(textOf(kind.component), textOf(kind.name)) + ": " + detail),
      texts_(std::make_shared<const Texts>(Texts{textOf(kind.component), textOf(kind.name)}))
{}
Error::Error(const Error&) noexcept = default;
Error& Error::operator=(const Error&) noexcept = default;
Error::~Error() = default;
const char* Error::component() const noexcept { return texts_->component.c_str(); }
const char* Error::name() const noexcept { return texts_->name.c_str(); }
std::string Error::identifier() const { return joined(texts_->component, texts_->name); }

} // namespace tracery
