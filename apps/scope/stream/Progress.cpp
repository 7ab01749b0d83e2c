#include "stream/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace scope {

namespace {
constexpr int kWidth = 40;
constexpr std::chrono::milliseconds kDelay{1000};
constexpr std::chrono::milliseconds kInterval{100};
} // namespace

Progress::Progress() : terminal_(isatty(STDERR_FILENO) != 0), next_(Clock::now() + kDelay) {}

Progress::~Progress()
{
    if (drawn_)
        std::fputs("\r\033[K", stderr);
}

void Progress::show(double fraction)
{
    if (!terminal_ || Clock::now() < next_)
        return;
    next_ = Clock::now() + kInterval;
    drawn_ = true;
    const double share = std::clamp(fraction, 0.0, 1.0); // NaN stays out of both bounds and shows an empty bar
    const int full = share > 0 ? static_cast<int>(share * kWidth) : 0;
    std::fprintf(stderr, "\r[%s%s] %3d %%", std::string(static_cast<std::size_t>(full), '#').c_str(),
                 std::string(static_cast<std::size_t>(kWidth - full), ' ').c_str(), full * 100 / kWidth);
    std::fflush(stderr);
}

} // namespace scope
