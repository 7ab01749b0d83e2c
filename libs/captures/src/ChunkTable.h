#pragma once

#include "Extremes.h"
#include "StepFormat.h"

#include <cstddef>
#include <cstdint>

namespace tracery::captures {

/// Steps come in chunks.
inline constexpr std::int64_t kChunkSteps = 65536;
inline constexpr std::size_t kChildren = 16;

/// How the overview of a chunk lies in memory: for each line, the extremes of its blocks, of groups of blocks, of groups
/// of groups, and of the whole. Entries of what is not whole are zero.
class ChunkTable {
public:
    explicit ChunkTable(const StepFormat& format)
        : format_(&format), held_(withHeld(format, [](auto number) { return sizeof number; }))
    {
        std::size_t count = static_cast<std::size_t>(kChunkSteps) / format.blockSteps;
        std::int64_t span = static_cast<std::int64_t>(format.blockSteps);
        for (levels_ = 0; count != 0; count /= kChildren, span *= static_cast<std::int64_t>(kChildren)) {
            first_[levels_] = entries_;
            spans_[levels_++] = span;
            entries_ += count;
        }
    }

    std::size_t lineBytes() const { return (entries_ * (2 * held_ + 2 * sizeof(std::uint16_t)) + 7) / 8 * 8; }
    std::size_t bytes() const { return format_->lines() * lineBytes(); }
    std::size_t levels() const { return levels_; }
    /// Steps of an entry of a level; level 0 is that of blocks.
    std::int64_t span(std::size_t level) const { return spans_[level]; }
    /// The place of a level's first entry.
    std::size_t first(std::size_t level) const { return first_[level]; }

    /// A line's entries. Places count what is one level below: steps, or entries.
    template <class Held>
    struct Entries {
        Held *low, *high;
        std::uint16_t *lowAt, *highAt;
    };
    template <class Held>
    Entries<Held> entries(std::byte* table, std::size_t line) const
    {
        table += line * lineBytes();
        auto* const held = reinterpret_cast<Held*>(table);
        auto* const places = reinterpret_cast<std::uint16_t*>(table + 2 * entries_ * sizeof(Held));
        return {held, held + entries_, places, places + entries_};
    }
    template <class Held>
    Entries<const Held> entries(const std::byte* table, std::size_t line) const
    {
        const auto e = entries<Held>(const_cast<std::byte*>(table), line);
        return {e.low, e.high, e.lowAt, e.highAt};
    }

    /// Enters what has become whole when a chunk that had `before` steps has `now`.
    void update(std::byte* table, const std::byte* steps, std::size_t before, std::size_t now) const;

private:
    template <class Held>
    void updateLine(std::byte* table, std::size_t line, const std::byte* steps, std::size_t before,
                    std::size_t now) const;

    const StepFormat* format_;
    std::size_t held_;
    std::size_t levels_ = 0, entries_ = 0;
    std::size_t first_[4]{};
    std::int64_t spans_[4]{};
};

} // namespace tracery::captures
