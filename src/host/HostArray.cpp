#include <tracery/host/Error.h>
#include <tracery/host/HostArray.h>
#include <tracery/host/ObjectSystem.h>

#include <atomic>
#include <cstring>
#include <limits>
#include <span>
#include <variant>
#include <vector>

namespace tracery {

namespace {

template <class T>
using Buffer = std::unique_ptr<T[], HostMemoryDeleter>;

struct DoubleData {
    Buffer<double> real;
    Buffer<double> imag;
    bool complex = false;
};
struct LogicalData {
    Buffer<std::uint8_t> bytes;
};
struct CharData {
    std::string text;
};
struct CellData {
    std::vector<HostArrayPtr> elements;
};
struct ObjectData {
    std::string className;
    std::vector<HostObjectRef> elements;
};

/// Zero-filled; null for no elements.
template <class T>
Buffer<T> zeros(std::uint64_t count)
{
    if (count == 0)
        return nullptr;
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T) / 2)
        throw Error(errors::InvalidArray, "the extents need more memory than can be addressed");
    return Buffer<T>(static_cast<T*>(allocateZeros(count * sizeof(T))));
}

template <class T>
Buffer<T> copyOf(const T* source, std::uint64_t count)
{
    if (source == nullptr || count == 0)
        return nullptr;
    Buffer<T> copy(static_cast<T*>(allocateMemory(count * sizeof(T))));
    std::memcpy(copy.get(), source, count * sizeof(T));
    return copy;
}

std::uint64_t product(std::span<const std::uint64_t> extents)
{
    // An extent of 0 makes an empty array, however large the others are.
    for (const std::uint64_t extent : extents)
        if (extent == 0)
            return 0;
    std::uint64_t elements = 1;
    for (const std::uint64_t extent : extents)
        if (__builtin_mul_overflow(elements, extent, &elements))
            throw Error(errors::InvalidArray, "the product of the extents passes 64 bits");
    return elements;
}

} // namespace

/// Counts what is alive.
class Census {
public:
    Census() noexcept { ++alive_; }
    ~Census() { --alive_; }
    Census(const Census&) = delete;
    Census& operator=(const Census&) = delete;
    static std::size_t alive() noexcept { return alive_; }

private:
    static inline std::atomic<std::size_t> alive_ = 0;
};

class HostArray : Census {
public:
    using Census::alive;
    using Data = std::variant<DoubleData, LogicalData, CharData, CellData, ObjectData>;

    HostArray(std::size_t numDims, const std::uint64_t* dims) : extents(dims, dims + numDims)
    {
        if (extents.empty())
            throw Error(errors::InvalidArray, "an array needs at least one extent");
        if (extents.size() == 1)
            extents.push_back(1);
        product(std::span(extents).subspan(1)); // so that getN can always be told
        elements = product(extents);
    }

    std::vector<std::uint64_t> extents;
    std::uint64_t elements = 0;
    HostArrayScope scope = HostArrayScope::call;
    Data data;
    HostArrayPtr nextToGo; ///< while it is destroyed
};

namespace {

/// Two extents, for the length of a call.
struct Extents2 {
    std::uint64_t values[2];
    operator const std::uint64_t*() const { return values; } // NOLINT: meant to convert
};

const HostArray* asConst(HostArray* array) { return array; }

HostArrayPtr makeArray(std::size_t numDims, const std::uint64_t* extents)
{
    return HostArrayPtr(new HostArray(numDims, extents));
}

template <class T, class Array>
auto* dataOf(Array* array)
{
    return std::get_if<T>(&array->data);
}

template <class T>
T& requireData(HostArray* array, const char* message)
{
    if (T* data = dataOf<T>(array))
        return *data;
    throw Error(errors::InvalidArray, message);
}

/// The data that are there already stay.
void install(Buffer<double>& part, double* data)
{
    if (part.get() != data)
        part.reset(data);
}

HostArrayPtr makeDouble(std::size_t numDims, const std::uint64_t* extents, HostComplexity complexity)
{
    HostArrayPtr array = makeArray(numDims, extents);
    DoubleData data;
    data.real = zeros<double>(array->elements);
    data.complex = complexity == HostComplexity::complex;
    if (data.complex)
        data.imag = zeros<double>(array->elements);
    array->data = std::move(data);
    return array;
}

/// A copy that is still to be made, and where it goes.
struct Due {
    const HostArray* source;
    HostArrayPtr* copy;
};

/// Copies the data of an array of `count` elements; of a cell, the elements are left for later.
struct Duplicator {
    std::uint64_t count;
    std::vector<Due>& due;
    HostArray::Data operator()(const DoubleData& d) const
    {
        DoubleData copy;
        copy.real = copyOf(d.real.get(), count);
        copy.imag = copyOf(d.imag.get(), count);
        copy.complex = d.complex;
        return copy;
    }
    HostArray::Data operator()(const LogicalData& d) const { return LogicalData{copyOf(d.bytes.get(), count)}; }
    HostArray::Data operator()(const CharData& d) const { return d; }
    HostArray::Data operator()(const CellData& d) const
    {
        CellData copy;
        copy.elements.resize(d.elements.size());
        for (std::size_t i = 0; i < d.elements.size(); ++i)
            if (d.elements[i] != nullptr)
                due.push_back({d.elements[i].get(), &copy.elements[i]});
        return copy;
    }
    HostArray::Data operator()(const ObjectData& d) const { return d; }
};

} // namespace

