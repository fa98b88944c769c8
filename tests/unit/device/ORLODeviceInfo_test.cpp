#include "device/ORLODeviceInfo.h"

#include "support/Bytes.h"

#include <array>
#include <gtest/gtest.h>

namespace deckmate {
namespace {

using test::Bytes;
using test::operator+;

constexpr std::size_t used = 10;
constexpr std::size_t most = 20;

/// F0 52 00 00 67 00, present, 1 h 2 min 3 s, ten digits of used space and ten of all.
Bytes report(std::uint8_t present = 1) {
    return Bytes{0xF0, 0x52, 0x00, 0x00, 0x67, 0x00, present, 1, 2, 3} + test::zeros(20);
}

std::string usedSize(std::size_t digit, std::uint8_t value) {
    ORLODeviceInfo info;
    Bytes message = report();
    message[used + digit] = value;
    info.storeCardState(message);
    return info.sdUsedSize;
}

TEST(CardState, IsToldByLengthAndTwoBytes) {
    EXPECT_TRUE(ORLODeviceInfo::isCardState(report()));
    EXPECT_FALSE(ORLODeviceInfo::isCardState(report() + Bytes{0}));
    Bytes message = report();
    message[5] = 1;
    EXPECT_FALSE(ORLODeviceInfo::isCardState(message));
    message.pop_back();
    EXPECT_FALSE(ORLODeviceInfo::isCardState(message));
    EXPECT_FALSE(ORLODeviceInfo::isCardState({}));
}

TEST(CardState, IsStoredAsItCame) {
    ORLODeviceInfo info;
    Bytes message = report(2);
    message[used + 3] = 4;
    message[most + 4] = 100;
    info.storeCardState(message);
    EXPECT_EQ(info.sdExist, 2);
    EXPECT_EQ(info.sdRemaining, (std::array<std::uint8_t, 3>{1, 2, 3}));
    EXPECT_EQ(info.sdUsedBuff[3], 4);
    EXPECT_EQ(info.sdUsedSize, "8.00 MB");
    EXPECT_EQ(info.sdMaxBuff[4], 100);
    EXPECT_EQ(info.sdMaxSize, "25.0 GB");
}

TEST(CardState, WithoutACardThereAreNoSizes) {
    ORLODeviceInfo info;
    Bytes message = report();
    for (std::size_t i = used; i < message.size(); ++i) {
        message[i] = 9;
    }
    info.storeCardState(message);
    message[6] = 0;
    info.storeCardState(message);
    EXPECT_EQ(info.sdExist, 0);
    EXPECT_EQ(info.sdRemaining, (std::array<std::uint8_t, 3>{0, 0, 0}));
    EXPECT_EQ(info.sdUsedSize, "-- GB");
    EXPECT_EQ(info.sdMaxSize, "-- GB");
}

// All but the first three digits keep what they held: it has always been so.
TEST(CardState, WithoutACardMostDigitsStay) {
    ORLODeviceInfo info;
    info.sdUsedBuff.fill(7);
    info.sdMaxBuff.fill(8);
    info.storeCardState(report(0));
    EXPECT_EQ(info.sdUsedBuff, (std::array<std::uint8_t, 10>{0, 0, 0, 7, 7, 7, 7, 7, 7, 7}));
    EXPECT_EQ(info.sdMaxBuff, (std::array<std::uint8_t, 10>{0, 0, 0, 8, 8, 8, 8, 8, 8, 8}));
}

TEST(CardState, DigitsHaveSevenBits) {
    EXPECT_EQ(usedSize(0, 0x7F), "0.00 MB");
    EXPECT_EQ(usedSize(2, 64), "1.00 MB"); // 64 * 2^14
    EXPECT_EQ(usedSize(3, 1), "2.00 MB");  // 2^21
    EXPECT_EQ(usedSize(4, 4), "1.00 GB");  // 4 * 2^28
    EXPECT_EQ(usedSize(5, 1), "32.0 GB");  // 2^35
    EXPECT_EQ(usedSize(6, 1), "4096 GB");  // 2^42
}

// 2^47 bytes instead of 2^49: it has always been so.
TEST(CardState, TheEighthDigitWeighsAQuarter) {
    EXPECT_EQ(usedSize(7, 1), "131072 GB");
}

TEST(CardState, OfTheLastDigitOnlyTheLowestBitCounts) {
    EXPECT_EQ(usedSize(8, 1), "67108864 GB"); // 2^56
    EXPECT_EQ(usedSize(9, 2), "0.00 MB");
    EXPECT_EQ(usedSize(9, 0xFE), "0.00 MB");
}

TEST(CardState, PreposterousDigitsAreHarmless) {
    ORLODeviceInfo info;
    info.storeCardState(Bytes{0xF0, 0x52, 0, 0, 0x67, 0, 0xFF} + Bytes(23, 0xFF));
    EXPECT_EQ(info.sdExist, 0xFF);
    EXPECT_EQ(info.sdUsedSize, "2147483647 GB");
}

} // namespace
} // namespace deckmate
