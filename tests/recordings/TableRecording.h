#pragma once

#include <tracery/recordings/Recording.h>

#include <functional>

namespace tracery::recordings {

/// A recording that computes its steps: `time(step)` and `value(step, channel)`; the imaginary part is the negative.
struct Table {
    std::size_t channels = 1;
    bool complex = false;
    std::size_t steps = 0;
    std::function<double(std::size_t)> time;
    std::function<double(std::size_t, std::size_t)> value;
    std::size_t failAt = SIZE_MAX; ///< reading this step fails
};

class TableRecording : public Recording {
public:
    explicit TableRecording(Table table) : table_(std::move(table))
    {
        info_.channels.resize(table_.channels);
        info_.complex = table_.complex;
    }
    const RecordingInfo& info() const override { return info_; }
    TimeRange range() override { return {table_.time(0), table_.time(table_.steps - 1)}; }
    void seek(double time) override
    {
        while (next_ + 1 < table_.steps && table_.time(next_ + 1) < time)
            ++next_;
    }
    void read(Block& block, std::size_t maxSteps) override
    {
        block = {};
        for (; block.steps() < maxSteps && next_ < table_.steps; ++next_) {
            if (next_ == table_.failAt && block.steps() > 0)
                return;
            if (next_ == table_.failAt)
                throw InputError("table", "step " + std::to_string(next_), "broken");
            block.times.push_back(table_.time(next_));
            for (std::size_t c = 0; c < table_.channels; ++c) {
                block.real.push_back(table_.value(next_, c));
                if (table_.complex)
                    block.imag.push_back(-table_.value(next_, c));
            }
        }
    }

private:
    Table table_;
    RecordingInfo info_;
    std::size_t next_ = 0;
};

} // namespace tracery::recordings
