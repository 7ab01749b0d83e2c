// Every member of every published class, found by listing the classes, short of memory at every allocation in turn.

#include "bindings/Script.h"
#include "support/FaultSweep.h"

#include <cmath>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr const char* kLine = "veltra.graphics.animation.ScopeLineAnimator";
using Values = Script::Values;

/// A value as a list of numbers: class, extents and elements; of objects whether they are there.
void observe(const HostArray* array, Observation& all)
{
    if (array == nullptr) {
        all.push_back(-1);
        return;
    }
    all.push_back(static_cast<double>(getClassID(array)));
    for (std::size_t i = 0; i < getNumberOfDimensions(array); ++i)
        all.push_back(static_cast<double>(getDimensions(array)[i]));
    for (const std::vector<double>& part : {realOf(array), imagOf(array)})
        all.insert(all.end(), part.begin(), part.end());
    for (std::uint64_t i = 0; i < getNumberOfElements(array); ++i)
        if (const char* text = getChars(array))
            all.push_back(text[i]);
        else if (const std::uint8_t* flags = getLogicals(array))
            all.push_back(flags[i]);
        else if (getClassID(array) == HostClassID::object)
            all.push_back(hostobj::omGetArrayElement(array, i) != nullptr ? 1 : 0);
}

class ObjectFaultTest : public testing::Test {
protected:
    ObjectFaultTest() : classes_(script_.host.listClasses())
    {
        display_ = script_.subclass("veltrashared.scopes.visual.AbstractTimeDomainPlotter", Script::Supplying::all);
    }

    /// An object of the class with something in it. Plotters are displays of the host's own.
    HostObjectRef filled(const embedded::ClassListing& listing)
    {
        const std::string& name = listing.name;
        if (listing.isAbstract) {
            const HostObjectRef display = script_.host.construct(display_);
            script_.set(display, "Lines", script_.make("tracery.TimeScopeLine", script_.make(kLine)));
            script_.set(display, "SampleTimes", std::vector{0.1, 0.2});
            return display;
        }
        if (name == "tracery.TimeBuffer") {
            const HostObjectRef buffer = script_.make(name.c_str(), 40, matrix(2, 1, {2, 1}), 2, "MultipleRate");
            for (const double port : {1.0, 2.0})
                script_.call(0, buffer, "addTimeAndValue", row({1, 2, 3}),
                             port == 1 ? matrix(2, 3, {1, 2, 3, 4, 5, 6}) : row({7, 8, 9}), port);
            return buffer;
        }
        if (name == "tracery.SpectrumBuffer") {
            const HostObjectRef buffer = script_.make(name.c_str(), 4, 50, true, 1);
            script_.call(0, buffer, "setReduceUpdates", false);
            script_.call(0, buffer, "addValue", matrix(9, 1, std::vector<double>(9, 0.5)), 1);
            script_.call(4, buffer, "updateCCDF", matrix(3, 1, {1, 2, 3}), 20, 0.5);
            return buffer;
        }
        if (name == "tracery.TimeScopeLine")
            return script_.make(name.c_str(), script_.make(kLine));
        const HostObjectRef object = script_.host.construct(name);
        if (name == "tracery.TimeDomainTriggerController")
            script_.set(object, "Mode", "Normal");
        else if (name == "tracery.OneShotTimer")
            script_.set(object, "TimeoutDuration", 100); // its time is up from now on
        else if (name.find("Controller") != std::string::npos)
            script_.set(object, "Plotter", HostObjectRef(plotter()));
        return object;
    }
    HostObjectRef plotter()
    {
        if (plotter_ == nullptr)
            plotter_ = script_.host.construct(display_);
        return plotter_;
    }

    /// All readable properties, of the ancestors too, and the contents of buffers.
    Observation all(const HostObjectRef& object)
    {
        Observation seen;
        for (const embedded::ClassListing& listing : classes_)
            for (const embedded::PropertyListing& property : listing.properties)
                // Reading the controller makes it, which is to be seen as an operation.
                if (object->isA(listing.name.c_str()) && property.name != "TimeOverrunModeController")
                    observe(script_.host.get(object, property.name).get(), seen);
        const auto results = [&](const char* method, std::size_t wanted, auto&&... inputs) {
            std::string refusal = failure([&] {
                for (const HostArrayPtr& result : script_.call(wanted, object, method, inputs...))
                    observe(result.get(), seen);
            });
            seen.push_back(static_cast<double>(refusal.size()));
        };
        if (object->isA("tracery.TimeBuffer"))
            results("GetTimeAndValue", 2), results("GetTimeAndValue", 2, 2), results("GetLastTime", 1);
        if (object->isA("tracery.SpectrumBuffer"))
            results("getSegments", 1), results("getLastTime", 1), results("getNumProcessedSamples", 1);
        if (object->isA("tracery.TimeDomainTriggerController"))
            results("getLastTriggerWindow", 2);
        if (object->isA(kLine)) {
            const auto points = script_.host.animator().points(object);
            seen.insert(seen.end(), points.begin(), points.end());
        }
        seen.push_back(script_.host.isValid(object) ? 1 : 0);
        return seen;
    }

