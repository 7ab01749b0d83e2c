#include "SigMfMeta.h"

#include "File.h"

#include <tracery/recordings/Recording.h>

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tracery::recordings {

namespace {

using Json = nlohmann::json;

constexpr std::uint64_t kMaxBytes = std::uint64_t{1} << 26;
constexpr std::uint64_t kMaxChannels = 65536;

std::string readText(const File& file)
{
    if (file.size() > kMaxBytes)
        throw InputError(file.path(), "",
                         "longer than " + std::to_string(kMaxBytes) + " bytes, expected a description");
    std::string text(file.size(), '\0');
    text.resize(file.read(0, text));
    return text;
}

/// The parser counts bytes from 1. Its messages repeat the place: "[...] parse error at line 3: message".
InputError notJson(const std::string& path, std::string_view text, const Json::parse_error& error)
{
    const std::string_view before = text.substr(0, std::min(text.size(), error.byte == 0 ? 0 : error.byte - 1));
    const auto line = 1 + std::ranges::count(before, '\n');
    const std::size_t column = before.size() - (before.rfind('\n') + 1) + 1; // npos + 1 is 0
    const std::string message = error.what();
    const std::size_t colon = message.find(": ");
    return InputError(path, "line " + std::to_string(line) + ", column " + std::to_string(column),
                      "not JSON: " + (colon == std::string::npos ? message : message.substr(colon + 2)));
}

Json parse(const File& file)
{
    const std::string text = readText(file);
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw notJson(file.path(), text, error);
    } catch (const Json::exception& error) {
        throw InputError(file.path(), "", std::string("not JSON: ") + error.what());
    }
}

/// One object of the description, asked for its fields by name.
class Section {
public:
    Section(const std::string& path, const std::string& name, const Json& object) : path_(path), object_(object)
    {
        require(object.is_object(), name, "an object", object);
    }

    const Json* find(const char* key) const
    {
        const auto found = object_.find(key);
        return found == object_.end() ? nullptr : &*found;
    }

    const Json& get(const char* key) const
    {
        const Json* value = find(key);
        if (value == nullptr)
            throw InputError(path_, "", std::string(key) + " is missing");
        return *value;
    }

    std::string text(const char* key) const
    {
        const Json& value = get(key);
        require(value.is_string(), key, "a text", value);
        return value.get<std::string>();
    }

    std::optional<double> number(const char* key) const
    {
        const Json* value = find(key);
        if (value == nullptr)
            return std::nullopt;
        require(value->is_number(), key, "a number", *value);
        return value->get<double>();
    }

    std::uint64_t count(const char* key, std::uint64_t otherwise) const
    {
        const Json* value = find(key);
        if (value == nullptr)
            return otherwise;
        require(value->is_number_unsigned(), key, "a whole number, not negative", *value);
        return value->get<std::uint64_t>();
    }

    void require(bool holds, const std::string& key, const std::string& expected, const Json& found) const
    {
        if (!holds)
            throw InputError(path_, "", key + ": expected " + expected + ", found " + found.dump().substr(0, kShown));
    }

private:
    static constexpr std::size_t kShown = 40;
    const std::string& path_;
    const Json& object_;
};

void readCaptures(const std::string& path, const Section& document, SigMfMeta& meta)
{
    const Json* captures = document.find("captures");
    if (captures == nullptr)
        return;
    document.require(captures->is_array(), "captures", "an array", *captures);
    for (std::size_t i = 0; i < captures->size(); ++i) {
        const Section capture(path, "captures", (*captures)[i]);
        const std::uint64_t headerBytes = capture.count("core:header_bytes", 0);
        if (i == 0) {
            meta.headerBytes = headerBytes;
            meta.frequency = capture.number("core:frequency");
        } else if (headerBytes != 0) {
            throw InputError(path, "", "core:header_bytes: expected it in the first capture only");
        }
    }
}

} // namespace

SigMfMeta readSigMfMeta(const std::string& path)
{
    const Json json = parse(File(path));
    const Section document(path, "the description", json);
    const Section global(path, "global", document.get("global"));

    SigMfMeta meta;
    meta.datatype = global.text("core:datatype");
    const std::optional<SampleFormat> format = sampleFormat(meta.datatype);
    global.require(format.has_value(), "core:datatype", "a type such as cf32_le, ri16_le or cu8", meta.datatype);
    meta.format = *format;
    meta.channels = global.count("core:num_channels", 1);
    global.require(meta.channels != 0 && meta.channels <= kMaxChannels, "core:num_channels",
                   "1 to " + std::to_string(kMaxChannels), meta.channels);
    meta.rate = global.number("core:sample_rate");
    meta.trailingBytes = global.count("core:trailing_bytes", 0);
    readCaptures(path, document, meta);
    return meta;
}

} // namespace tracery::recordings
