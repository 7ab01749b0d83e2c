#include <tracery/AbstractFramePlotter.h>
#include <tracery/host/Error.h>

namespace tracery {

AbstractFramePlotter::~AbstractFramePlotter() = default;

void AbstractFramePlotter::setMaxDimensions(const HostArray* dims)
{
    const double* values = dims != nullptr && !isComplex(dims) && !isEmpty(dims) ? getRealData(dims) : nullptr;
    if (values == nullptr)
        throw Error(errors::InvalidMaxDimensions, "maximum extents are a real double array with elements");
    maxDimensions_ = std::vector<double>(values, values + getNumberOfElements(dims));
    maxDimsRows_ = static_cast<std::size_t>(getDimensions(dims)[0]);
    maxDimsCols_ = static_cast<std::size_t>(getN(dims));
}

} // namespace tracery
