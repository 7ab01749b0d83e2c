#include "MendedFile.h"

#include <tracery/recordings/Recording.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace tracery::recordings {

MendedFile::MendedFile(File file, Mend mend) : file_(std::move(file)), mend_(std::move(mend)) {}

SNDFILE* MendedFile::open(SF_INFO& info)
{
    SF_VIRTUAL_IO calls{&length, &seek, &read, nullptr, &tell};
    position_ = 0;
    return sf_open_virtual(&calls, SFM_READ, &info, this);
}

sf_count_t MendedFile::length(void* self)
{
    return static_cast<sf_count_t>(static_cast<MendedFile*>(self)->file_.size());
}

sf_count_t MendedFile::seek(sf_count_t offset, int whence, void* self)
{
    sf_count_t& position = static_cast<MendedFile*>(self)->position_;
    const sf_count_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? position : length(self);
    return position = std::max<sf_count_t>(from + offset, 0);
}

sf_count_t MendedFile::read(void* into, sf_count_t count, void* self)
try {
    MendedFile& mended = *static_cast<MendedFile*>(self);
    const auto at = static_cast<std::uint64_t>(mended.position_);
    const std::span<char> bytes(static_cast<char*>(into), static_cast<std::size_t>(count));
    const std::size_t got = mended.file_.read(at, bytes);
    for (std::size_t i = 0; i < mended.mend_.bytes.size(); ++i) {
        const std::uint64_t place = mended.mend_.offset + i;
        if (place >= at && place - at < got)
            bytes[place - at] = mended.mend_.bytes[i];
    }
    mended.position_ += static_cast<sf_count_t>(got);
    return static_cast<sf_count_t>(got);
} catch (const InputError&) {
    return 0; // the decoder takes it for the end, and the recording misses the frames
}

sf_count_t MendedFile::tell(void* self) { return static_cast<MendedFile*>(self)->position_; }

} // namespace tracery::recordings
