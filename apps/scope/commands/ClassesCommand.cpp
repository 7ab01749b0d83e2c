#include "commands/commands.h"
#include "display/ScopeHost.h"

#include <cstdio>
#include <set>

namespace scope {

void runClasses(const ClassesOptions& options)
{
    std::set<std::string> ofTheHost;
    for (const auto& listing : tracery::embedded::EmbeddedHost().listClasses())
        ofTheHost.insert(listing.name);
    std::optional<ScopeHost> host;
    options.module.empty() ? host.emplace() : host.emplace(options.module);
    std::string text;
    std::string names;
    for (const tracery::embedded::ClassListing& listing : (*host)->listClasses()) {
        if (ofTheHost.contains(listing.name))
            continue;
        const std::string shortName = listing.name.substr(listing.name.rfind('.') + 1);
        names += (names.empty() ? "" : ", ") + shortName;
        if (options.name.empty() || options.name == listing.name || options.name == shortName)
            text += (text.empty() ? "" : "\n") + formatClass(listing);
    }
    if (text.empty())
        throw UsageError(names.empty() ? options.module + ": publishes no classes"
                                       : "there is no class '" + options.name + "'; there are " + names);
    std::fputs(text.c_str(), stdout);
}

} // namespace scope
