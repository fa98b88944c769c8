// What is known of the recorder.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace deckmate {

/// Filled by the connect sequence and by reports that the recorder sends by itself. All bytes are
/// as they came: nothing is checked.
struct ORLODeviceInfo {
    std::array<std::uint8_t, 4> device_id = {};
    std::array<char, 4> version = {};
    std::uint8_t batteryType = 0;
    std::uint8_t autoPowOffType = 0;
    std::uint8_t sdExist = 0;                     ///< a memory card is there, if not 0
    std::array<std::uint8_t, 3> sdRemaining = {}; ///< hours, minutes, seconds of recording
    std::string sdUsedSize;                       ///< for the user
    std::string sdMaxSize;                        ///< for the user
    std::array<std::uint8_t, 10> sdUsedBuff = {}; ///< digits of seven bits, lowest first
    std::array<std::uint8_t, 10> sdMaxBuff = {};

    /// Bytes of a card state message in the form of the receive buffer (F0 first, F7 not counted).
    static constexpr std::uint32_t cardStateLength = 30;
    /// Whether a message is one.
    static bool isCardState(std::span<const std::uint8_t> message);
    /// Takes in such a message.
    void storeCardState(std::span<const std::uint8_t> message);
};

} // namespace deckmate
