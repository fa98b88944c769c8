#include "export/OutputBuffer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

namespace deckmate {
namespace {

// No system has as much; the sanitizers' allocators refuse it as well.
constexpr std::size_t tooMuch = std::numeric_limits<std::size_t>::max() / 4;

TEST(OutputBuffer, StartsEmpty) {
    EXPECT_TRUE(OutputBuffer().bytes().empty());
}

TEST(OutputBuffer, KeepsItsBytesWhileItGrows) {
    OutputBuffer buffer;
    for (int i = 0; i < 100000; ++i) {
        std::uint8_t* room = buffer.extend(3);
        ASSERT_NE(room, nullptr);
        std::fill_n(room, 3, static_cast<std::uint8_t>(i));
    }
    ASSERT_EQ(buffer.size(), 300000U);
    for (std::size_t i = 0; i < buffer.size(); ++i) {
        ASSERT_EQ(buffer.bytes()[i], static_cast<std::uint8_t>(i / 3));
    }
}

TEST(OutputBuffer, ReservedRoomIsNotMovedAgain) {
    OutputBuffer buffer;
    ASSERT_TRUE(buffer.reserve(1000));
    const std::uint8_t* start = buffer.extend(1);
    buffer.extend(999);
    EXPECT_EQ(buffer.bytes().data(), start);
}

TEST(OutputBuffer, RunningOutOfMemoryChangesNothing) {
    OutputBuffer buffer;
    *buffer.extend(1) = 42;
    EXPECT_FALSE(buffer.reserve(tooMuch));
    EXPECT_EQ(buffer.extend(tooMuch), nullptr);
    ASSERT_EQ(buffer.size(), 1U);
    EXPECT_EQ(buffer.bytes()[0], 42);
}

TEST(OutputBuffer, SizesThatWrapAreRefused) {
    OutputBuffer buffer;
    buffer.extend(1);
    EXPECT_EQ(buffer.extend(std::numeric_limits<std::size_t>::max()), nullptr);
    EXPECT_EQ(buffer.size(), 1U);
}

TEST(OutputBuffer, NothingIsNoFailure) {
    EXPECT_NE(OutputBuffer().extend(0), nullptr);
}

TEST(OutputBuffer, ClearLeavesItUsable) {
    OutputBuffer buffer;
    buffer.extend(10);
    buffer.clear();
    EXPECT_EQ(buffer.size(), 0U);
    EXPECT_NE(buffer.extend(10), nullptr);
}

} // namespace
} // namespace deckmate
