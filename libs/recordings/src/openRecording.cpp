#include "CsvRecording.h"
#include "RawRecording.h"
#include "SigMfRecording.h"
#include "SoundRecording.h"

#include <tracery/basics/Text.h>

#include <filesystem>
#include <utility>

namespace tracery::recordings {

using namespace basics;

namespace {

bool isFile(const std::string& path)
{
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

/// The common part of the names of a SigMF pair, when `path` means one: either of the two, BASE.sigmf, or
/// BASE alone.
std::optional<std::string> sigMfBase(const std::string& path)
{
    for (const std::string_view ending : {".sigmf-meta", ".sigmf-data", ".sigmf"}) {
        if (!path.ends_with(ending))
            continue;
        std::string base = path.substr(0, path.size() - ending.size());
        if (isFile(path) && ending == ".sigmf" && !isFile(base + ".sigmf-meta"))
            throw InputError(
                path, "", "is a SigMF archive: unpack it and give the .sigmf-meta file with the .sigmf-data beside it");
        return base;
    }
    if (!isFile(path) && isFile(path + ".sigmf-meta"))
        return path;
    return std::nullopt;
}

bool isTable(const std::string& path)
{
    const std::string ending = lowerCase(std::filesystem::path(path).extension().string());
    return ending == ".csv" || ending == ".tsv" || ending == ".txt";
}

} // namespace

std::unique_ptr<Recording> openStream(int descriptor, const std::string& name, const std::string& format,
                                      std::size_t columns, const OpenOptions& options, int stopAt)
{
    File input = File::pipe(descriptor, name, stopAt);
    if (format == "csv")
        return std::make_unique<CsvRecording>(std::move(input), options);
    return std::make_unique<RawRecording>(std::move(input), format, columns, options);
}

std::unique_ptr<Recording> openRecording(const std::string& path, const OpenOptions& options)
{
    if (const std::optional<std::string> base = sigMfBase(path))
        return std::make_unique<SigMfRecording>(path, *base, options);
    if (isTable(path))
        return std::make_unique<CsvRecording>(File(path), options);
    return std::make_unique<SoundRecording>(path, options);
}

} // namespace tracery::recordings
