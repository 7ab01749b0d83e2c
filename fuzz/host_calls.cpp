// Calls of any kind, in any order and with any arguments, to all classes that the host knows, as they describe
// themselves. What is refused must be refused with an identifier, and nothing may be left behind. Every other input is
// played twice, once with too little memory for many a call: the call is then made again, and all that can be seen must
// be as the first time.

#include "Floor.h"
#include "HostValues.h"
#include "HostWorld.h"
#include "support/FailingMemory.h"

#include <tracery/host/Error.h>
#include <tracery/host/Module.h>

#include <gtest/gtest.h>

#include <exception>
#include <random>
#include <set>
#include <type_traits>

using namespace tracery;
using namespace tracery::fuzz;
using embedded::EmbeddedHost;

namespace {

class Session;
Session* running = nullptr;

World& world();

/// Members by name, of which many different ones must be reached.
struct Members {
    void reach(const std::string& name)
    {
        if (seen.insert(name).second && name.find("fuzz.") == name.npos)
            ++floor;
    }
    std::set<std::string> seen;
    Floor floor;
};
Members taken{{}, {"members that took what they were given", 220}};
Members repeated{{}, {"members that ran out of memory and were called again", 240}};
Floor deleted("objects deleted", 1000), fromTheHost("failures of the host that arrived", 100),
    unknownHandles("handles that are none", 1000);

/// What was done and seen, step by step.
using Transcript = std::vector<std::pair<std::string, std::uint64_t>>;

class Session {
public:
    /// transcript  where to write what is seen; bodies of the host then do nothing. May be null
    /// shortages   draws how much memory calls have; null for enough
    Session(Bytes& bytes, Transcript* transcript, std::mt19937* shortages)
        : bytes_(bytes), transcript_(transcript), shortages_(shortages)
    {
        running = this;
    }
    ~Session()
    {
        running = nullptr;
        for (const auto& object : values_.release())
            host_.deleteObject(object);
        EXPECT_EQ(host_.getNumberOfLiveObjects(), 0U);
        EXPECT_EQ(getNumberOfLiveArrays(), arraysBefore_);
    }
    Session(const Session&) = delete;

    void step()
    {
        const HostObjectRef object = values_.anyObject();
        try {
            act(object, bytes_.below(16));
        } catch (...) {
            arrived(std::current_exception());
        }
        if (transcript_ != nullptr && object != nullptr)
            std::ranges::move(look(object), std::back_inserter(*transcript_));
    }

    /// The host's own failure as it is, or an error of the library.
    void arrived(const std::exception_ptr& failure)
    {
        if (std::exchange(thrown_, nullptr) == failure)
            return ++fromTheHost;
        try {
            std::rethrow_exception(failure);
        } catch (const Error& error) {
            see(error.name(), 0);
        }
    }

    /// A method that the class of the host supplies.
    HostOutputs body(HostInputs inputs, std::size_t wanted)
    {
        if (transcript_ != nullptr)
            return HostOutputs(wanted);
        const HostObjectRef self = inputs.empty() ? nullptr : omGetArrayElement(inputs[0], 0);
        switch (bytes_.below(8)) {
        case 0:
            std::rethrow_exception(thrown_ = anyFailure(bytes_));
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
        return values_.someValues(bytes_.below(4) == 0 ? bytes_.below(3) : wanted);
    }

private:
    void act(const HostObjectRef& object, std::size_t choice)
    {
        if (object == nullptr || choice == 0)
            return construct();
        const ClassListing& own = *anyMember(object);
        tellsTime_ = object->isA("tracery.OneShotTimer");
        switch (choice) {
        case 1:
            return remove(object);
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
                    return keep(attempt("get " + own.name + ' ' + property.name, object,
                                        [&] { return host_.get(object, property.name); }));
                const HostArrayPtr value = values_.valueFor(property);
                attempt("set " + own.name + ' ' + property.name, object,
                        [&] { host_.set(object, property.name, value.get()); });
            }
            return;
        default:
            if (!own.methods.empty()) {
                const MethodListing& method = bytes_.oneOf(own.methods);
                const Values inputs = values_.inputsOf(method);
                const std::size_t wanted = values_.wanted(method);
                keep(attempt(own.name + ' ' + method.name, object,
                             [&] { return host_.call(object, method.name, pointers(inputs), wanted); }));
            }
        }
    }

