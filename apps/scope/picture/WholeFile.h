#pragma once

#include <cstddef>
#include <string>

namespace scope {

/// A file that appears under its name whole or not at all: what is written goes to a file beside it, which
/// takes the name when it is kept and disappears otherwise.
class WholeFile {
public:
    /// throws  std::runtime_error, as does `keep`, that names the path and the reason
    explicit WholeFile(std::string path);
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    /// False when it failed, now or before; `keep` then says why.
    bool write(const void* data, std::size_t size) noexcept;
    void keep();

private:
    [[noreturn]] void fail(int error) const;

    std::string path_;
    std::string temporary_;
    int descriptor_ = -1;
    int error_ = 0;
};

} // namespace scope
