#include "recording/WavArray.h"

#include <gtest/gtest.h>
#include <vector>

namespace deckmate {
namespace {

std::uint8_t* block(std::size_t size) {
    return static_cast<std::uint8_t*>(std::malloc(size));
}

TEST(WavArray, StartsEmpty) {
    const WavArray array;
    EXPECT_EQ(array.bytes(), nullptr);
    EXPECT_EQ(array.length(), 0U);
}

TEST(WavArray, DisposeKeepsTheAddressAndClearsTheLength) {
    std::uint8_t* bytes = block(8);
    const auto address = reinterpret_cast<std::uintptr_t>(bytes);
    WavArray array(bytes, 8);
    array.dispose();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(array.bytes()), address);
    EXPECT_EQ(array.length(), 0U);
}

// A second free would abort the program.
TEST(WavArray, DisposeTwiceFreesOnce) {
    WavArray array(block(8), 8);
    array.dispose();
    array.dispose();
    EXPECT_EQ(array.length(), 0U);
}

TEST(WavArray, GrowsInPlaceByReallocAndSetBytes) {
    WavArrayFloat32 array;
    array.setLength(4);
    array.setBytes(static_cast<float*>(std::malloc(4 * sizeof(float))));
    array.bytes()[3] = 0.5F;
    array.setLength(8);
    array.setBytes(static_cast<float*>(std::realloc(array.bytes(), 8 * sizeof(float))));
    EXPECT_EQ(array.length(), 8U);
    EXPECT_EQ(array.bytes()[3], 0.5F);
}

TEST(WavArray, CopiesElementsIntoABlockOfItsOwn) {
    const std::vector<float> elements{0.5F, 0.25F};
    const WavArrayFloat32 array = WavArrayFloat32::copyOf(elements);
    ASSERT_EQ(array.length(), 2U);
    EXPECT_NE(array.bytes(), elements.data());
    EXPECT_EQ(array.bytes()[1], 0.25F);
    EXPECT_EQ(WavArray::copyOf({}).bytes(), nullptr);
}

TEST(WavArray, MovingLeavesNothingBehind) {
    WavArray from(block(8), 8);
    const WavArray to(std::move(from));
    EXPECT_EQ(to.length(), 8U);
    EXPECT_EQ(from.bytes(), nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(from.length(), 0U);
}

TEST(WavArray, MoveAssignmentFreesTheBlockHeldBefore) {
    WavArray array(block(8), 8); // a leak here is a finding of the address sanitizer
    array = WavArray(block(16), 16);
    EXPECT_EQ(array.length(), 16U);
}

} // namespace
} // namespace deckmate
