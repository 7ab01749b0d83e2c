#pragma once

#include "EvenRecording.h"
#include "File.h"
#include "SigMfMeta.h"

namespace tracery::recordings {

/// Samples in one file, described by another beside it: BASE.sigmf-data and BASE.sigmf-meta.
class SigMfRecording final : public EvenRecording {
public:
    /// path  for people, the one that was asked for
    /// throws  InputError: one of the two files is missing, damaged, or does not fit the other
    SigMfRecording(const std::string& path, const std::string& base, const OpenOptions& options);

    std::optional<SampleLayout> layout() const override;

private:
    void readValues(std::uint64_t first, std::size_t count, Block& block) override;

    SigMfMeta meta_;
    File data_;
    std::vector<char> bytes_; ///< of the steps being read
};

} // namespace tracery::recordings
