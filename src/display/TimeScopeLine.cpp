#include <tracery/TimeScopeLine.h>
#include <tracery/host/Host.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace tracery {

namespace {

/// The first of `count` (time, value) pairs whose time is not less than `time`; `count` when there is none. Stays in
/// bounds when times are not in order.
std::size_t firstNotBefore(const double* pairs, std::size_t count, double time)
{
    std::size_t first = 0;
    while (count > 0) {
        const std::size_t half = count / 2;
        if (pairs[2 * (first + half)] < time) {
            first += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return first;
}

} // namespace

TimeScopeLine::TimeScopeLine()
{
    if (Host* host = Host::current())
        if (const auto animator = host->objects().findClass("veltra.graphics.animation.ScopeLineAnimator"))
            animatorClassName_ = animator->getName();
}

TimeScopeLine::~TimeScopeLine()
{
    Host* host = host_.lock().get();
    const HostObjectRef animated = getSLA();
    if (animated == nullptr || host == nullptr || !host->isAttached())
        return;
    try {
        host->objects().publicClient().release(animated);
    } catch (...) { // a destructor cannot pass it on
    }
}

void TimeScopeLine::setLine(const HostArray* line)
{
    if (line == nullptr)
        return;
    HostArrayPtr copy(duplicateArray(line)); // before the old one goes: it may be the same
    setArrayScope(copy.get(), HostArrayScope::persistent);
    Host* host = Host::current();
    host_ = host != nullptr ? host->watch() : std::weak_ptr<Host>();
    line_ = std::shared_ptr<const HostArray>(copy.release(),
                                             [](const HostArray* a) { destroyArray(const_cast<HostArray*>(a)); });
}

double TimeScopeLine::read(const Pair& pair, int i)
{
    return i == 0 || i == 1 ? pair[static_cast<std::size_t>(i)] : std::numeric_limits<double>::quiet_NaN();
}

void TimeScopeLine::write(Pair& pair, int i, double value)
{
    if (i == 0 || i == 1)
        pair[static_cast<std::size_t>(i)] = value;
}

void TimeScopeLine::initDataThinningMinMax() { pixelValue_ = pixelImgValue_ = pixelTimeValue_ = kEmptyPair; }

DataThinner* TimeScopeLine::getDataThinner()
{
    if (!thinner_)
        thinner_.emplace();
    return &*thinner_;
}

HostArray* TimeScopeLine::getLineThinData(const HostArray* data, int count, double pixelTimeRatio,
                                          bool continuePrevious)
{
    return getDataThinner()->getArrayThinData(data, count, pixelTimeRatio, continuePrevious);
}

void TimeScopeLine::plotData(const HostArray* data, bool thin, double pixelTimeRatio)
{
    const std::shared_ptr<const HostArray> line = line_;
    if (line == nullptr || data == nullptr)
        return;
    const auto addXY = [&](const HostArray* points) {
        const HostArray* const inputs[] = {line.get(), points};
        hostobj::omCallMethod(animatorClassName_, "addXY", inputs, 0);
    };
    if (!thin) {
        addXY(data);
        return;
    }
    const DataThinner before = *getDataThinner();
    const auto points = std::min<std::uint64_t>(getNumberOfElements(data) / 2, std::numeric_limits<int>::max());
    const HostArrayPtr thinned(getLineThinData(data, static_cast<int>(points), pixelTimeRatio, true));
    setArrayScope(thinned.get(), HostArrayScope::persistent); // ours to destroy, whatever the host does
    try {
        addXY(thinned.get());
    } catch (...) {
        thinner_ = before; // points that were not drawn leave no trace
        throw;
    }
}

void TimeScopeLine::reset()
{
    const std::shared_ptr<const HostArray> line = line_;
    if (line == nullptr)
        return;
    const HostArray* const inputs[] = {line.get()};
    hostobj::omCallMethod(animatorClassName_, "reset", inputs, 0);
}

void TimeScopeLine::resetLineYExtents(double* yExtents, const double& fromTime, bool split, std::size_t p,
                                      std::size_t q)
{
    const std::shared_ptr<const HostArray> line = line_;
    if (line == nullptr || yExtents == nullptr)
        return;
    const HostArray* const inputs[] = {line.get()};
    const hostobj::HostOutputs outputs = hostobj::omCallMethod(animatorClassName_, "getXY", inputs, 1);
    const HostArray* drawn = outputs.empty() ? nullptr : outputs[0].get();
    if (drawn == nullptr || !isReal2dMatrix(drawn) || getDimensions(drawn)[0] != 2)
        return;
    const double* pairs = getRealData(drawn);
    if (pairs == nullptr)
        return;
    const auto count = static_cast<std::size_t>(getN(drawn));
    std::size_t first = firstNotBefore(pairs, count, fromTime);
    if (first < count && std::isnan(pairs[2 * first + 1]))
        ++first;
    if (first == count)
        return;
    std::vector<double> values;
    values.reserve(count - first);
    for (std::size_t i = first; i < count; ++i)
        values.push_back(pairs[2 * i + 1]);
    const auto [lowest, highest] = std::minmax_element(values.begin(), values.end());
    const std::size_t axes = !split || q < p ? 0 : 1;
    yExtents[axes] = std::min(yExtents[axes], *lowest);
    yExtents[axes + 2] = std::max(yExtents[axes + 2], *highest);
}

HostObjectRef TimeScopeLine::getSLA() const { return line_ ? hostobj::omGetArrayElement(line_.get(), 0) : nullptr; }

HostObjectRef TimeScopeLine::getParent(const HostObjectRef& object) const
{
    Host* host = Host::current();
    if (object == nullptr || host == nullptr)
        return nullptr;
    const HostArrayPtr parent = host->objects().getProperty(object, "Parent");
    if (parent == nullptr)
        return nullptr;
    if (getClassID(parent.get()) == HostClassID::object)
        return hostobj::omGetArrayElement(parent.get(), 0);
    const bool isScalar = getNumberOfElements(parent.get()) == 1 && !isComplex(parent.get());
    const double* handle = isScalar ? getRealData(parent.get()) : nullptr;
    return handle != nullptr && *handle != -1.0 ? host->objects().objectOfHandle(*handle) : nullptr;
}

} // namespace tracery