    /// Calls; with too little memory at first, if the session has little. What runs out is as before, and called again.
    template <class Call>
    std::invoke_result_t<Call> attempt(const std::string& what, const HostObjectRef& object, Call&& call)
    {
        see(what, 0);
        const auto taking = [&]() -> std::invoke_result_t<Call> {
            struct Reach {
                const std::string& member;
                int failuresBefore = std::uncaught_exceptions();
                ~Reach()
                {
                    if (std::uncaught_exceptions() == failuresBefore)
                        taken.reach(member);
                }
            } const reach{what};
            return call();
        };
        if (shortages_ == nullptr)
            return taking();
        // What the host's own code does after a change may run out of memory, too: it has changed then. And the samples
        // that give a window may have been taken in.
        const bool reacts = object != nullptr && std::string_view(object->className()).starts_with("fuzz");
        const bool isAsBefore = !reacts && !tellsTime_ && !what.ends_with(" getTriggerWindow");
        const Transcript before = isAsBefore ? look(object) : Transcript();
        const std::size_t arrays = getNumberOfLiveArrays(), objects = host_.getNumberOfLiveObjects();
        const Shortage shortage = (*shortages_)() % 2 == 0 ? Shortage::lasting : Shortage::ofOneAllocation;
        const long allocations = static_cast<long>((*shortages_)() % ((*shortages_)() % 4 == 0 ? 32 : 6));
        std::string failure;
        try {
            const test::MemoryLimit limit(allocations, shortage);
            return call();
        } catch (const std::bad_alloc&) {
            failure = "OutOfMemory";
        } catch (const Error& error) {
            failure = error.name();
        }
        if (failure == "OutOfMemory") {
            EXPECT_LE(host_.getNumberOfLiveObjects(), objects) << what;
            EXPECT_TRUE(reacts || getNumberOfLiveArrays() == arrays) << what << " left an array";
            EXPECT_TRUE(!isAsBefore || look(object) == before) << what << " was half done";
            repeated.reach(what);
        }
        return taking();
    }

    void construct()
    {
        const std::string& name = bytes_.oneOf(world().names);
        const std::vector<const ClassListing*> family = world().family(name);
        const auto made = std::ranges::find_if(family, [](const auto* each) { return each->constructor.has_value(); });
        const Values inputs = made != family.end() ? values_.inputsOf(*(*made)->constructor) : Values();
        if (values_.objects().size() < 12)
            values_.note(attempt("new " + name, nullptr, [&] { return host_.construct(name, pointers(inputs)); }));
    }

    void remove(const HostObjectRef& object)
    {
        const double handle = host_.handleOf(object);
        EXPECT_EQ(host_.objects().objectOfHandle(handle), object);
        EXPECT_EQ(host_.objects().objectOfHandle(handle + 0.5), nullptr);
        host_.deleteObject(object);
        EXPECT_FALSE(host_.isValid(object));
        EXPECT_EQ(host_.objects().objectOfHandle(handle), nullptr);
        EXPECT_EQ(object->payload(), nullptr);
        ++deleted;
    }

    void functionsAndTasks()
    {
        const Values inputs = values_.someValues(bytes_.below(3));
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
            values_.keep(HostArrayPtr(output[0]));
        }
    }

    void elements(const HostObjectRef& object)
    {
        values_.keep(omCreateScalar(bytes_.flag() ? object : nullptr));
        const HostArrayPtr array = values_.anyValue();
        const std::uint64_t index = bytes_.flag() ? bytes_.below(4) : bytes_();
        if (array == nullptr)
            return;
        omGetArrayElement(array.get(), index);
        if (const HostArray* element = getCell(array.get(), index)) {
            const std::uint64_t before = digest(array.get());
            setCell(array.get(), index, const_cast<HostArray*>(element)); // which it holds
            EXPECT_EQ(digest(array.get()), before);
        }
        omSetArrayElement(array.get(), index, object);
        EXPECT_EQ(omGetArrayElement(array.get(), index), object);
        HostArrayPtr copy(duplicateArray(array.get()));
        EXPECT_EQ(digest(copy.get()), digest(array.get()));
        values_.keep(std::move(copy));
    }

