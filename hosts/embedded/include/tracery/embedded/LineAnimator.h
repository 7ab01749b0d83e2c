#pragma once

#include <tracery/host/HostArray.h>
#include <tracery/host/HostObject.h>

#include <memory>
#include <span>

namespace tracery::embedded {

class ObjectTable;

/// Keeps the points drawn by animated lines, the objects of the host class kClassName and of its subclasses.
///
/// The class inherits from "handle", has the property "Parent" (any, at first the double -1) and three static methods,
/// which take a line array: an object array whose element 0 is the line.
/// "addXY"  (line array, points) appends points: a real double array whose elements are times and values in turn, such
///          as a 2-by-n matrix
/// "getXY"  (line array) returns all points as a new 2-by-k matrix
/// "reset"  (line array) removes all points
/// They throw InvalidNumberOfArguments, InvalidArgumentType for points of another kind or an odd number of elements,
/// and InvalidObject.
///
/// The functions here do the same without arrays. They throw InvalidObject for an object that is null, deleted, of
/// another host or no line.
class LineAnimator {
public:
    /// The dotted name by which the library looks it up.
    static constexpr const char* kClassName = "veltra.graphics.animation.ScopeLineAnimator";

    /// Made by the host.
    explicit LineAnimator(std::shared_ptr<const ObjectTable> objects);

    /// The points of a line, time and value in turn; valid until the line changes or is deleted.
    std::span<const double> points(const HostObjectRef& line) const;
    /// Appends points, time and value in turn; they may be the line's own. Takes amortised time linear in their number.
    /// throws  InvalidArgumentType for an odd number of doubles
    void append(const HostObjectRef& line, std::span<const double> points);
    /// Removes all points.
    void reset(const HostObjectRef& line);

private:
    std::shared_ptr<const ObjectTable> objects_;
};

} // namespace tracery::embedded
