#pragma once

#include "arrays.h"

#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Publish.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tracery::fuzz {

using namespace hostobj;
using embedded::ClassListing;
using embedded::MethodListing;
using embedded::PropertyListing;
using Values = std::vector<HostArrayPtr>;

inline std::vector<const HostArray*> pointers(const Values& values)
{
    std::vector<const HostArray*> all;
    for (const HostArrayPtr& each : values)
        all.push_back(each.get());
    return all;
}

/// What is passed to a host's classes: values of any kind, most of them of the types that are asked for, and the objects
/// and results that have come back so far.
class HostValues {
public:
    explicit HostValues(Bytes& bytes) : bytes_(bytes) {}

    const std::vector<HostObjectRef>& objects() const { return objects_; }
    HostObjectRef anyObject() { return objects_.empty() ? nullptr : bytes_.oneOf(objects_); }
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
        const bool scalar = wanted->getShape() == COSDataType::Shape::scalar;
        if (bytes_.below(32) == 0)
            return anyValue();
        switch (wanted->getBase()) {
        case COSDataType::Base::double_:
            if (wanted->getShape() == COSDataType::Shape::vector)
                return numbersOf(bytes_, HostComplexity::real, {1, 1 + bytes_.below(5)});
            return numbersOf(bytes_, HostComplexity::real,
                             scalar ? Extents{1, 1} : Extents{1 + bytes_.below(3), 1 + bytes_.below(3)});
        case COSDataType::Base::any:
            return bytes_.below(4) != 0 ? steps() : anyValue();
        case COSDataType::Base::uint32:
            return makeScalar(bytes_.below(16) == 0  ? 4294967295.0
                              : bytes_.below(4) == 0 ? static_cast<double>(bytes_.below(8))
                                                     : 1.0);
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

    /// Few numbers that rise: times, values, extents, a port.
    HostArrayPtr steps()
    {
        const HostComplexity complexity = bytes_.below(8) == 0 ? HostComplexity::complex : HostComplexity::real;
        const std::uint64_t most = bytes_.flag() ? 1 : 3;
        HostArrayPtr array = makeMatrix(1 + bytes_.below(most), 1 + bytes_.below(most), complexity);
        double value = static_cast<double>(bytes_.below(bytes_.flag() ? 4 : 256));
        for (double& each : realValues(array.get()))
            each = value++;
        return array;
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

    // ---- What has come back

    void note(const HostObjectRef& object)
    {
        if (object != nullptr && std::ranges::find(objects_, object) == objects_.end())
            objects_.push_back(object);
    }
    void keep(HostArrayPtr value)
    {
        if (value == nullptr)
            return;
        note(omGetArrayElement(value.get(), 0));
        if (values_.size() < 8)
            values_.push_back(std::move(value));
        else
            bytes_.oneOf(values_) = std::move(value);
    }
    /// All objects; nothing is kept any longer.
    std::vector<HostObjectRef> release()
    {
        values_.clear();
        return std::exchange(objects_, {});
    }

private:
    Bytes& bytes_;
    std::vector<HostObjectRef> objects_; ///< all that were seen
    Values values_;
    int depth_ = 0;
};

} // namespace tracery::fuzz
