#include "commands.h"

#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Publish.h>

#include <cstdio>
#include <span>

namespace scope {

void runClasses(const ClassesOptions& options)
{
    tracery::embedded::EmbeddedHost host;
    const std::size_t ofTheHost = host.listClasses().size();
    tracery::publishClasses(host.objects());
    std::string text;
    std::string names;
    const std::vector<tracery::embedded::ClassListing> classes = host.listClasses();
    for (const tracery::embedded::ClassListing& listing : std::span(classes).subspan(ofTheHost)) {
        const std::string shortName = listing.name.substr(listing.name.rfind('.') + 1);
        names += (names.empty() ? "" : ", ") + shortName;
        if (options.name.empty() || options.name == listing.name || options.name == shortName)
            text += (text.empty() ? "" : "\n") + formatClass(listing);
    }
    if (text.empty())
        throw UsageError("there is no class '" + options.name + "'; there are " + names);
    std::fputs(text.c_str(), stdout);
}

} // namespace scope
