#pragma once

#include <algorithm>
#include <cstddef>

namespace tracery::binding {

/// A text that can be a template argument.
template <std::size_t N>
struct FixedText {
    consteval FixedText(const char (&source)[N]) { std::copy_n(source, N, text); }
    char text[N];
};

} // namespace tracery::binding
