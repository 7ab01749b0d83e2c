#pragma once

#include <chrono>

namespace scope {

/// A progress bar on standard error: only on a terminal, only when the work takes longer than a second, and wiped off
/// at the end.
class Progress {
public:
    Progress();
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// fraction  how much is done, 0 to 1; cheap enough to call for every block
    void show(double fraction);

private:
    using Clock = std::chrono::steady_clock;
    bool terminal_;
    bool drawn_ = false;
    Clock::time_point next_;
};

} // namespace scope
