#pragma once

#include "support/Expect.h"

#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Publish.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tracery::test {

/// What code in the host's language would do, with the object system alone. At its end no array and no object that it
/// made is left.
class Script {
public:
    using Values = std::vector<HostArrayPtr>;
    using HostInputs = hostobj::HostInputs;
    using HostOutputs = hostobj::HostOutputs;

    Script()
    {
        publishClasses(host.objects());
        arraysAtStart_ = getNumberOfLiveArrays();
    }
    ~Script()
    {
        EXPECT_EQ(host.getNumberOfLiveObjects(), 0U);
        EXPECT_EQ(getNumberOfLiveArrays(), arraysAtStart_);
    }

    /// A new list of values: numbers, flags, texts, objects and arrays.
    template <class... T>
    static Values list(T&&... values)
    {
        Values made;
        (made.push_back(value(std::forward<T>(values))), ...);
        return made;
    }
    static HostArrayPtr value(double number) { return row({number}); }
    static HostArrayPtr value(int number) { return row({static_cast<double>(number)}); }
    static HostArrayPtr value(bool flag) { return HostArrayPtr(createLogicalScalar(flag)); }
    static HostArrayPtr value(const char* text) { return HostArrayPtr(createString(text)); }
    static HostArrayPtr value(const std::vector<double>& numbers) { return row(numbers); }
    static HostArrayPtr value(const HostObjectRef& object) { return hostobj::omCreateScalar(object); }
    static HostArrayPtr value(HostArrayPtr array) { return array; }

    template <class... T>
    HostObjectRef make(const char* dottedClass, T&&... inputs)
    {
        return host.construct(dottedClass, borrowed(list(std::forward<T>(inputs)...)));
    }
    /// An object of any class that has objects.
    HostObjectRef makeAny(const std::string& dottedClass)
    {
        return dottedClass == "tracery.SpectrumBuffer" ? make(dottedClass.c_str(), 4, 50, false, 1)
                                                       : host.construct(dottedClass);
    }
    template <class... T>
    HostOutputs call(std::size_t wanted, const HostObjectRef& object, const char* method, T&&... inputs)
    {
        return host.call(object, method, borrowed(list(std::forward<T>(inputs)...)), wanted);
    }
    /// The real numbers of the first result.
    template <class... T>
    std::vector<double> numbers(const HostObjectRef& object, const char* method, T&&... inputs)
    {
        const HostOutputs results = call(1, object, method, std::forward<T>(inputs)...);
        return results.empty() ? std::vector<double>() : realOf(results[0].get());
    }
    template <class T>
    void set(const HostObjectRef& object, const char* property, T&& newValue)
    {
        host.set(object, property, value(std::forward<T>(newValue)).get());
    }
    double number(const HostObjectRef& object, const char* property)
    {
        return Script::numbers(host.get(object, property));
    }
    bool flag(const HostObjectRef& object, const char* property)
    {
        return getLogicals(host.get(object, property).get())[0] != 0;
    }
    std::string text(const HostObjectRef& object, const char* property)
    {
        const HostArrayPtr array = host.get(object, property);
        return {getChars(array.get()), static_cast<std::size_t>(getNumberOfElements(array.get()))};
    }
    HostObjectRef object(const HostObjectRef& object, const char* property)
    {
        const HostArrayPtr array = host.get(object, property);
        return array != nullptr ? hostobj::omGetArrayElement(array.get(), 0) : nullptr;
    }

    /// Which of the methods that the library may call a subclass has.
    enum class Supplying { abstractOnes, all };
    /// A class of the host's language on top of a published base, with bodies that note the call and do what
    /// `whenCalled` says: for the abstract methods, for the optional ones too, or for these besides.
    std::string subclass(const std::string& base, const std::vector<std::string>& furtherMethods = {},
                         Supplying supplying = Supplying::abstractOnes)
    {
        embedded::HostClass display{.name = "demo.Display", .superclass = base};
        std::vector<std::string> names = furtherMethods;
        for (const embedded::ClassListing& listing : host.listClasses())
            for (const embedded::MethodListing& method : listing.methods)
                if (method.isAbstract || (method.isOptional && supplying == Supplying::all))
                    names.push_back(method.name);
        for (const std::string& name : names)
            display.methods.push_back({.name = name, .body = [this, name](HostInputs, std::size_t) {
                                           calls.push_back(name);
                                           if (whenCalled)
                                               whenCalled();
                                           return HostOutputs();
                                       }});
        host.defineClass(std::move(display));
        return "demo.Display";
    }
    std::string subclass(const std::string& base, Supplying supplying) { return subclass(base, {}, supplying); }

    embedded::EmbeddedHost host;
    std::vector<std::string> calls; ///< of the bodies of subclass()
    std::function<void()> whenCalled;

private:
    static double numbers(const HostArrayPtr& array)
    {
        return array != nullptr && getNumberOfElements(array.get()) > 0 ? getRealData(array.get())[0] : getNaN();
    }
    /// A list as inputs, for as long as the call lasts.
    struct Borrowed {
        Values values;
        std::vector<const HostArray*> pointers;
        operator HostInputs() const { return pointers; }
    };
    static Borrowed borrowed(Values values)
    {
        Borrowed inputs{std::move(values), {}};
        for (const HostArrayPtr& array : inputs.values)
            inputs.pointers.push_back(array.get());
        return inputs;
    }
    HostScope scope_{host};
    std::size_t arraysAtStart_ = 0;
};

} // namespace tracery::test
