#include "support/Expect.h"

#include <tracery/host/Error.h>
#include <tracery/host/Host.h>
#include <tracery/host/HostArray.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace tracery;
using namespace tracery::test;

namespace {

const std::string kInvalidArray = "InvalidArray";

TEST(HostArrayTest, ExtentsAndCountsFollowTheColumnMajorShape)
{
    const std::uint64_t cube[] = {2, 3, 4};
    HostArrayPtr array(createNumericArray(3, cube, HostClassID::double_, HostComplexity::real));
    EXPECT_EQ(getN(array.get()), 12U);
    EXPECT_EQ(getNumberOfElements(array.get()), 24U);
    EXPECT_EQ(getNumberOfDimensions(array.get()), 3U);
    EXPECT_FALSE(isReal2dMatrix(array.get()));
    for (std::size_t i = 0; i < 24; ++i)
        EXPECT_EQ(getRealData(array.get())[i], 0.0);

    const std::uint64_t flat[] = {2, 3, 0};
    array.reset(createNumericArray(3, flat, HostClassID::double_, HostComplexity::complex));
    EXPECT_TRUE(isEmpty(array.get()));
    EXPECT_TRUE(isComplex(array.get())) << "an empty complex array is still complex";
    EXPECT_EQ(getRealData(array.get()), nullptr);

    const std::uint64_t one[] = {5};
    array.reset(createNumericArray(1, one, HostClassID::double_, HostComplexity::real));
    ASSERT_EQ(getNumberOfDimensions(array.get()), 2U);
    EXPECT_EQ(getDimensions(array.get())[1], 1U);
    EXPECT_TRUE(isReal2dMatrix(array.get()));
}

TEST(HostArrayTest, RefusesSizesThatOverflowAndClassesItDoesNotMake)
{
    const std::uint64_t huge[] = {1ULL << 33, 1ULL << 33};
    EXPECT_EQ(failure([&] { createNumericArray(2, huge, HostClassID::double_, HostComplexity::real); }), kInvalidArray);
    EXPECT_EQ(failure([&] { createCellArray(2, huge); }), kInvalidArray);
    EXPECT_EQ(failure([] { createDoubleMatrix(1ULL << 62, 1, HostComplexity::real); }), kInvalidArray);
    EXPECT_EQ(failure([&] { createLogicalArray(0, huge); }), kInvalidArray);
    const std::uint64_t wide[] = {0, 1ULL << 40, 1ULL << 40}, none[] = {1ULL << 40, 0, 1ULL << 40};
    EXPECT_EQ(failure([&] { createNumericArray(3, wide, HostClassID::double_, HostComplexity::real); }), kInvalidArray)
        << "it would have no N";
    EXPECT_EQ(getN(HostArrayPtr(createLogicalArray(3, none)).get()), 0U);
    EXPECT_EQ(failure([] { createNumericMatrix(1, 1, HostClassID::cell, HostComplexity::real); }), kInvalidArray);
}

TEST(HostArrayTest, TheImaginaryPartComesAndGoesWithItsBuffer)
{
    HostArrayPtr array(createDoubleMatrix(1, 2, HostComplexity::real));
    EXPECT_EQ(getImagData(array.get()), nullptr);
    auto* imag = static_cast<double*>(allocateMemory(2 * sizeof(double)));
    imag[0] = 3, imag[1] = 4;
    setImagData(array.get(), imag);
    EXPECT_TRUE(isComplex(array.get()));

    HostArrayPtr copy(duplicateArray(array.get()));
    getImagData(array.get())[0] = 99;
    EXPECT_EQ(getImagData(copy.get())[0], 3.0);
    setImagData(array.get(), nullptr);
    EXPECT_FALSE(isComplex(array.get()));
    setImagData(copy.get(), getImagData(copy.get()));
    EXPECT_EQ(getImagData(copy.get())[1], 4.0) << "the same data stay";
    setRealData(array.get(), nullptr);
    EXPECT_EQ(getRealData(array.get()), nullptr);
    EXPECT_EQ(getNumberOfElements(array.get()), 2U);

    HostArrayPtr text(createString("x"));
    EXPECT_EQ(failure([&] { setRealData(text.get(), nullptr); }), kInvalidArray);
}

TEST(HostArrayTest, StringsTurnBackIntoTextAndOtherClassesDoNot)
{
    HostArrayPtr text(createString("sweep \xc3\xa9"));
    char* back = arrayToString(text.get());
    EXPECT_STREQ(back, "sweep \xc3\xa9");
    freeMemory(back);
    EXPECT_EQ(getN(text.get()), std::strlen("sweep \xc3\xa9"));
    HostArrayPtr flag(createLogicalScalar(true));
    EXPECT_EQ(arrayToString(flag.get()), nullptr);
    EXPECT_EQ(getLogicals(flag.get())[0], 1);
    EXPECT_FALSE(isReal2dMatrix(flag.get())) << "flags are not numbers";
    destroyArray(nullptr);
}

TEST(HostArrayTest, CellsOwnTheirElements)
{
    HostArrayPtr cell(createCellMatrix(1, 2));
    EXPECT_EQ(getCell(cell.get(), 0), nullptr);
    setCell(cell.get(), 0, createString("first"));
    setCell(cell.get(), 0, createString("second"));
    HostArrayPtr copy(duplicateArray(cell.get()));
    cell.reset();
    EXPECT_EQ(std::string(getChars(getCell(copy.get(), 0)), 6), "second");
    EXPECT_EQ(getNumberOfContainedElements(copy.get()), 2U);
    setCell(copy.get(), 0, const_cast<HostArray*>(getCell(copy.get(), 0)));
    EXPECT_EQ(std::string(getChars(getCell(copy.get(), 0)), 6), "second") << "which it holds already";
    EXPECT_EQ(failure([&] { setCell(copy.get(), 2, nullptr); }), kInvalidArray);
    EXPECT_EQ(failure([&] { setCell(copy.get(), 0, copy.get()); }), kInvalidArray);
}

TEST(HostArrayTest, CopiesLiveForTheCallWhateverTheOriginalDoes)
{
    EXPECT_EQ(static_cast<int>(HostArrayScope::persistent), 0);
    EXPECT_EQ(static_cast<int>(HostArrayScope::call), 1);
    HostArrayPtr cell(createCellMatrix(1, 1));
    EXPECT_EQ(getArrayScope(cell.get()), HostArrayScope::call);
    HostArray* element = createString("kept");
    setCell(cell.get(), 0, element);
    for (HostArray* array : {cell.get(), element})
        setArrayScope(array, HostArrayScope::persistent);
    const HostArrayPtr copy(duplicateArray(cell.get()));
    EXPECT_EQ(getArrayScope(copy.get()), HostArrayScope::call);
    EXPECT_EQ(getArrayScope(getCell(copy.get(), 0)), HostArrayScope::call);
    EXPECT_EQ(getArrayScope(element), HostArrayScope::persistent);
}

struct FakeObject : hostobj::COSInterface {
    const char* className() const override { return "demo.Figure"; }
    bool isA(const hostobj::COSNameID&) const override { return true; }
    std::shared_ptr<hostobj::InstancePayload> payload() const override { return nullptr; }
};

TEST(HostArrayTest, ObjectArraysShareCountedReferences)
{
    EXPECT_EQ(createClassArray("demo.Figure"), nullptr) << "no host is attached";
    const HostObjectRef object = std::make_shared<FakeObject>();
    const std::uint64_t scalar[] = {1, 1};
    HostArrayPtr array(createObjectArray("demo.Figure", 2, scalar));
    hostobj::omSetArrayElement(array.get(), 0, object);
    HostArrayPtr copy(duplicateArray(array.get()));
    EXPECT_EQ(object.use_count(), 3);
    EXPECT_EQ(hostobj::omGetArrayElement(copy.get(), 0), object);
    EXPECT_EQ(hostobj::omGetArrayElement(copy.get(), 1), nullptr);
    array.reset();
    copy.reset();
    EXPECT_EQ(object.use_count(), 1);
}

} // namespace
