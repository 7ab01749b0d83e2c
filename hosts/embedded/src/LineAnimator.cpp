#include "AnimatorClass.h"
#include "Object.h"

#include <tracery/embedded/LineAnimator.h>
#include <tracery/embedded/errors.h>

#include <functional>
#include <utility>
#include <vector>

namespace tracery::embedded {

namespace {

DrawnLine& lineOf(const ObjectTable& objects, const HostObjectRef& line)
{
    const auto payload = objects.require(line)->payload();
    const auto drawn = payload != nullptr ? payload->as(typeid(DrawnLine)) : nullptr;
    if (drawn == nullptr)
        throw Error(errors::InvalidObject, std::string("a ") + line->className() + " is no line");
    return *static_cast<DrawnLine*>(drawn.get()); // the object keeps it while the caller keeps the object
}

} // namespace

LineAnimator::LineAnimator(std::shared_ptr<const ObjectTable> objects) : objects_(std::move(objects)) {}

std::span<const double> LineAnimator::points(const HostObjectRef& line) const { return lineOf(*objects_, line).points; }

void LineAnimator::append(const HostObjectRef& line, std::span<const double> points)
{
    std::vector<double>& own = lineOf(*objects_, line).points;
    if (points.size() % 2 != 0)
        throw Error(errors::InvalidArgumentType, "points are pairs of a time and a value");
    const std::less<const double*> before;
    const bool inside =
        !points.empty() && !before(points.data(), own.data()) && before(points.data(), own.data() + own.size());
    if (inside) {
        const std::vector<double> copy(points.begin(), points.end());
        own.insert(own.end(), copy.begin(), copy.end());
    } else {
        own.insert(own.end(), points.begin(), points.end());
    }
}

void LineAnimator::reset(const HostObjectRef& line) { lineOf(*objects_, line).points.clear(); }

} // namespace tracery::embedded
