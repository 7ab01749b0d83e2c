// Loads the library as a host's loader does, linked with nothing of it: entryPoints LIBRARY VERSION
#include <tracery/host/Module.h>

#include <dlfcn.h>

#include <cstdio>
#include <ctime>
#include <string>

namespace {

int failures = 0;

void check(bool good, const char* what)
{
    if (!good)
        std::fprintf(stderr, "entryPoints: %s\n", what);
    failures += good ? 0 : 1;
}

template <class Symbol>
Symbol* find(void* library, const char* name)
{
    void* symbol = dlsym(library, name);
    check(symbol != nullptr, name);
    return reinterpret_cast<Symbol*>(symbol);
}

} // namespace

int main(int, char** arguments)
{
    void* library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    check(library != nullptr, "the library does not load");
    if (library == nullptr)
        return 1;
    auto* initialize = find<void()>(library, "VTInitialize_tracery");
    auto* terminate = find<void()>(library, "VTTerminate_tracery");
    auto* query = find<const tracery::ModuleTable*()>(library, "QueryVTFcnTable_tracery");
    auto* setRate =
        find<void(int, tracery::HostArray**, int, const tracery::HostArray**)>(library, "SetScopeRefreshRateImpl");
    auto* version = find<const char* const>(library, "tracery_version");
    auto* date = find<const char* const>(library, "tracery_build_date");
    auto* folder = find<const char* const>(library, "tracery_relative_path");
    if (failures > 0)
        return 1;

    const tracery::ModuleTable* table = query();
    check(table == query() && table->seamVersion == tracery::kSeamVersion && table->attach && table->detach, "table");
    check(std::string(table->name) == "tracery" && std::string(table->version) == *version, "name and version");
    check(table->numberOfFunctions == 1 && std::string(table->functions[0].name) == "SetScopeRefreshRateImpl" &&
              table->functions[0].body == setRate,
          "functions");
    check(std::string(*version) == arguments[2], "tracery_version");
    std::tm day{};
    const char* end = strptime(*date, "%b %d %Y", &day);
    check(end != nullptr && *end == '\0' && std::string(*date).size() == 11, "tracery_build_date");
    check(std::string(*folder) == "bin\\win64\\scopes", "tracery_relative_path");

    // Without a host all of this is allowed, in any order, and as often as one likes.
    terminate();
    initialize();
    initialize();
    setRate(0, nullptr, 0, nullptr);
    setRate(0, nullptr, 1, nullptr);
    terminate();
    terminate();
    setRate(0, nullptr, 0, nullptr); // the scheduler's timer runs when the process ends
    return failures > 0 ? 1 : 0;
}
