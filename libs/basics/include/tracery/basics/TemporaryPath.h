#pragma once

#include <cstddef>
#include <string>

namespace tracery::basics {

/// A file or an empty folder that is removed at the end of its lifetime, and also when a signal ends the program before.
/// Signals that the program handles otherwise, or ignores, stay as they are. What has no such name is left alone.
class TemporaryPath {
public:
    /// To be made before what it names, so that no signal comes between.
    explicit TemporaryPath(std::string path);
    ~TemporaryPath();
    TemporaryPath(const TemporaryPath&) = delete;
    TemporaryPath& operator=(const TemporaryPath&) = delete;

    const std::string& path() const { return path_; }
    /// Leaves what has the name: it is somebody else's, or there to stay.
    void forget() noexcept;

private:
    std::string path_; ///< empty: forgotten
    std::size_t slot_;
};

} // namespace tracery::basics
