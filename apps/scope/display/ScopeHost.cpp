#include "display/ScopeHost.h"

#include "UsageError.h"

#include <tracery/embedded/errors.h>
#include <tracery/host/Arrays.h>

#include <dlfcn.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string_view>

namespace scope {

using namespace tracery;

namespace fs = std::filesystem;

namespace {

/// The file that the linked library came from.
std::string linkedLibrary()
{
    // Not the function's address: that may be a stub in the program itself.
    void* entry = dlsym(RTLD_DEFAULT, "QueryVTFcnTable_tracery");
    Dl_info info{};
    if (entry == nullptr || dladdr(entry, &info) == 0 || info.dli_fname == nullptr)
        throw std::runtime_error("the library that the program is linked with cannot be found");
    return info.dli_fname;
}

/// The NAMEs of the entry points QueryVTFcnTable_NAME that a library mentions: its own, and those it calls.
std::set<std::string> moduleNames(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    constexpr std::string_view kLibraryBegins = "\x7f"
                                                "ELF";
    std::string text(kLibraryBegins.size(), '\0');
    if (!file.read(text.data(), static_cast<std::streamsize>(text.size())) || text != kLibraryBegins)
        throw UsageError(path + ": is not a library");
    text.assign(std::istreambuf_iterator<char>(file), {});
    constexpr std::string_view kQuery = "QueryVTFcnTable_";
    std::set<std::string> names;
    for (std::size_t at = text.find(kQuery); at != std::string::npos; at = text.find(kQuery, at)) {
        at += kQuery.size();
        const auto isPart = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
        const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at);
        names.emplace(begin, std::find_if_not(begin, text.end(), isPart));
    }
    names.erase("");
    return names;
}

bool is(const Error& error, const ErrorKind& kind) { return std::strcmp(error.name(), kind.name) == 0; }

void load(embedded::EmbeddedHost& host, const std::string& path)
{
    // With a folder in front, or it would be looked for where the system has its libraries.
    const std::string file = fs::absolute(path).string();
    for (const std::string& name : moduleNames(path))
        try {
            host.loadModule(file, name);
            return;
        } catch (const Error& error) {
            if (is(error, embedded::errors::ModuleNotFound))
                throw UsageError(path + ": is not a library that can be loaded");
            if (is(error, embedded::errors::ModuleVersion))
                throw UsageError(path + ": was built for another version of the seam between host and module");
            if (!is(error, embedded::errors::InvalidModule))
                throw;
        }
    throw UsageError(path + ": is a library, but not a module: it lacks the entry points");
}

} // namespace

ScopeHost::ScopeHost() { host_.loadModule(linkedLibrary()); }

ScopeHost::ScopeHost(const std::string& module)
{
    std::error_code error;
    const fs::file_status status = fs::status(module, error);
    if (!fs::exists(status))
        throw UsageError(module + ": no such file");
    if (!fs::is_regular_file(status))
        throw UsageError(module + ": is not a file, expected a module");
    load(host_, module);
}

void ScopeHost::setRefreshPeriod(double seconds)
{
    const HostArrayPtr period = makeScalar(seconds);
    const HostArray* inputs[] = {period.get()};
    host_.functions().call("SetScopeRefreshRateImpl", inputs, 0);
}

bool ScopeHost::idle(std::chrono::microseconds slice)
{
    if (!warmUp_)
        warmUp_.emplace();
    return !warmUp_->done() && host_.runTasks(slice);
}

} // namespace scope
