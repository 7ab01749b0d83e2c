// Calls of any kind, in any order and with any arguments, to all classes that the host knows, as they describe
// themselves. What is refused must be refused with an identifier, and nothing may be left behind.

#include "arrays.h"

#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Error.h>
#include <tracery/host/Module.h>
#include <tracery/host/Publish.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

using namespace tracery;
using namespace tracery::hostobj;
using embedded::ClassListing;
using embedded::EmbeddedHost;
using embedded::MethodListing;
using embedded::PropertyListing;
using fuzz::anyExtents;
using fuzz::Bytes;
using fuzz::Extents;
using fuzz::numbersOf;

namespace {

class Session;
Session* running = nullptr;

/// The host, with a subclass of each abstract class, and all its classes.
struct World {
    World();
    /// The class and its ancestors.
    std::vector<const ClassListing*> family(const std::string& name) const
    {
        std::vector<const ClassListing*> all;
        for (auto found = classes.find(name); found != classes.end(); found = classes.find(found->second.superclass))
            all.push_back(&found->second);
        return all;
    }

    EmbeddedHost host;
    HostScope scope{host};
    std::map<std::string, ClassListing> classes;
    std::vector<std::string> names;
};

World& world()
{
    static World theOne;
    return theOne;
}

/// What host code throws, which nobody makes anything else of.
struct OfTheHost {};

class Session {
public:
    explicit Session(Bytes& bytes) : bytes_(bytes) { running = this; }
    ~Session()
    {
        running = nullptr;
        values_.clear();
        for (const auto& object : std::exchange(objects_, {}))
            host_.deleteObject(object);
        EXPECT_EQ(host_.getNumberOfLiveObjects(), 0U);
        EXPECT_EQ(getNumberOfLiveArrays(), arraysBefore_);
    }
    Session(const Session&) = delete;

    void step()
    {
        try {
            act(bytes_.below(16));
        } catch (const Error&) {
        } catch (const OfTheHost&) {
        }
    }

    /// A method that the class of the host supplies.
    HostOutputs body(HostInputs inputs, std::size_t wanted)
    {
        const HostObjectRef self = inputs.empty() ? nullptr : omGetArrayElement(inputs[0], 0);
        switch (bytes_.below(8)) {
        case 0:
            if (bytes_.flag())
                throw OfTheHost();
            throw Error(errors::InvalidSubscript);
        case 1:
            host_.deleteObject(self);
            break;
        case 2:
        case 3:
            if (depth_ < 3) {
                ++depth_;
                step();
                --depth_;
            }
            break;
        default:
            break;
        }
        return someValues(bytes_.below(4) == 0 ? bytes_.below(3) : wanted);
    }

private:
    using Values = std::vector<HostArrayPtr>;

    void act(std::size_t choice)
    {
        const HostObjectRef object = anyObject();
        if (object == nullptr || choice == 0)
            return construct();
        const ClassListing& own = *anyMember(object);
        switch (choice) {
        case 1:
            return host_.deleteObject(object);
        case 2:
            return functionsAndTasks();
        case 3:
            return elements(object);
        case 4:
            return objectSystem(object, own);
        case 5:
        case 6:
        case 7:
        case 8:
            if (!own.properties.empty()) {
                const PropertyListing& property = bytes_.oneOf(own.properties);
                if (bytes_.below(4) == 0)
                    return keep(host_.get(object, property.name));
                const HostArrayPtr value = valueFor(property);
                host_.set(object, property.name, value.get());
            }
            return;
        default:
            if (!own.methods.empty()) {
                const MethodListing& method = bytes_.oneOf(own.methods);
                const Values inputs = inputsOf(method);
                keep(host_.call(object, method.name, pointers(inputs), wanted(method)));
            }
        }
    }

    void construct()
    {
        const std::string& name = bytes_.oneOf(world().names);
        const std::vector<const ClassListing*> family = world().family(name);
        const auto made = std::ranges::find_if(family, [](const auto* each) { return each->constructor.has_value(); });
        const Values inputs = made != family.end() ? inputsOf(*(*made)->constructor) : Values();
        if (objects_.size() < 12)
            objects_.push_back(host_.construct(name, pointers(inputs)));
    }

    void functionsAndTasks()
    {
        const Values inputs = someValues(bytes_.below(3));
        const ModuleTable& table = *QueryVTFcnTable_tracery();
        switch (bytes_.below(3)) {
        case 0:
            host_.runTasks(std::chrono::microseconds(1));
            break;
        case 1:
            host_.graphics().commitDatabaseUpdates(bytes_.byte());
            break;
        default:
            HostArray* output[1] = {};
            auto borrowed = pointers(inputs);
            table.functions[bytes_.below(table.numberOfFunctions)].body(1, output, static_cast<int>(borrowed.size()),
                                                                        borrowed.data());
            keep(HostArrayPtr(output[0]));
        }
    }

