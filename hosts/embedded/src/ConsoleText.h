#pragma once

#include <tracery/host/Services.h>

#include <functional>
#include <string>
#include <utility>

namespace tracery::embedded {

/// Hands what is printed to a sink, or keeps it.
class ConsoleText final : public Console {
public:
    using Sink = std::function<void(const std::string&)>;

    void print(const std::string& text) override;
    void setSink(Sink sink) { sink_ = std::move(sink); }
    std::string take() { return std::exchange(text_, {}); }

private:
    Sink sink_;
    std::string text_;
};

} // namespace tracery::embedded
