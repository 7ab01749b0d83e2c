#pragma once

namespace scope {

/// Takes Ctrl-C as a wish to end, for its own lifetime. A second one ends the program as ever. One at a time.
class Interrupt {
public:
    Interrupt() noexcept;
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    bool came() const noexcept;
    /// A descriptor that becomes readable when it comes, for those who wait; -1 when the system has none left.
    int descriptor() const noexcept;
};

} // namespace scope