    /// What a member is given: of its own where any value would be refused, else a value of its type.
    HostArrayPtr valueFor(const std::string& type)
    {
        if (type.starts_with("tracery.TimeBuffer"))
            return Script::value(buffer());
        if (type.starts_with("veltrashared."))
            return Script::value(plotter());
        return type.starts_with("logical") ? Script::value(true) : row({1});
    }
    HostObjectRef buffer()
    {
        if (buffer_ == nullptr)
            buffer_ = script_.make("tracery.TimeBuffer", 10);
        return buffer_;
    }
    Values inputsFor(const embedded::ClassListing& listing, const embedded::MethodListing& method,
                     const embedded::SignatureListing& signature)
    {
        const HostArrayPtr t = row({11}), v = matrix(2, 1, {3, 4});
        const auto again = [](const HostArrayPtr& array) { return HostArrayPtr(duplicateArray(array.get())); };
        const std::string key = listing.name.substr(listing.name.rfind('.') + 1) + '.' + method.name;
        if (key == "TimeBuffer.TimeBuffer")
            return Script::list(10, matrix(2, 1, {1, 1}), 2, "multiplerate", std::vector{0.0, 1.0}, true);
        if (key == "TimeBuffer.addTimeAndValue")
            return Script::list(again(t), again(v), 1);
        if (key == "TimeBuffer.AddTime")
            return Script::list(again(t), 1);
        if (key == "TimeBuffer.AddValue")
            return Script::list(again(v), 1);
        if (key == "TimeScopeLine.TimeScopeLine")
            return Script::list(script_.make(kLine));
        if (key == "TimeScopeLine.getThinData")
            return Script::list(matrix(2, 4, {0, 1, 1, 2, 2, 3, 3, 4}), 4, 0.5);
        if (key == "SpectrumBuffer.addValue")
            return Script::list(matrix(300, 1, std::vector<double>(300, 2)), 1);
        if (key == "SpectrumBuffer.updateCCDF")
            return Script::list(matrix(3, 1, {4, 5, 6}), 20, 0.5);
        Values values;
        for (const std::string& type : signature.inputs)
            values.push_back(valueFor(type));
        return values;
    }
    /// Another value for a property, of its present one's class where there is one.
    HostArrayPtr otherValue(const HostObjectRef& object, const embedded::PropertyListing& property)
    {
        if (!property.enumeration.empty())
            return Script::value(property.enumeration.back().second.c_str());
        if (property.name == "Lines" || property.name == "Axes")
            return Script::value(script_.make("tracery.TimeScopeLine", script_.make(kLine)));
        if (property.name == "TimeOverrunModeController")
            return Script::value(script_.make("veltrashared.scopes.visual.ScrollingTimeDomainController"));
        if (property.name == "Plotter")
            return Script::value(script_.host.construct(display_));
        HostArrayPtr value = script_.host.get(object, property.name);
        if (value == nullptr)
            return row({1});
        for (std::uint64_t i = 0; i < getNumberOfElements(value.get()); ++i)
            if (isDouble(value.get()))
                getRealData(value.get())[i] += std::isnan(getRealData(value.get())[i]) ? NAN : 1;
            else
                getLogicals(value.get())[i] ^= 1;
        return value;
    }

    using Operation = std::function<void(const HostObjectRef&)>;
    void sweep(const embedded::ClassListing& listing, const std::string& member, const Operation& operation,
               Promise promise = Promise::nothingHappened, const Operation& prepare = {})
    {
        const auto make = [&] {
            const HostObjectRef object = filled(listing);
            if (prepare)
                prepare(object);
            return std::make_unique<const HostObjectRef>(object);
        };
        const auto see = [this](const HostObjectRef& object) { return all(object); };
        const auto operate = [&](const HostObjectRef& object) {
            const std::size_t objects = script_.host.getNumberOfLiveObjects();
            try {
                operation(object);
            } catch (...) {
                EXPECT_LE(script_.host.getNumberOfLiveObjects(), objects) << "an object is left behind";
                throw;
            }
        };
        failEveryAllocation(listing.name + ' ' + member, make, operate, see, promise);
        script_.calls.clear();
    }

