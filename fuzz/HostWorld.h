#pragma once

#include "HostValues.h"

#include <tracery/host/Error.h>

#include <bit>
#include <exception>
#include <new>
#include <stdexcept>

namespace tracery::fuzz {

/// The host, with a subclass of each abstract class, and all its classes.
struct World {
    /// body  of the methods that the subclasses supply
    explicit World(const embedded::HostBody& body);
    /// The class and its ancestors.
    std::vector<const ClassListing*> family(const std::string& name) const
    {
        std::vector<const ClassListing*> all;
        for (auto found = classes.find(name); found != classes.end(); found = classes.find(found->second.superclass))
            all.push_back(&found->second);
        return all;
    }

    embedded::EmbeddedHost host;
    HostScope scope{host};
    std::map<std::string, ClassListing> classes;
    std::vector<std::string> names;
};

inline World::World(const embedded::HostBody& body)
{
    publishClasses(host.objects());
    host.setConsoleSink([](const std::string&) {});
    std::vector<embedded::HostMethod> bodies;
    const std::vector<ClassListing> published = host.listClasses();
    for (const ClassListing& listing : published)
        for (const MethodListing& method : listing.methods)
            if (method.isAbstract || method.isOptional)
                bodies.push_back({.name = method.name, .body = body});
    for (const ClassListing& listing : published)
        if (listing.isAbstract)
            host.defineClass({.name = "fuzz.Sub" + std::to_string(&listing - published.data()),
                              .superclass = listing.name,
                              .methods = bodies});
    for (const ClassListing& listing : host.listClasses()) {
        names.push_back(listing.name);
        classes.emplace(listing.name, listing);
    }
}

/// What host code throws, of which nobody makes anything else.
inline std::exception_ptr anyFailure(Bytes& bytes)
{
    struct Odd {};
    struct Full : std::bad_alloc {};
    switch (bytes.below(6)) {
    case 0:
        return std::make_exception_ptr(Odd());
    case 1:
        return std::make_exception_ptr(Full());
    case 2:
        return std::make_exception_ptr(std::out_of_range("of the host"));
    case 3:
        return std::make_exception_ptr(std::length_error("of the host"));
    case 4:
        return std::make_exception_ptr(std::runtime_error("of the host"));
    default: {
        const std::string name = "MadeAtRunTime";
        return std::make_exception_ptr(Error({"my:scripts", name.c_str(), "of the host"}));
    }
    }
}

/// All that can be seen of an array, as a number; of objects whether they are there.
inline std::uint64_t digest(const HostArray* array)
{
    std::uint64_t sum = 14695981039346656037ULL;
    const auto add = [&sum](std::uint64_t bits) { sum = std::rotl((sum ^ bits) * 1099511628211ULL, 29); };
    if (array == nullptr)
        return sum;
    add(static_cast<std::uint64_t>(getClassID(array)) + (isComplex(array) ? 16 : 0));
    for (std::size_t i = 0; i < getNumberOfDimensions(array); ++i)
        add(getDimensions(array)[i]);
    for (const std::span<const double> part : {realValues(array), imagValues(array)})
        for (const double value : part)
            add(std::bit_cast<std::uint64_t>(value));
    for (std::uint64_t i = 0; i < getNumberOfContainedElements(array); ++i)
        if (const char* text = getChars(array))
            add(static_cast<std::uint64_t>(text[i]));
        else if (const std::uint8_t* flags = getLogicals(array))
            add(flags[i]);
        else if (!isDouble(array))
            add(getCell(array, i) != nullptr ? digest(getCell(array, i)) : omGetArrayElement(array, i) != nullptr);
    return sum;
}

} // namespace tracery::fuzz
