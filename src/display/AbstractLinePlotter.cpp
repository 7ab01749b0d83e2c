#include <tracery/AbstractLinePlotter.h>

namespace tracery {

namespace {

/// Puts a copy of `array` in the place of what `held` holds, which may be `array` itself.
bool keep(HostArrayPtr& held, const HostArray* array)
{
    if (array == nullptr)
        return false;
    HostArrayPtr copy(duplicateArray(array));
    setArrayScope(copy.get(), HostArrayScope::persistent);
    held = std::move(copy);
    return true;
}

} // namespace

AbstractLinePlotter::~AbstractLinePlotter() = default;
void AbstractLinePlotter::initPlotter() {}

void AbstractLinePlotter::setAxes(const HostArray* axes) { keep(axes_, axes); }
HostArray* AbstractLinePlotter::getAxes() const { return axes_ ? duplicateArray(axes_.get()) : nullptr; }

void AbstractLinePlotter::setLines(const HostArray* lines)
{
    if (keep(lines_, lines))
        initPlotter();
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
