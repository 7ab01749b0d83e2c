#include <tracery/AbstractLinePlotter.h>

#include <utility>

namespace tracery {

namespace {

HostArrayPtr copyToKeep(const HostArray* array)
{
    HostArrayPtr copy(duplicateArray(array));
    setArrayScope(copy.get(), HostArrayScope::persistent);
    return copy;
}

} // namespace

AbstractLinePlotter::~AbstractLinePlotter() = default;
void AbstractLinePlotter::initPlotter() {}

void AbstractLinePlotter::setAxes(const HostArray* axes)
{
    if (axes != nullptr)
        axes_ = copyToKeep(axes);
}
HostArray* AbstractLinePlotter::getAxes() const { return axes_ ? duplicateArray(axes_.get()) : nullptr; }

void AbstractLinePlotter::setLines(const HostArray* lines)
{
    if (lines == nullptr)
        return;
    HostArrayPtr old = std::exchange(lines_, copyToKeep(lines));
    try {
        initPlotter();
    } catch (...) {
        lines_ = std::move(old);
        throw;
    }
}

HostArray* AbstractLinePlotter::getLines() const { return lines_ ? duplicateArray(lines_.get()) : nullptr; }

std::size_t AbstractLinePlotter::getNumLines() const
{
    return lines_ ? static_cast<std::size_t>(getNumberOfElements(lines_.get())) : 0;
}

void AbstractLinePlotter::destroyHostArrayObtainedFromGet(HostArray* array) noexcept
{
    if (array != axes_.get() && array != lines_.get())
        destroyArray(array);
}

} // namespace tracery
