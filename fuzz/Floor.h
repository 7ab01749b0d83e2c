#pragma once

#include <cstddef>
#include <list>
#include <string>

namespace tracery::fuzz {

/// Counts a state that inputs reach, and says how often they must at least, or a target could hold by refusing
/// everything at once. Looked at where random inputs end (random.cpp); a fuzzer has coverage for that.
class Floor {
public:
    Floor(std::string state, std::size_t least) : state_(std::move(state)), least_(least) { all().push_back(this); }
    Floor(const Floor&) = delete;

    void operator+=(std::size_t more) { reached_ += more; }
    void operator++() { ++reached_; }

    const std::string& state() const { return state_; }
    std::size_t least() const { return least_; }
    std::size_t reached() const { return reached_; }
    /// Those of the program.
    static std::list<const Floor*>& all()
    {
        static std::list<const Floor*> floors;
        return floors;
    }

private:
    std::string state_;
    std::size_t least_, reached_ = 0;
};

} // namespace tracery::fuzz
