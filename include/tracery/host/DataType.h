#pragma once

#include <tracery/export.h>
#include <tracery/host/HostArray.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tracery::hostobj {

/// An enumeration whose values hosts read and write as texts.
class TRACERY_EXPORT TypedEnumStringType {
public:
    /// Values and their names.
    using Entries = std::vector<std::pair<int, std::string>>;

    /// Names match in any case of the letters A to Z.
    static std::shared_ptr<const TypedEnumStringType> createCaseInsensitiveInstance(std::string name, Entries entries);

    /// The name of the enumeration.
    const std::string& getName() const noexcept { return name_; }
    /// Values and their names, in the order they were given.
    const Entries& getEntries() const noexcept { return entries_; }
    /// Nothing for a name that is none of the entries.
    std::optional<int> valueOf(std::string_view name) const;
    /// The name of the first entry with this value, or null.
    const std::string* nameOf(int value) const;

private:
    TypedEnumStringType(std::string name, Entries entries);
    std::string name_;
    Entries entries_;
};

class COSDataType;
using COSDataTypePtr = std::shared_ptr<const COSDataType>;

/// What a property or an argument may be, and how a value becomes that.
class TRACERY_EXPORT COSDataType {
public:
    /// What the elements are, and how many there may be.
    enum class Base : std::int32_t { any, double_, logical, uint32, asciiString, handle, object, class_, enumeration };
    /// How many elements there may be.
    enum class Shape : std::int32_t { any, scalar, vector, matrix };

    /// A type of its text: "any", "object", "asciiString"; "double", "logical", "uint32", "handle" or a dotted class
    /// name, each followed by "scalar", "vector", "matrix" or nothing. throws  InvalidTypeString
    static COSDataTypePtr fromString(std::string_view text);
    /// The type whose values are the names of an enumeration.
    static COSDataTypePtr fromEnumeration(std::shared_ptr<const TypedEnumStringType> enumeration);

    /// The text; of an enumeration, its name.
    const std::string& getText() const noexcept { return text_; }
    /// What the elements are, and how many there may be.
    Base getBase() const noexcept { return base_; }
    Shape getShape() const noexcept { return shape_; }
    /// Null unless the type is an enumeration.
    const TypedEnumStringType* getEnumeration() const noexcept { return enumeration_.get(); }

    /// A new array of this type with the value of `array`. Numbers become logicals (anything but 0 is true) and
    /// logicals numbers; a uint32 is a double that holds a whole number of 0 to 2^32 - 1; names of enumerations come
    /// out as they were registered; objects are shared. What is "any" is copied, null included.
    /// throws  InvalidArgumentType for another class, shape or value, null, and complex numbers; InvalidObject for an
    ///         object that is missing or of another class
    HostArrayPtr convert(const HostArray* array) const;

private:
    COSDataType() = default;
    void requireShape(const HostArray* array) const;
    std::string text_;
    Base base_ = Base::any;
    Shape shape_ = Shape::any;
    std::shared_ptr<const TypedEnumStringType> enumeration_;
};

} // namespace tracery::hostobj
