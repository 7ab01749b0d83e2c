#pragma once

#include <tracery/export.h>

#include <memory>

namespace tracery::hostobj {

/// An object of the host's class system, as far as arrays need to know it.
class TRACERY_EXPORT COSInterface {
public:
    virtual ~COSInterface();
    /// The dotted name of the object's class, valid while the object lives.
    virtual const char* className() const = 0;
};

/// A counted reference to a host object; null means no object.
using COSInterfacePtr = std::shared_ptr<COSInterface>;

} // namespace tracery::hostobj

namespace tracery {
using HostObjectRef = hostobj::COSInterfacePtr;
} // namespace tracery
