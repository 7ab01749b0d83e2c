#pragma once

#include <tracery/Timer.h>

namespace tracery::test {

/// A timer whose time is up when a test says so.
struct FakeTimer : Timer {
    void setTimeout(double seconds) override { timeout = seconds > 0 ? seconds : timeout; }
    double getTimeout() const override { return timeout; }
    void start() override { up = (++starts, false); }
    void stop() override { up = true; }
    bool isTimeUp() override { return up; }

    double timeout = 0;
    bool up = true;
    int starts = 0;
};

} // namespace tracery::test
