#pragma once

#include <tracery/export.h>
#include <tracery/host/HostObject.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tracery {

/// Class of an array's elements.
enum class HostClassID : std::int32_t { cell, logical, char_, double_, object };

/// Whether an array has an imaginary part. An empty complex array is complex all the same.
enum class HostComplexity : std::int32_t { real = 0, complex = 1 };

/// How long an array lives: until it is destroyed, or to the end of the current host call. The codes are those of the
/// host's interface.
enum class HostArrayScope : std::int32_t { persistent = 0, call = 1 };

/// The value that crosses the boundary to the host: an N-dimensional array, column-major, with the real and the
/// imaginary part in separate buffers. Made and read by the functions below alone.
///
/// Ownership: whoever creates an array destroys it, unless it is returned to the host or put into a cell. Arrays that
/// the host passes in are only read. Code of our own holds arrays in a HostArrayPtr.
class HostArray;

/// Releases the array and everything it owns; null is ignored.
TRACERY_EXPORT void destroyArray(HostArray* array) noexcept;

/// Calls destroyArray.
struct HostArrayDeleter {
    /// For unique_ptr.
    void operator()(HostArray* array) const noexcept { destroyArray(array); }
};
/// Owning handle of an array.
using HostArrayPtr = std::unique_ptr<HostArray, HostArrayDeleter>;

/// Releases what allocateMemory, allocateZeros or arrayToString returned; null is ignored.
TRACERY_EXPORT void freeMemory(void* memory) noexcept;

/// Calls freeMemory.
struct HostMemoryDeleter {
    /// For unique_ptr.
    void operator()(void* memory) const noexcept { freeMemory(memory); }
};
/// Owning handle of doubles from the host's allocator.
using HostDoubles = std::unique_ptr<double[], HostMemoryDeleter>;

// ---- Creation. Data are zero-filled, the scope is the current call. Throws InvalidArray when the product of the extents
// ---- (of all, or of those past the first; or the bytes they need) passes 64 bits, when there are no extents, and for a
// ---- class that an operation does not make.

/// A matrix of zeros.
TRACERY_EXPORT HostArray* createDoubleMatrix(std::uint64_t rows, std::uint64_t columns, HostComplexity complexity);
/// A double matrix that takes over its data, rows x columns doubles each; complex when `imag` is not null.
TRACERY_EXPORT HostArray* adoptDoubleMatrix(std::uint64_t rows, std::uint64_t columns, HostDoubles real,
                                            HostDoubles imag);
/// As createDoubleMatrix; `classId` is double_ or (real only) logical.
TRACERY_EXPORT HostArray* createNumericMatrix(std::uint64_t rows, std::uint64_t columns, HostClassID classId,
                                              HostComplexity complexity);
/// Extents past the second are kept as passed; a single extent n makes an n-by-1 array.
TRACERY_EXPORT HostArray* createNumericArray(std::size_t numDims, const std::uint64_t* extents, HostClassID classId,
                                             HostComplexity complexity);
/// Logical arrays.
TRACERY_EXPORT HostArray* createLogicalScalar(bool value);
TRACERY_EXPORT HostArray* createLogicalArray(std::size_t numDims, const std::uint64_t* extents);
/// All elements are absent.
TRACERY_EXPORT HostArray* createCellMatrix(std::uint64_t rows, std::uint64_t columns);
TRACERY_EXPORT HostArray* createCellArray(std::size_t numDims, const std::uint64_t* extents);
/// A 1-by-n char array of the bytes before the terminating zero; null counts as the empty string.
TRACERY_EXPORT HostArray* createString(const char* text);
/// A 0-by-0 array of the named host class, or null when the attached host does not know it (or none is attached).
TRACERY_EXPORT HostArray* createClassArray(const char* className);
/// An object array of the given extents, all references null.
TRACERY_EXPORT HostArray* createObjectArray(const char* className, std::size_t numDims, const std::uint64_t* extents);
/// A deep copy: class, extents and both data parts; cells are copied through, object references are shared. Copies,
/// those in cells too, start with the scope of the current call, whatever the original's is.
TRACERY_EXPORT HostArray* duplicateArray(const HostArray* array);

// ---- Shape and class

