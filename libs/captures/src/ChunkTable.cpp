#include "ChunkTable.h"

namespace tracery::captures {

template <class Held>
void ChunkTable::updateLine(std::byte* table, std::size_t line, const std::byte* steps, std::size_t before,
                            std::size_t now) const
{
    constexpr std::size_t kMost = 4096;
    Entry<Held>* const all = entries<Held>(table, line);
    const auto enter = [all](std::size_t place, const auto& extremes) {
        all[place].low = extremes.low;
        all[place].high = extremes.high;
        all[place].lowAt = static_cast<std::uint16_t>(extremes.lowAt);
        all[place].highAt = static_cast<std::uint16_t>(extremes.highAt);
    };
    alignas(16) Held numbers[kMost];
    const std::size_t blockSteps = format_->blockSteps;
    for (std::size_t block = before / blockSteps; block < now / blockSteps; ++block) {
        heldOf(*format_, line, steps + (block - before / blockSteps) * blockSteps * format_->stepBytes, blockSteps,
               numbers);
        enter(block, extremesOf(numbers, blockSteps));
        std::size_t whole = block + 1; // of this level
        for (std::size_t level = 1; level < levels_ && whole % kChildren == 0; ++level) {
            Extremes<Held> extremes;
            const std::size_t children = first_[level - 1] + whole - kChildren;
            for (std::size_t i = 0; i < kChildren; ++i)
                extremes.fold(all[children + i].low, i, all[children + i].high, i);
            whole /= kChildren;
            enter(first_[level] + whole - 1, extremes);
        }
    }
}

void ChunkTable::update(std::byte* table, const std::byte* steps, std::size_t before, std::size_t now) const
{
    for (std::size_t line = 0; line < format_->lines(); ++line)
        withHeld(*format_, [&](auto number) { updateLine<decltype(number)>(table, line, steps, before, now); });
}

} // namespace tracery::captures
