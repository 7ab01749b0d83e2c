#pragma once

#include <tracery/embedded/ClassListing.h>
#include <tracery/embedded/HostClass.h>
#include <tracery/embedded/LineAnimator.h>
#include <tracery/embedded/Module.h>
#include <tracery/embedded/errors.h>
#include <tracery/host/Host.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tracery::embedded {

/// A host inside the program, without a display or a language of its own: classes and objects, features, cooperative
/// tasks, commits, a console, functions, and lines that keep their points.
///
/// The roles are what the library uses; the functions of this class are what a program does that the host's language
/// would do elsewhere. Attach the host with a HostScope; while one of the functions runs the host is attached in any
/// case. Main thread only. What methods, constructors and functions throw is passed on; where the library called them,
/// as an Error.
///
/// Bodies, hooks and tasks may use the host freely: delete the object they run on, define classes, call back. They do
/// not destroy the host. Objects may outlive it: they are deleted then.
class EmbeddedHost : public Host {
public:
    /// Knows the class "handle", the root of objects that are passed by reference, and LineAnimator::kClassName.
    EmbeddedHost();
    /// Deletes all objects, the newest first.
    ~EmbeddedHost() override;
    EmbeddedHost(const EmbeddedHost&) = delete;
    EmbeddedHost& operator=(const EmbeddedHost&) = delete;

    /// The roles (see Host). References stay valid while the host lives.
    hostobj::ObjectSystem& objects() override;
    Features& features() override;
    Graphics& graphics() override;
    Console& console() override;
    Functions& functions() override;
    Performance::CooperativeTaskManager::TaskManager& tasks() override;
    std::vector<std::string> warmUpClasses(const std::string& taskName) override;

    // ---- Modules

    /// Loads a module (tracery/host/Module.h) from a shared library: attaches the host to it for as long as the host
    /// lives, has it publish its classes, and makes its functions known. The path is that of dlopen: without a slash
    /// the library is looked for where the system has its libraries. The module lives as long as the host, which
    /// terminates it, after those loaded later, before it deletes its objects.
    /// throws  ModuleNotFound for a file that is missing or no library, InvalidModule when it has not the entry points
    ///         and the table of a module of this name, ModuleVersion, DuplicateModule, DuplicateFunction when the host
    ///         has a function of a name in the table, and what initialisation reports; all but the last two name
    ///         the path
    Module& loadModule(const std::string& path, const std::string& name = "tracery");
    /// Null when none of this name is loaded.
    Module* findModule(const std::string& name) const;

    // ---- Classes

    /// throws  DuplicateClass, DuplicateMember, InvalidName, InvalidTypeString, and InvalidArgumentType for a value
    ///         that its property's type does not allow
    void defineClass(HostClass definition);
    /// All classes, the host's own too, in the order in which they became known.
    std::vector<ClassListing> listClasses() const;

    // ---- Objects. Those of other hosts, deleted ones and null are InvalidObject, save where something else is said.

    /// A new object: its library object is created, then the constructor called. After a failure the object is deleted,
    /// wherever it was kept.
    /// throws  UnknownClass (for a missing ancestor too), InheritanceCycle, AbstractClass, MissingMethod when a class
    ///         defined in the host lacks bodies for abstract methods of its ancestors, InvalidNumberOfArguments for
    ///         inputs where there is no constructor
    HostObjectRef construct(const std::string& dottedClass, HostInputs inputs = {});
    /// Destroys the object's library object and values. Deleting again does nothing. Objects of "handle" have this as
    /// their method "delete". Objects that nobody refers to any more are deleted without this.
    void deleteObject(const HostObjectRef& object);
    /// Whether the object belongs to this host and is not deleted; false for null.
    bool isValid(const HostObjectRef& object) const;
    /// How many objects somebody refers to, deleted ones included.
    std::size_t getNumberOfLiveObjects() const;
    /// The number that ObjectSystem::objectOfHandle turns into the object again: whole, at least 1, never reused.
    double handleOf(const HostObjectRef& object) const;

    /// The value of a property, null when it has none.
    /// throws  UnknownProperty, AccessDenied
    HostArrayPtr get(const HostObjectRef& object, const std::string& property);
    /// throws  UnknownProperty, AccessDenied, ReadOnlyProperty, and InvalidArgumentType or InvalidObject for a value
    ///         that the type does not allow
    void set(const HostObjectRef& object, const std::string& property, const HostArray* value);
    /// As set, whatever the access: for the bodies of the class.
    void setOwn(const HostObjectRef& object, const std::string& property, const HostArray* value);

    /// Calls the most derived body of a method with the object and the further inputs; a static method is called
    /// without the object.
    /// throws  UnknownMethod, MissingMethod for one that is only declared, AccessDenied
    HostOutputs call(const HostObjectRef& object, const std::string& method, HostInputs further = {},
                     std::size_t wanted = 1);
    /// throws  UnknownClass, InheritanceCycle, UnknownMethod (for a method that needs an object too), MissingMethod,
    ///         AccessDenied
    HostOutputs callStatic(const std::string& dottedClass, const std::string& method, HostInputs inputs = {},
                           std::size_t wanted = 1);

    // ---- Functions and features

    /// Makes a function known under a dotted name, in place of one of this name, a module's too. An empty body removes
    /// it. Calling an unknown function is UnknownFunction.
    void defineFunction(const std::string& name, HostBody body);
    /// Sets a feature, registered or not, and tells the callbacks when its value changed. When one of them sets it
    /// again, those after it are told of the later value alone.
    void setFeature(const std::string& name, int value);

    // ---- Console

    /// Takes what is printed, piece by piece.
    using ConsoleSink = std::function<void(const std::string& text)>;
    /// Sends what is printed to `sink`; without one (as at first) the host keeps the text.
    void setConsoleSink(ConsoleSink sink);
    /// The text kept since the last time.
    std::string takeConsoleText();

    // ---- Tasks

    /// Tells the time by which slices end.
    using TaskClock = std::function<std::chrono::steady_clock::time_point()>;
    /// Replaces the clock of the tasks; without one they have the steady clock.
    void setTaskClock(TaskClock clock);
    /// Runs tasks of all sessions for about this long and returns whether work is left. Sessions take turns: the one
    /// after the last that ran begins. Within a session a task is run again in later slices until it says that it is
    /// finished, then the next has its turn, at once while time remains. A task that throws is taken out, and the
    /// error passed on. Does nothing when called by a task.
    bool runTasks(std::chrono::microseconds slice);
    /// Sets the classes that a warm-up task loads. At first "ScopeExt" has the published plotter base classes and
    /// "ScopesGfx2Phase1" LineAnimator::kClassName; the others have none.
    void setWarmUpClasses(const std::string& taskName, std::vector<std::string> dottedNames);

    // ---- Graphics

    /// How many commits there were. A commit calls the hooks that are registered when it begins, save those taken out
    /// meanwhile; when some throw, the others are called all the same, and the first error is passed on.
    std::size_t getNumberOfCommits() const;
    /// The points of the lines that were drawn.
    LineAnimator& animator();

private:
    class Parts;
    std::unique_ptr<Parts> parts_;
};

} // namespace tracery::embedded