/// What the elements are, and how many extents there are.
TRACERY_EXPORT HostClassID getClassID(const HostArray* array);
TRACERY_EXPORT std::size_t getNumberOfDimensions(const HostArray* array);
/// The extents, at least two, valid while the array lives.
TRACERY_EXPORT const std::uint64_t* getDimensions(const HostArray* array);
/// The product of all extents past the first.
TRACERY_EXPORT std::uint64_t getN(const HostArray* array);
/// The product of all extents.
TRACERY_EXPORT std::uint64_t getNumberOfElements(const HostArray* array);
/// Elements inside a cell or object array; for other classes the same as getNumberOfElements.
TRACERY_EXPORT std::uint64_t getNumberOfContainedElements(const HostArray* array);
/// Whether there are no elements.
TRACERY_EXPORT bool isEmpty(const HostArray* array);
/// Whether there is an imaginary part, and whether the elements are doubles.
TRACERY_EXPORT bool isComplex(const HostArray* array);
TRACERY_EXPORT bool isDouble(const HostArray* array);
/// True for a real double array of exactly two extents; logical arrays are flags, not numbers.
TRACERY_EXPORT bool isReal2dMatrix(const HostArray* array);
/// The scope is kept for the host, which acts by it.
TRACERY_EXPORT void setArrayScope(HostArray* array, HostArrayScope scope);
TRACERY_EXPORT HostArrayScope getArrayScope(const HostArray* array);

// ---- Data. Pointers stay valid until the part is replaced or the array is destroyed.

/// The real parts, or null when there are none: for another class than double, after setRealData(null), and for an
/// empty array that was not given a buffer.
TRACERY_EXPORT double* getRealData(HostArray* array);
TRACERY_EXPORT const double* getRealData(const HostArray* array);
/// The imaginary parts, or null when there are none: for a real array, another class than double, and for an empty
/// array that was not given a buffer.
TRACERY_EXPORT double* getImagData(HostArray* array);
TRACERY_EXPORT const double* getImagData(const HostArray* array);
/// The bytes (each 0 or 1) of a logical array, or null for another class or an empty one.
TRACERY_EXPORT std::uint8_t* getLogicals(HostArray* array);
TRACERY_EXPORT const std::uint8_t* getLogicals(const HostArray* array);
/// The characters of a char array (getNumberOfElements of them, not terminated), or null.
TRACERY_EXPORT const char* getChars(const HostArray* array);
/// Installs `data` (from allocateMemory, at least one double an element) as the real part; the array owns it from
/// then on, and frees what it replaces. Null leaves the array without real data. Throws InvalidArray for an array of
/// another class, and `data` then stays with the caller.
TRACERY_EXPORT void setRealData(HostArray* array, double* data);
/// The same for the imaginary part; the array becomes complex, or real again when `data` is null.
TRACERY_EXPORT void setImagData(HostArray* array, double* data);
/// Moves `element` (may be null) into a cell; the element before is destroyed. Throws InvalidArray when `cell` is no
/// cell, the index is outside it, or the element is the cell itself; `element` then stays with the caller. An element
/// that holds the cell deeper down makes a circle that is never released: that is for the caller to avoid.
TRACERY_EXPORT void setCell(HostArray* cell, std::uint64_t index, HostArray* element);
/// The element of a cell, still owned by it; null when absent, outside, or no cell.
TRACERY_EXPORT const HostArray* getCell(const HostArray* cell, std::uint64_t index);
/// The class name of an object array, or null for another class.
TRACERY_EXPORT const char* getObjectClassName(const HostArray* array);
/// The text of a char array with a terminating zero, or null when the array is not a char array. The caller releases
/// it with freeMemory.
TRACERY_EXPORT char* arrayToString(const HostArray* array);

// ---- Host memory and numbers

/// How many arrays there are in the process.
TRACERY_EXPORT std::size_t getNumberOfLiveArrays() noexcept;
/// Uninitialised bytes from the host's allocator; throws std::bad_alloc.
TRACERY_EXPORT void* allocateMemory(std::size_t bytes);
/// The same, zero-filled.
TRACERY_EXPORT void* allocateZeros(std::size_t bytes);
/// The quiet NaN.
TRACERY_EXPORT double getNaN() noexcept;
/// Positive infinity.
TRACERY_EXPORT double getInf() noexcept;
/// True for every NaN.
TRACERY_EXPORT bool isNaN(double value) noexcept;
/// True for both infinities.
TRACERY_EXPORT bool isInf(double value) noexcept;

} // namespace tracery
