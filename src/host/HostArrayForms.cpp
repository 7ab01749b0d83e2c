// Usual forms of arrays, made and read by the other functions alone.

#include <tracery/host/Host.h>
#include <tracery/host/HostArray.h>

#include <cstring>

namespace tracery {

HostArray* createNumericMatrix(std::uint64_t rows, std::uint64_t columns, HostClassID classId,
                               HostComplexity complexity)
{
    const std::uint64_t extents[] = {rows, columns};
    return createNumericArray(2, extents, classId, complexity);
}

HostArray* createLogicalScalar(bool value)
{
    const std::uint64_t one[] = {1, 1};
    HostArray* array = createLogicalArray(2, one);
    getLogicals(array)[0] = value ? 1 : 0;
    return array;
}

HostArray* createCellMatrix(std::uint64_t rows, std::uint64_t columns)
{
    const std::uint64_t extents[] = {rows, columns};
    return createCellArray(2, extents);
}

HostArray* createClassArray(const char* className)
{
    Host* host = Host::current();
    if (className == nullptr || host == nullptr || host->objects().findClass(className) == nullptr)
        return nullptr;
    const std::uint64_t none[] = {0, 0};
    return createObjectArray(className, 2, none);
}

char* arrayToString(const HostArray* array)
{
    const char* chars = getChars(array);
    if (chars == nullptr)
        return nullptr;
    const std::uint64_t count = getNumberOfElements(array);
    auto* text = static_cast<char*>(allocateMemory(count + 1));
    std::memcpy(text, chars, count);
    text[count] = '\0';
    return text;
}

} // namespace tracery