void destroyArray(HostArray* array) noexcept
{
    // One after the other: cells may be nested more deeply than the stack allows.
    HostArrayPtr toGo(array);
    while (toGo != nullptr) {
        const std::unique_ptr<HostArray> going(toGo.release());
        toGo = std::move(going->nextToGo);
        if (auto* cell = dataOf<CellData>(going.get()))
            for (HostArrayPtr& element : cell->elements)
                if (element != nullptr) {
                    element->nextToGo = std::move(toGo);
                    toGo = std::move(element);
                }
    }
}

HostArray* createDoubleMatrix(std::uint64_t rows, std::uint64_t columns, HostComplexity complexity)
{
    return makeDouble(2, Extents2{{rows, columns}}, complexity).release();
}

HostArray* adoptDoubleMatrix(std::uint64_t rows, std::uint64_t columns, HostDoubles real, HostDoubles imag)
{
    HostArrayPtr array = makeArray(2, Extents2{{rows, columns}});
    DoubleData data;
    data.complex = imag != nullptr;
    if (array->elements > 0) {
        data.real = std::move(real);
        data.imag = std::move(imag);
    }
    array->data = std::move(data);
    return array.release();
}

HostArray* createNumericArray(std::size_t numDims, const std::uint64_t* extents, HostClassID classId,
                              HostComplexity complexity)
{
    if (classId == HostClassID::double_)
        return makeDouble(numDims, extents, complexity).release();
    if (classId == HostClassID::logical && complexity == HostComplexity::real)
        return createLogicalArray(numDims, extents);
    throw Error(errors::InvalidArray, "numeric arrays are of the double class, or real and logical");
}

HostArray* createLogicalArray(std::size_t numDims, const std::uint64_t* extents)
{
    HostArrayPtr array = makeArray(numDims, extents);
    array->data = LogicalData{zeros<std::uint8_t>(array->elements)};
    return array.release();
}

HostArray* createCellArray(std::size_t numDims, const std::uint64_t* extents)
{
    HostArrayPtr array = makeArray(numDims, extents);
    CellData data;
    if (array->elements > data.elements.max_size())
        throw Error(errors::InvalidArray, "the extents need more memory than can be addressed");
    data.elements.resize(array->elements);
    array->data = std::move(data);
    return array.release();
}

HostArray* createString(const char* text)
{
    std::string bytes(text != nullptr ? text : "");
    HostArrayPtr array = makeArray(2, Extents2{{1, bytes.size()}});
    array->data = CharData{std::move(bytes)};
    return array.release();
}

HostArray* createObjectArray(const char* className, std::size_t numDims, const std::uint64_t* extents)
{
    HostArrayPtr array = makeArray(numDims, extents);
    ObjectData data;
    if (className == nullptr || array->elements > data.elements.max_size())
        throw Error(errors::InvalidArray);
    data.className = className;
    data.elements.resize(array->elements);
    array->data = std::move(data);
    return array.release();
}

HostArray* duplicateArray(const HostArray* array)
{
    // A list in place of recursion, likewise.
    HostArrayPtr whole;
    std::vector<Due> due{{array, &whole}};
    while (!due.empty()) {
        const auto [source, place] = due.back();
        due.pop_back();
        *place = makeArray(source->extents.size(), source->extents.data());
        (*place)->data = std::visit(Duplicator{source->elements, due}, source->data);
    }
    return whole.release();
}

