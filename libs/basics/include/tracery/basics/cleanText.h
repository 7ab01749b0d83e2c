#pragma once

#include <string>
#include <string_view>

namespace tracery::basics {

/// Text that Cairo takes: valid UTF-8 on one line, at most some hundred characters. What is not becomes
/// U+FFFD, control characters become blanks.
std::string cleanText(std::string_view text);

} // namespace tracery::basics
