#include "ConsoleText.h"

namespace tracery::embedded {

void ConsoleText::print(const std::string& text)
{
    if (sink_ == nullptr) {
        text_ += text;
        return;
    }
    const Sink sink = sink_; // it may put another in its place
    sink(text);
}

} // namespace tracery::embedded
