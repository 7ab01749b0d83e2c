#pragma once

#include "File.h"

#include <sndfile.h>

#include <memory>

namespace tracery::recordings {

/// A head to read in place of all that a file has before byte `from`.
struct Mend {
    std::string head;
    std::uint64_t from = 0;
};

/// Shows a file to libsndfile with another head. Outlives the decoders opened on it.
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
    std::uint64_t position_ = 0;
};

} // namespace tracery::recordings