    void elements(const HostObjectRef& object)
    {
        keep(omCreateScalar(bytes_.flag() ? object : nullptr));
        const HostArrayPtr array = anyValue();
        const std::uint64_t index = bytes_.flag() ? bytes_.below(4) : bytes_();
        if (array == nullptr)
            return;
        omGetArrayElement(array.get(), index);
        getCell(array.get(), index);
        omSetArrayElement(array.get(), index, object);
        EXPECT_EQ(omGetArrayElement(array.get(), index), object);
        keep(HostArrayPtr(duplicateArray(array.get())));
    }

    void objectSystem(const HostObjectRef& object, const ClassListing& own)
    {
        ObjectSystem& system = host_.objects();
        EXPECT_EQ(system.objectOfHandle(host_.handleOf(object)), object);
        noteObject(system.objectOfHandle(bytes_.number()));
        const auto& methods = own.methods;
        const std::string method =
            methods.empty() || bytes_.below(4) == 0 ? bytes_.text(6) : bytes_.oneOf(methods).name;
        const Values inputs = someValues(bytes_.below(4));
        switch (bytes_.below(5)) {
        case 0:
            return keep(omCallMethod(object, method, pointers(inputs), bytes_.below(3)));
        case 1:
            return keep(omCallMethod(own.name, method, pointers(inputs), bytes_.below(3)));
        case 2:
            return keep(host_.callStatic(own.name, method, pointers(inputs), bytes_.below(3)));
        case 3:
            return keep(
                system.getProperty(object, own.properties.empty() ? method : bytes_.oneOf(own.properties).name));
        default:
            system.hasMethod(object, method);
            system.wrapPayload(own.name, nullptr);
        }
    }

    // ---- Choices

    HostObjectRef anyObject() { return objects_.empty() ? nullptr : bytes_.oneOf(objects_); }
    /// A class that the object inherits members from; now and then any.
    const ClassListing* anyMember(const HostObjectRef& object)
    {
        const auto family = world().family(object->className());
        return bytes_.below(16) == 0 ? &world().classes.at(bytes_.oneOf(world().names)) : bytes_.oneOf(family);
    }
    std::size_t wanted(const MethodListing& method)
    {
        return bytes_.below(4) == 0        ? bytes_.below(5)
               : method.signatures.empty() ? 0
                                           : method.signatures[0].outputs.size();
    }
    Values someValues(std::size_t count)
    {
        Values values;
        for (; count > 0; --count)
            values.push_back(anyValue());
        return values;
    }
    Values inputsOf(const MethodListing& method)
    {
        if (method.signatures.empty() || bytes_.below(8) == 0)
            return someValues(bytes_.below(10));
        Values values;
        const embedded::SignatureListing& signature = bytes_.oneOf(method.signatures);
        const std::size_t left = signature.optional != 0 ? bytes_.below(signature.optional + 1) : 0;
        for (std::size_t i = 0; i + left < signature.inputs.size(); ++i)
            values.push_back(valueOf(signature.inputs[i]));
        return values;
    }
    HostArrayPtr valueFor(const PropertyListing& property)
    {
        if (property.enumeration.empty() || bytes_.below(4) == 0)
            return valueOf(property.enumeration.empty() ? property.type : "any");
        return HostArrayPtr(createString(bytes_.oneOf(property.enumeration).second.c_str()));
    }

    /// Mostly a value of the type, for the sake of what lies behind the conversion.
    HostArrayPtr valueOf(const std::string& type)
    {
        const COSDataTypePtr wanted = COSDataType::fromString(type);
        if (bytes_.below(8) == 0 || wanted->getBase() == COSDataType::Base::any)
            return anyValue();
        const bool scalar = wanted->getShape() == COSDataType::Shape::scalar;
        switch (wanted->getBase()) {
        case COSDataType::Base::double_:
            return numbersOf(bytes_, HostComplexity::real,
                             scalar ? Extents{1, 1} : Extents{1 + bytes_.below(3), 1 + bytes_.below(3)});
        case COSDataType::Base::uint32: {
            HostArrayPtr array(createDoubleMatrix(1, 1, HostComplexity::real));
            getRealData(array.get())[0] = bytes_.below(16) != 0 ? static_cast<double>(bytes_.below(8)) : 4294967295.0;
            return array;
        }
        case COSDataType::Base::logical:
            return HostArrayPtr(createLogicalScalar(bytes_.flag()));
        default: {
            std::vector<HostObjectRef> fitting;
            std::ranges::copy_if(objects_, std::back_inserter(fitting), [&](const HostObjectRef& each) {
                return wanted->getBase() != COSDataType::Base::class_ || each->isA(type.substr(0, type.find(' ')));
            });
            return fitting.empty() ? anyValue() : omCreateScalar(bytes_.oneOf(fitting));
        }
        }
    }