    Script script_;
    std::vector<embedded::ClassListing> classes_;
    std::string display_;
    HostObjectRef buffer_, plotter_;
};

std::vector<const HostArray*> borrowed(const Values& values)
{
    std::vector<const HostArray*> pointers;
    for (const HostArrayPtr& value : values)
        pointers.push_back(value.get());
    return pointers;
}

TEST_F(ObjectFaultTest, EveryMemberEitherDoesItsWorkOrIsOutOfMemory)
{
    int members = 0;
    for (const embedded::ClassListing& listing : classes_) {
        if (!listing.isPublished)
            continue;
        if (listing.constructor)
            for (const embedded::SignatureListing& signature : listing.constructor->signatures)
                for (const std::size_t left : {std::size_t{0}, signature.optional}) {
                    ++members;
                    const Values values = inputsFor(listing, *listing.constructor, signature);
                    const std::vector<const HostArray*> inputs = borrowed(values);
                    const auto given = std::span(inputs).first(std::min(inputs.size(), signature.inputs.size() - left));
                    sweep(listing, "constructor",
                          [&](const HostObjectRef&) { script_.host.construct(listing.name, given); });
                }
        for (const embedded::PropertyListing& property : listing.properties) {
            const std::string& name = property.name;
            ++members;
            sweep(listing, "get " + name, [&](const HostObjectRef& object) { script_.host.get(object, name); });
            if (property.setAccess != hostobj::Access::public_)
                continue;
            ++members;
            const HostArrayPtr value = otherValue(filled(listing), property);
            // What the host's own code does after a change may run out of memory, too: the property has changed then.
            const bool reacts = listing.isAbstract;
            sweep(
                listing, "set " + name,
                [&](const HostObjectRef& object) { script_.host.set(object, name, value.get()); },
                reacts ? Promise::canBeRepeated : Promise::nothingHappened);
        }
        for (const embedded::MethodListing& method : listing.methods)
            for (const embedded::SignatureListing& signature : method.signatures) {
                if (method.isAbstract || method.isOptional)
                    continue;
                ++members;
                const Values values = inputsFor(listing, method, signature);
                const std::vector<const HostArray*> inputs = borrowed(values);
                if (method.isStatic) { // of lines: the line, and points
                    sweep(listing, method.name, [&](const HostObjectRef& object) {
                        const Values own = Script::list(object, matrix(2, 2, {1, 2, 3, 4}));
                        const std::vector<const HostArray*> given = borrowed(own);
                        script_.host.callStatic(listing.name, method.name,
                                                std::span(given).first(method.name == "addXY" ? 2 : 1),
                                                method.name == "getXY" ? 1 : 0);
                    });
                    continue;
                }
                Operation prepare;
                if (method.name == "AddValue")
                    prepare = [this](const HostObjectRef& object) { script_.call(0, object, "AddTime", 11, 1); };
                sweep(
                    listing, method.name,
                    [&](const HostObjectRef& object) {
                        script_.host.call(object, method.name, inputs, signature.outputs.size());
                    },
                    Promise::nothingHappened, prepare);
            }
    }
    EXPECT_GT(members, 150);
    RecordProperty("members", members);
}

TEST_F(ObjectFaultTest, ARefusalThatThereIsNoMemoryToWordHasAnIdentifierToo)
{
    const HostObjectRef buffer = script_.make("tracery.SpectrumBuffer", 4, 0, false, 2);
    const HostArrayPtr column = matrix(3, 1, {1, 2, 3}), port = row({1});
    const HostArray* const inputs[] = {column.get(), port.get()};
    std::string last, outcome;
    for (long n = 0; outcome != "InvalidSubscript"; ++n) {
        last = std::exchange(outcome, failure([&] {
                                 try {
                                     const MemoryLimit limit(n, Shortage::ofOneAllocation);
                                     script_.host.call(buffer, "addValue", inputs, 0);
                                 } catch (const std::bad_alloc&) { // of the host, before it called the library
                                     throw Error(errors::InitializeError);
                                 }
                             }));
    }
    EXPECT_EQ(last, "OutOfMemory") << "the words are the last that is made";
}

} // namespace
