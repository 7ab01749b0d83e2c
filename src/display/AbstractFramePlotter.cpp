#include <tracery/AbstractFramePlotter.h>
#include <tracery/host/Error.h>

namespace tracery {

AbstractFramePlotter::~AbstractFramePlotter() = default;

void AbstractFramePlotter::setMaxDimensions(const HostArray* dims)
{
    if (dims == nullptr || !isDouble(dims) || isComplex(dims))
        throw Error(errors::InvalidMaxDimensions, "maximum extents are a real double array");
    const double* values = getRealData(dims);
    if (values == nullptr && !isEmpty(dims))
        throw Error(errors::InvalidMaxDimensions, "maximum extents need values");
    maxDimensions_ = std::vector<double>(values, values + getNumberOfElements(dims));
    maxDimsRows_ = static_cast<std::size_t>(getDimensions(dims)[0]);
    maxDimsCols_ = static_cast<std::size_t>(getN(dims));
}

} // namespace tracery
