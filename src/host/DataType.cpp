#include <tracery/host/DataType.h>
#include <tracery/host/Error.h>
#include <tracery/host/ObjectSystem.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace tracery::hostobj {

namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool sameLetters(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, [](char x, char y) { return lower(x) == lower(y); });
}

using Base = COSDataType::Base;
using Shape = COSDataType::Shape;

constexpr std::pair<std::string_view, Base> kBases[] = {
    {"any", Base::any},       {"double", Base::double_},          {"logical", Base::logical}, {"uint32", Base::uint32},
    {"handle", Base::handle}, {"asciiString", Base::asciiString}, {"object", Base::object},
};
constexpr std::pair<std::string_view, Shape> kShapes[] = {
    {"", Shape::any}, {"scalar", Shape::scalar}, {"vector", Shape::vector}, {"matrix", Shape::matrix}};

bool isDottedName(std::string_view text)
{
    bool wordBegins = true;
    for (const char c : text) {
        const bool letter = (lower(c) >= 'a' && lower(c) <= 'z') || c == '_';
        if (c == '.' ? wordBegins : !letter && (wordBegins || c < '0' || c > '9'))
            return false;
        wordBegins = c == '.';
    }
    return !wordBegins;
}

[[noreturn]] void refuse(const std::string& needed) { throw Error(errors::InvalidArgumentType, "needed: " + needed); }

/// Element i of a real array of numbers or flags.
double numberAt(const HostArray* array, std::uint64_t i)
{
    return isDouble(array) ? getRealData(array)[i] : getLogicals(array)[i];
}

} // namespace

std::shared_ptr<const TypedEnumStringType> TypedEnumStringType::createCaseInsensitiveInstance(std::string name,
                                                                                              Entries entries)
{
    return std::shared_ptr<const TypedEnumStringType>(new TypedEnumStringType(std::move(name), std::move(entries)));
}

TypedEnumStringType::TypedEnumStringType(std::string name, Entries entries)
    : name_(std::move(name)), entries_(std::move(entries))
{}

std::optional<int> TypedEnumStringType::valueOf(std::string_view name) const
{
    const auto entry = std::ranges::find_if(entries_, [&](const auto& e) { return sameLetters(e.second, name); });
    return entry != entries_.end() ? std::optional(entry->first) : std::nullopt;
}

const std::string* TypedEnumStringType::nameOf(int value) const
{
    const auto entry = std::ranges::find(entries_, value, &Entries::value_type::first);
    return entry != entries_.end() ? &entry->second : nullptr;
}

COSDataTypePtr COSDataType::fromString(std::string_view text)
{
    const std::size_t space = text.find(' ');
    const std::string_view baseName = text.substr(0, space);
    const std::string_view shapeName = space == std::string_view::npos ? std::string_view() : text.substr(space + 1);
    const auto* base = std::ranges::find(kBases, baseName, [](const auto& b) { return b.first; });
    const auto* shape = std::ranges::find(kShapes, shapeName, [](const auto& s) { return s.first; });
    const bool isClass =
        base == std::end(kBases) && isDottedName(baseName) && baseName.find('.') != std::string_view::npos;
    const bool shapeless =
        !isClass && base != std::end(kBases) &&
        (base->second == Base::any || base->second == Base::asciiString || base->second == Base::object);
    if ((base == std::end(kBases) && !isClass) || shape == std::end(kShapes) ||
        (space != std::string_view::npos && (shapeName.empty() || shapeless)))
        throw Error(errors::InvalidTypeString, "there is no type \"" + std::string(text) + "\"");
    auto type = std::shared_ptr<COSDataType>(new COSDataType);
    type->text_ = text;
    type->base_ = isClass ? Base::class_ : base->second;
    type->shape_ = shape->second;
    return type;
}

COSDataTypePtr COSDataType::fromEnumeration(std::shared_ptr<const TypedEnumStringType> enumeration)
{
    auto type = std::shared_ptr<COSDataType>(new COSDataType);
    type->text_ = enumeration->getName();
    type->base_ = Base::enumeration;
    type->enumeration_ = std::move(enumeration);
    return type;
}

void COSDataType::requireShape(const HostArray* array) const
{
    const std::uint64_t* extents = getDimensions(array);
    const bool two = getNumberOfDimensions(array) == 2;
    const bool fits = shape_ == Shape::any      ? true
                      : shape_ == Shape::scalar ? getNumberOfElements(array) == 1
                      : shape_ == Shape::matrix ? two
                                                : two && (extents[0] <= 1 || extents[1] <= 1);
    if (!fits)
        refuse(text_);
}

HostArrayPtr COSDataType::convert(const HostArray* array) const
{
    if (base_ == Base::any)
        return HostArrayPtr(array != nullptr ? duplicateArray(array) : nullptr);
    if (array == nullptr)
        refuse(text_);
    requireShape(array);
    const HostClassID given = getClassID(array);
    const std::uint64_t count = getNumberOfElements(array);
    switch (base_) {
    case Base::double_:
    case Base::uint32:
    case Base::logical: {
        if ((given != HostClassID::double_ && given != HostClassID::logical) || isComplex(array) ||
            (count > 0 && given == HostClassID::double_ && getRealData(array) == nullptr))
            refuse(text_);
        const bool toLogical = base_ == Base::logical;
        HostArrayPtr result(createNumericArray(getNumberOfDimensions(array), getDimensions(array),
                                               toLogical ? HostClassID::logical : HostClassID::double_,
                                               HostComplexity::real));
        for (std::uint64_t i = 0; i < count; ++i) {
            const double value = numberAt(array, i);
            const bool whole =
                value >= 0 && value <= std::numeric_limits<std::uint32_t>::max() && value == std::floor(value);
            if ((toLogical && std::isnan(value)) || (base_ == Base::uint32 && !whole))
                refuse(text_);
            if (toLogical)
                getLogicals(result.get())[i] = value != 0 ? 1 : 0;
            else
                getRealData(result.get())[i] = value;
        }
        return result;
    }
    case Base::asciiString:
    case Base::enumeration: {
        if (given != HostClassID::char_)
            refuse(enumeration_ ? "a name of " + text_ : text_);
        const std::string_view text(getChars(array), static_cast<std::size_t>(count));
        if (std::ranges::any_of(text, [](char c) { return static_cast<signed char>(c) <= 0; }))
            refuse(enumeration_ ? "a name of " + text_ : text_);
        if (!enumeration_)
            return HostArrayPtr(duplicateArray(array));
        const std::optional<int> value = enumeration_->valueOf(text);
        if (!value) {
            std::string names;
            for (const auto& [code, name] : enumeration_->getEntries())
                names += (names.empty() ? "" : ", ") + name;
            refuse("one of " + names);
        }
        return HostArrayPtr(createString(enumeration_->nameOf(*value)->c_str()));
    }
    default:
        break;
    }
    if (given != HostClassID::object)
        refuse(text_);
    const bool any = base_ == Base::object;
    const COSNameID className = any ? "" : std::string_view(text_).substr(0, text_.find(' ')); // "handle" is one, too
    for (std::uint64_t i = 0; i < count; ++i) {
        const COSInterfacePtr object = omGetArrayElement(array, i);
        if (object == nullptr || (!className.isEmpty() && !object->isA(className)))
            throw Error(errors::InvalidObject, "needed: " + text_);
    }
    return HostArrayPtr(duplicateArray(array));
}

} // namespace tracery::hostobj
