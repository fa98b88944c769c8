#include "device/ORLODeviceInfo.h"

#include "device/MIDIConnectSequence.h"

#include <algorithm>
#include <cstddef>

namespace deckmate {

namespace {

constexpr const char* noSize = "-- GB";

/// The weight of digit 7 should be 2^49; the recorder's own application has always used 2^47.
constexpr std::array<float, 10> digitWeights = {0x1p0F,  0x1p7F,  0x1p14F, 0x1p21F, 0x1p28F,
                                                0x1p35F, 0x1p42F, 0x1p47F, 0x1p56F, 0x1p63F};

float byteCount(const std::array<std::uint8_t, 10>& digits) {
    float sum = 0;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        // Of the last one, only the lowest bit is left within 64.
        const auto digit = static_cast<float>(i == 9 ? digits[i] & 1 : digits[i]);
        sum += digit * digitWeights[i];
    }
    return sum;
}

} // namespace

bool ORLODeviceInfo::isCardState(std::span<const std::uint8_t> message) {
    return message.size() == cardStateLength && message[4] == 0x67 && message[5] == 0x00;
}

void ORLODeviceInfo::storeCardState(std::span<const std::uint8_t> message) {
    sdExist = message[6];
    if (sdExist != 0) {
        std::copy_n(message.begin() + 7, sdRemaining.size(), sdRemaining.begin());
        std::copy_n(message.begin() + 10, sdUsedBuff.size(), sdUsedBuff.begin());
        std::copy_n(message.begin() + 20, sdMaxBuff.size(), sdMaxBuff.begin());
        sdUsedSize = MIDIConnectSequence::buildSizeString(byteCount(sdUsedBuff));
        sdMaxSize = MIDIConnectSequence::buildSizeString(byteCount(sdMaxBuff));
    } else {
        sdRemaining = {};
        // The other digits keep what they held.
        std::fill_n(sdUsedBuff.begin(), 3, std::uint8_t{0});
        std::fill_n(sdMaxBuff.begin(), 3, std::uint8_t{0});
        sdUsedSize = noSize;
        sdMaxSize = noSize;
    }
}

} // namespace deckmate