    HostArrayPtr anyValue()
    {
        switch (bytes_.below(12)) {
        case 0:
            return nullptr;
        case 1:
            return numbersOf(bytes_, HostComplexity::complex, anyExtents(bytes_));
        case 2:
            return HostArrayPtr(createString(bytes_.text(12).c_str()));
        case 3: {
            const Extents all = anyExtents(bytes_);
            HostArrayPtr array(createLogicalArray(all.size(), all.data()));
            for (std::uint64_t i = 0; i < getNumberOfElements(array.get()); ++i)
                getLogicals(array.get())[i] = bytes_.flag();
            return array;
        }
        case 4: {
            const Extents all = anyExtents(bytes_);
            HostArrayPtr cell(createCellArray(all.size(), all.data()));
            if (depth_ < 3 && getNumberOfContainedElements(cell.get()) > 0) {
                ++depth_;
                setCell(cell.get(), 0, anyValue().release());
                --depth_;
            }
            return cell;
        }
        case 5: {
            const Extents all = anyExtents(bytes_);
            const HostObjectRef object = anyObject();
            const char* name = object != nullptr ? object->className() : "any.Class";
            HostArrayPtr array(createObjectArray(name, all.size(), all.data()));
            for (std::uint64_t i = 0; i < getNumberOfContainedElements(array.get()); ++i)
                omSetArrayElement(array.get(), i, bytes_.below(4) != 0 ? anyObject() : nullptr);
            return array;
        }
        case 6: {
            const HostObjectRef object = anyObject();
            return object != nullptr ? omCreateScalar(object) : nullptr;
        }
        case 7: {
            HostArrayPtr array =
                numbersOf(bytes_, bytes_.flag() ? HostComplexity::complex : HostComplexity::real, anyExtents(bytes_));
            const bool empty = isEmpty(array.get());
            setRealData(array.get(), empty ? static_cast<double*>(allocateMemory(8)) : nullptr);
            return array;
        }
        case 8:
            return HostArrayPtr(values_.empty() ? nullptr : duplicateArray(bytes_.oneOf(values_).get()));
        default:
            return numbersOf(bytes_, HostComplexity::real, bytes_.flag() ? Extents{1, 1} : anyExtents(bytes_));
        }
    }

    // ---- What comes back

    void noteObject(const HostObjectRef& object)
    {
        if (object != nullptr && std::ranges::find(objects_, object) == objects_.end())
            objects_.push_back(object);
    }
    void keep(HostArrayPtr value)
    {
        if (value == nullptr)
            return;
        noteObject(omGetArrayElement(value.get(), 0));
        if (values_.size() < 8)
            values_.push_back(std::move(value));
        else
            bytes_.oneOf(values_) = std::move(value);
    }
    void keep(HostOutputs outputs)
    {
        for (HostArrayPtr& each : outputs)
            keep(std::move(each));
    }
    static std::vector<const HostArray*> pointers(const Values& values)
    {
        std::vector<const HostArray*> all;
        for (const HostArrayPtr& each : values)
            all.push_back(each.get());
        return all;
    }

    Bytes& bytes_;
    EmbeddedHost& host_ = world().host;
    std::size_t arraysBefore_ = getNumberOfLiveArrays();
    std::vector<HostObjectRef> objects_; ///< all that were seen
    Values values_;
    int depth_ = 0;
};

World::World()
{
    publishClasses(host.objects());
    std::vector<embedded::HostMethod> bodies;
    const std::vector<ClassListing> published = host.listClasses();
    for (const ClassListing& listing : published)
        for (const MethodListing& method : listing.methods)
            if (method.isAbstract || method.isOptional)
                bodies.push_back({.name = method.name, .body = [](HostInputs inputs, std::size_t wanted) {
                                      return running != nullptr ? running->body(inputs, wanted) : HostOutputs();
                                  }});
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

} // namespace

void fuzz::runInput(Bytes& bytes)
{
    world();
    Session session(bytes);
    while (!bytes.isEmpty())
        session.step();
}