    void objectSystem(const HostObjectRef& object, const ClassListing& own)
    {
        ObjectSystem& system = host_.objects();
        const double handle = bytes_.number();
        const HostObjectRef found = system.objectOfHandle(handle);
        if (found != nullptr)
            EXPECT_EQ(host_.handleOf(found), handle);
        else
            ++unknownHandles;
        const auto& methods = own.methods;
        const std::string method =
            methods.empty() || bytes_.below(4) == 0 ? bytes_.text(6) : bytes_.oneOf(methods).name;
        const Values inputs = values_.someValues(bytes_.below(4));
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

    /// A class that the object inherits members from; now and then any.
    const ClassListing* anyMember(const HostObjectRef& object)
    {
        const auto family = world().family(object->className());
        return bytes_.below(16) == 0 ? &world().classes.at(bytes_.oneOf(world().names)) : bytes_.oneOf(family);
    }

    // ---- What is seen

    void see(const std::string& what, std::uint64_t value)
    {
        if (transcript_ != nullptr)
            transcript_->emplace_back(what, value);
    }
    void keep(HostArrayPtr value)
    {
        if (tellsTime_ && transcript_ != nullptr)
            return; // it is never the same
        see("value", digest(value.get()));
        values_.keep(std::move(value));
    }
    void keep(HostOutputs outputs)
    {
        for (HostArrayPtr& each : outputs)
            keep(std::move(each));
    }
    /// The object's properties, and what buffers and lines hold.
    Transcript look(const HostObjectRef& object)
    {
        Transcript seen;
        const auto read = [&](const std::string& what, auto&& value) {
            try {
                seen.emplace_back(what, value());
            } catch (const Error& error) {
                seen.emplace_back(what + error.name(), 0);
            }
        };
        if (object == nullptr)
            return seen;
        for (const ClassListing* listing : world().family(object->className()))
            for (const PropertyListing& property : listing->properties)
                if (listing->name != "tracery.OneShotTimer")
                    read(property.name, [&] { return digest(host_.get(object, property.name).get()); });
        if (object->isA("tracery.TimeBuffer"))
            read("contents", [&] {
                std::uint64_t sum = 0;
                for (const HostArrayPtr& each : host_.call(object, "GetTimeAndValue", {}, 2))
                    sum = 31 * sum + digest(each.get());
                return sum;
            });
        if (host_.isValid(object) && object->isA(embedded::LineAnimator::kClassName))
            read("points", [&] { return digest(makeRow(host_.animator().points(object)).get()); });
        return seen;
    }

    using Shortage = test::Shortage;
    Bytes& bytes_;
    Transcript* transcript_;
    std::mt19937* shortages_;
    EmbeddedHost& host_ = world().host;
    std::size_t arraysBefore_ = getNumberOfLiveArrays();
    HostValues values_{bytes_};
    int depth_ = 0;
    std::exception_ptr thrown_; ///< by the host's code last
    bool tellsTime_ = false;    ///< the object of this step
};

World& world()
{
    static World theOne([](HostInputs inputs, std::size_t wanted) {
        return running != nullptr ? running->body(inputs, wanted) : HostOutputs();
    });
    return theOne;
}

void play(Bytes& bytes, Transcript* transcript = nullptr, std::mt19937* shortages = nullptr)
{
    Session session(bytes, transcript, shortages);
    while (!bytes.isEmpty())
        session.step();
}

} // namespace

void fuzz::runInput(Bytes& bytes)
{
    world();
    if (bytes.flag())
        return play(bytes);
    std::mt19937 shortages(bytes());
    Bytes again = bytes;
    Transcript plain, withFailures;
    play(bytes, &plain);
    play(again, &withFailures, &shortages);
    const auto [expected, actual] = std::ranges::mismatch(plain, withFailures);
    if (expected != plain.end() || actual != withFailures.end()) {
        std::string steps;
        for (auto at = expected - std::min<std::ptrdiff_t>(12, expected - plain.begin()); at != expected; ++at)
            steps += at->first + ", ";
        ADD_FAILURE() << "after " << steps << (actual != withFailures.end() ? actual->first : "the end")
                      << " in place of " << (expected != plain.end() ? expected->first : "the end");
    }
}
