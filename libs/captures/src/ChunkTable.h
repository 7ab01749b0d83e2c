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
    /// Places count what is one level below: steps, or entries.
    template <class Held>
    struct Entry {
        Held low, high;
        std::uint16_t lowAt, highAt;
    };

    explicit ChunkTable(const StepFormat& format)
        : format_(&format), entryBytes_(withHeld(format, [](auto number) { return sizeof(Entry<decltype(number)>); }))
    {
        std::size_t count = static_cast<std::size_t>(kChunkSteps) / format.blockSteps;
        std::int64_t span = static_cast<std::int64_t>(format.blockSteps);
        for (levels_ = 0; count != 0; count /= kChildren, span *= static_cast<std::int64_t>(kChildren)) {
            first_[levels_] = entries_;
            spans_[levels_++] = span;
            entries_ += count;
        }
    }

    std::size_t lineBytes() const { return (entries_ * entryBytes_ + 7) / 8 * 8; }
    std::size_t bytes() const { return format_->lines() * lineBytes(); }
    std::size_t levels() const { return levels_; }
    /// Steps of an entry of a level; level 0 is that of blocks.
    std::int64_t span(std::size_t level) const { return spans_[level]; }
    /// The place of a level's first entry.
    std::size_t first(std::size_t level) const { return first_[level]; }

    /// A line's entries.
    template <class Held>
    Entry<Held>* entries(std::byte* table, std::size_t line) const
    {
        return reinterpret_cast<Entry<Held>*>(table + line * lineBytes());
    }
    template <class Held>
    const Entry<Held>* entries(const std::byte* table, std::size_t line) const
    {
        return reinterpret_cast<const Entry<Held>*>(table + line * lineBytes());
    }

    /// Enters what has become whole when a chunk that had `before` steps has `now`.
    /// steps  from the first of the block on that step `before` is in
    void update(std::byte* table, const std::byte* steps, std::size_t before, std::size_t now) const;

private:
    template <class Held>
    void updateLine(std::byte* table, std::size_t line, const std::byte* steps, std::size_t before,
                    std::size_t now) const;

    const StepFormat* format_;
    std::size_t entryBytes_;
    std::size_t levels_ = 0, entries_ = 0;
    std::size_t first_[4]{};
    std::int64_t spans_[4]{};
};

} // namespace tracery::captures
