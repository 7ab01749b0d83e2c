#pragma once

#include <tracery/export.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace tracery {

/// One kind of failure: the component that reports it, its name, and a line for a person to read. An Error copies the
/// texts: those of a kind that is made at run time need to live no longer than the call that makes the Error.
struct ErrorKind {
    /// The parts of the identifier, and the explanation; null counts as empty.
    const char* component;
    const char* name;
    const char* text;
};

/// The failure of an operation. Hosts show identifier(); what() adds the explanation. Copies share their texts and
/// cannot fail.
class TRACERY_EXPORT Error : public std::runtime_error {
public:
    /// A failure of a kind, with the kind's own explanation.
    explicit Error(const ErrorKind& kind);
    /// `detail` replaces the kind's own explanation.
    Error(const ErrorKind& kind, const std::string& detail);
    /// There is no moving: what an Error says, it says to its end.
    Error(const Error&) noexcept;
    Error& operator=(const Error&) noexcept;
    ~Error() override;

    /// Of the kind; valid while the Error or a copy of it lives.
    const char* component() const noexcept;
    const char* name() const noexcept;
    /// Component and name joined by a colon, such as "Cindrel:tracery:InvalidPortID".
    std::string identifier() const;

private:
    struct Texts;
    std::shared_ptr<const Texts> texts_;
};

/// Every failure the library reports, with what it means.
namespace errors {
/// The component of the library's own failures.
inline constexpr const char* kComponent = "Cindrel:tracery";
inline constexpr const char* kBuiltins = "VELTRA:builtins"; ///< of the host itself

// clang-format off
inline constexpr ErrorKind AbstractMethod{kComponent, "AbstractMethod", "the method has no body: a subclass supplies it"};
inline constexpr ErrorKind AddComplexDataError{kComponent, "AddComplexDataError", "the port is real and has no ring for imaginary values"};
inline constexpr ErrorKind AddTimeError{kComponent, "AddTimeError", "times are doubles"};
inline constexpr ErrorKind AddValueDataTypeError{kComponent, "AddValueDataTypeError", "values are doubles"};
inline constexpr ErrorKind AddValueError{kComponent, "AddValueError", "the number of value steps differs from the number of time steps"};
inline constexpr ErrorKind AddValueInputFormatError{kComponent, "AddValueInputFormatError", "the extents of the values do not fit the port"};
inline constexpr ErrorKind ClearBackToError{kComponent, "ClearBackToError", "the steps could not be cleared"};
inline constexpr ErrorKind ClearError{kComponent, "ClearError", "the buffer could not be cleared"};
inline constexpr ErrorKind DuplicateClass{kComponent, "DuplicateClass", "the package has a class of this name already"};
inline constexpr ErrorKind EmptyInput{kComponent, "EmptyInput", "an array without elements where values are needed"};
inline constexpr ErrorKind GetComplexDataError{kComponent, "GetComplexDataError", "the imaginary values of the port are not in step with its times"};
inline constexpr ErrorKind InitializeError{kComponent, "InitializeError", "the buffer cannot be set up with these arguments"};
inline constexpr ErrorKind InvalidArgumentType{kComponent, "InvalidArgumentType", "the value has another class, shape or range than is needed"};
inline constexpr ErrorKind InvalidArray{kComponent, "InvalidArray", "an array of this class or these extents cannot be made or used here"};
inline constexpr ErrorKind InvalidBufferType{kComponent, "InvalidBufferType", "the type is \"SingleRate\" or \"MultipleRate\""};
inline constexpr ErrorKind InvalidChannelID{kComponent, "InvalidChannelID", "the channel lies outside the stored values"};
inline constexpr ErrorKind InvalidComplexityDimension{kComponent, "InvalidComplexityDimension", "one complexity flag a port is needed"};
inline constexpr ErrorKind InvalidLimits{kComponent, "InvalidLimits", "limits are four doubles: real minimum and maximum, imaginary minimum and maximum"};
inline constexpr ErrorKind InvalidMaxDimensions{kComponent, "InvalidMaxDimensions", "the maximum extents do not match the ports"};
inline constexpr ErrorKind InvalidMaxDimensionsForNPorts{kComponent, "InvalidMaxDimensionsForNPorts", "one row of maximum extents a port is needed"};
inline constexpr ErrorKind InvalidMaxNumTimeStepsChange{kComponent, "InvalidMaxNumTimeStepsChange", "ports that share their times need one capacity"};
inline constexpr ErrorKind InvalidMaxNumTimeStepsSize{kComponent, "InvalidMaxNumTimeStepsSize", "one capacity is needed, or one a port"};
inline constexpr ErrorKind InvalidMaxNumTimeStepsValue{kComponent, "InvalidMaxNumTimeStepsValue", "a capacity of 0, or one too large to address"};
inline constexpr ErrorKind InvalidNumTimeSteps{kComponent, "InvalidNumTimeSteps", "a number of time steps that cannot be used"};
inline constexpr ErrorKind InvalidNumberOfArguments{kBuiltins, "InvalidNumberOfArguments", "a wrong number of arguments or results"};
inline constexpr ErrorKind InvalidObject{kComponent, "InvalidObject", "the object is missing, deleted or of another class"};
inline constexpr ErrorKind InvalidPortID{kComponent, "InvalidPortID", "there is no such port"};
inline constexpr ErrorKind InvalidSampleTimes{kComponent, "InvalidSampleTimes", "two sample times a port are needed"};
inline constexpr ErrorKind InvalidSubscript{kComponent, "InvalidSubscript", "the arguments reach outside what there is"};
inline constexpr ErrorKind InvalidTypeString{kComponent, "InvalidTypeString", "there is no type of this text"};
inline constexpr ErrorKind NoHost{kComponent, "NoHost", "no host is attached"};
inline constexpr ErrorKind NoPlotter{kComponent, "NoPlotter", "the controller has no plotter"};
inline constexpr ErrorKind NoThread{kComponent, "NoThread", "the system gave no thread"};
inline constexpr ErrorKind OutOfMemory{kComponent, "OutOfMemory", "not enough memory"};
inline constexpr ErrorKind ReadOnlyProperty{kComponent, "ReadOnlyProperty", "the property cannot be set"};
inline constexpr ErrorKind TooLong{kComponent, "TooLong", "more elements than can be kept"};
inline constexpr ErrorKind UnknownKernels{kComponent, "UnknownKernels", "the environment asks for kernels that are not known"};
// clang-format on
} // namespace errors

} // namespace tracery
