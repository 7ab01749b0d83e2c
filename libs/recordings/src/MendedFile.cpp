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
    const MendedFile& mended = *static_cast<MendedFile*>(self);
    return static_cast<sf_count_t>(mended.mend_.head.size() + mended.file_.size() - mended.mend_.from);
}

sf_count_t MendedFile::seek(sf_count_t offset, int whence, void* self)
{
    std::uint64_t& position = static_cast<MendedFile*>(self)->position_;
    const sf_count_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? tell(self) : length(self);
    position = static_cast<std::uint64_t>(std::max<sf_count_t>(from + offset, 0));
    return tell(self);
}

sf_count_t MendedFile::read(void* into, sf_count_t count, void* self)
try {
    MendedFile& mended = *static_cast<MendedFile*>(self);
    const auto& [head, from] = mended.mend_;
    std::span<char> bytes(static_cast<char*>(into), static_cast<std::size_t>(count));
    std::size_t got = 0;
    if (mended.position_ < head.size())
        got = head.copy(bytes.data(), bytes.size(), mended.position_);
    mended.position_ += got;
    bytes = bytes.subspan(got);
    if (!bytes.empty())
        got += mended.file_.read(from + mended.position_ - head.size(), bytes);
    mended.position_ += got - (static_cast<std::size_t>(count) - bytes.size());
    return static_cast<sf_count_t>(got);
} catch (const InputError&) {
    return 0; // the decoder takes it for the end, and the recording misses the frames
}

sf_count_t MendedFile::tell(void* self) { return static_cast<sf_count_t>(static_cast<MendedFile*>(self)->position_); }

} // namespace tracery::recordings
