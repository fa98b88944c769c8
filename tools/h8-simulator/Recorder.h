// The recorder's side of the protocol.
#pragma once

#include "h8-simulator/Protocol.h"
#include "h8-simulator/StreamReader.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace deckmate::tools {

/// All that a computer can ask for or set.
struct RecorderState {
    std::array<std::uint8_t, 4> deviceId = {0x52, 0x00, 0x00, 0x00};
    std::array<std::uint8_t, 4> version = {'0', '1', '0', '0'}; ///< shown as 1.00
    std::uint8_t battery = 0;                                   ///< the index in the battery menu
    std::uint8_t powerOff = 1;                                  ///< the first item of its menu
    std::uint8_t card = 1;                                      ///< 0 for none
    std::array<std::uint8_t, 3> remaining = {23, 5, 0};         ///< hours, minutes, seconds
    std::uint64_t used = std::uint64_t{15} << 29;               ///< bytes: 7.5 GB
    std::uint64_t capacity = 31'997'506'355;                    ///< 29.8 GB
    /// As it was set: year / 100, year % 100, month, day, hour, minute, second.
    std::optional<std::array<std::uint8_t, 7>> clock;
};

/// Answers a computer. What is to be sent, and when, is the caller's business.
class Recorder {
public:
    struct Received {
        StreamReader::Item item;
        Bytes reply; ///< empty where there is none to give
    };

    RecorderState& state() { return state_; }
    const RecorderState& state() const { return state_; }

    /// Takes bytes as they arrive, in pieces of any size.
    std::vector<Received> receive(ByteView bytes);
    /// The card state, which the recorder also sends without being asked. Without a card its
    /// numbers are 0.
    Bytes cardReport() const;

private:
    Bytes replyTo(ByteView message);

    StreamReader reader_;
    RecorderState state_;
};

} // namespace deckmate::tools
