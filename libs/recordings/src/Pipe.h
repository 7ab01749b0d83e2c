#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tracery::recordings {

/// Bytes that come one after the other, as of standard input, read like a file: the last few megabytes are kept, so that
/// a reader may go back a little.
class Pipe {
public:
    /// descriptor  stays open, and the caller's; name  for people
    /// stopAt      another descriptor of the caller's: once it is readable, reading fails, also one that waits; or -1
    Pipe(int descriptor, std::string name, int stopAt = -1);
    ~Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    /// Reads from byte `offset` on what is there, having waited for one byte at least. Returns how many; none at the
    /// end, or once it is stopped.
    /// throws  InputError for bytes that are not kept any more, when the system fails to read, and for stopAt: what was
    ///         cut short is not to be taken for the end
    std::size_t read(std::uint64_t offset, std::span<char> into);
    /// Whether reading on would not wait: bytes have come, or the end.
    bool ready() const;
    /// Ends all reading, also one that waits. thread  any
    void stop() const noexcept;

private:
    bool awaitInput(int milliseconds) const;
    std::size_t readOn();

    int descriptor_;
    int stopAt_;
    int stopped_; ///< an event, readable once it is stopped
    std::string name_;
    std::vector<char> kept_;
    std::uint64_t keptFrom_ = 0; ///< place of the first kept byte
};

} // namespace tracery::recordings
