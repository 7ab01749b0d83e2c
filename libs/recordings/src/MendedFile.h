#pragma once

#include "File.h"

#include <sndfile.h>

#include <memory>

namespace tracery::recordings {

/// Bytes to read in place of those that a file has at `offset`.
struct Mend {
    std::uint64_t offset = 0;
    std::string bytes;
};

/// Shows a file to libsndfile with some of its bytes replaced. Outlives the decoders opened on it.
class MendedFile {
public:
    MendedFile(File file, Mend mend);

    /// What sf_open gives; null, with the reason in sf_error(nullptr), when the file cannot be decoded.
    SNDFILE* open(SF_INFO& info);

private:
    static sf_count_t length(void* self);
    static sf_count_t seek(sf_count_t offset, int whence, void* self);
    static sf_count_t read(void* into, sf_count_t count, void* self);
    static sf_count_t tell(void* self);

    File file_;
    Mend mend_;
    sf_count_t position_ = 0;
};

} // namespace tracery::recordings