HostClassID getClassID(const HostArray* array)
{
    constexpr HostClassID kByAlternative[] = {HostClassID::double_, HostClassID::logical, HostClassID::char_,
                                              HostClassID::cell, HostClassID::object};
    return kByAlternative[array->data.index()];
}

std::size_t getNumberOfDimensions(const HostArray* array) { return array->extents.size(); }
const std::uint64_t* getDimensions(const HostArray* array) { return array->extents.data(); }
std::uint64_t getN(const HostArray* array) { return product(std::span(array->extents).subspan(1)); }
std::uint64_t getNumberOfElements(const HostArray* array) { return array->elements; }
std::uint64_t getNumberOfContainedElements(const HostArray* array) { return array->elements; }
bool isEmpty(const HostArray* array) { return array->elements == 0; }

bool isComplex(const HostArray* array)
{
    const auto* data = dataOf<DoubleData>(array);
    return data != nullptr && data->complex;
}

bool isDouble(const HostArray* array) { return dataOf<DoubleData>(array) != nullptr; }

bool isReal2dMatrix(const HostArray* array)
{
    return array->extents.size() == 2 && isDouble(array) && !isComplex(array);
}

void setArrayScope(HostArray* array, HostArrayScope scope) { array->scope = scope; }
HostArrayScope getArrayScope(const HostArray* array) { return array->scope; }

const double* getRealData(const HostArray* array)
{
    const auto* data = dataOf<DoubleData>(array);
    return data != nullptr ? data->real.get() : nullptr;
}
double* getRealData(HostArray* array) { return const_cast<double*>(getRealData(asConst(array))); }

const double* getImagData(const HostArray* array)
{
    const auto* data = dataOf<DoubleData>(array);
    return data != nullptr ? data->imag.get() : nullptr;
}
double* getImagData(HostArray* array) { return const_cast<double*>(getImagData(asConst(array))); }

const std::uint8_t* getLogicals(const HostArray* array)
{
    const auto* data = dataOf<LogicalData>(array);
    return data != nullptr ? data->bytes.get() : nullptr;
}
std::uint8_t* getLogicals(HostArray* array) { return const_cast<std::uint8_t*>(getLogicals(asConst(array))); }

const char* getChars(const HostArray* array)
{
    const auto* data = dataOf<CharData>(array);
    return data != nullptr ? data->text.data() : nullptr;
}

void setRealData(HostArray* array, double* data)
{
    install(requireData<DoubleData>(array, "only a double array takes real data").real, data);
}

void setImagData(HostArray* array, double* data)
{
    auto& doubles = requireData<DoubleData>(array, "only a double array takes imaginary data");
    install(doubles.imag, data);
    doubles.complex = data != nullptr;
}

void setCell(HostArray* cell, std::uint64_t index, HostArray* element)
{
    auto& data = requireData<CellData>(cell, "only a cell array takes elements");
    if (index >= data.elements.size() || element == cell)
        throw Error(errors::InvalidArray, "there is no such element in the cell");
    if (data.elements[index].get() != element)
        data.elements[index].reset(element);
}

const HostArray* getCell(const HostArray* cell, std::uint64_t index)
{
    const auto* data = dataOf<CellData>(cell);
    return data != nullptr && index < data->elements.size() ? data->elements[index].get() : nullptr;
}

HostObjectRef hostobj::omGetArrayElement(const HostArray* array, std::uint64_t index)
{
    const auto* data = dataOf<ObjectData>(array);
    return data != nullptr && index < data->elements.size() ? data->elements[index] : nullptr;
}

void hostobj::omSetArrayElement(HostArray* array, std::uint64_t index, HostObjectRef object)
{
    auto& data = requireData<ObjectData>(array, "only an object array takes objects");
    if (index >= data.elements.size())
        throw Error(errors::InvalidArray, "there is no such element in the object array");
    data.elements[index] = std::move(object);
}

const char* getObjectClassName(const HostArray* array)
{
    const auto* data = dataOf<ObjectData>(array);
    return data != nullptr ? data->className.c_str() : nullptr;
}

std::size_t getNumberOfLiveArrays() noexcept { return HostArray::alive(); }

} // namespace tracery
