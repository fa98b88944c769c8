#include "device/MIDICommon.h"

#include "platform/RunLoop.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace deckmate {

namespace {

constexpr std::size_t bytesPerPacket = 6;

/// Scratch for a packet in the making.
std::array<std::uint8_t, 32> s_share_buffer = {};

enum SysExStatus : std::uint8_t { complete = 0, start = 1, proceed = 2, end = 3 };

} // namespace

void MIDICommon::runBackground(std::function<void()> block) {
    RunLoop::main().runInBackground(std::move(block));
}

void MIDICommon::runOnUIThread(std::function<void()> block) {
    RunLoop::main().runAndWait(std::move(block));
}

std::optional<std::vector<GLPacket>>
MIDICommon::convertByteToPacket(std::span<const std::uint8_t> bytes) {
    if (bytes.empty() || bytes.front() != 0xF0) {
        return std::nullopt;
    }
    std::span<const std::uint8_t> payload;
    if (bytes.size() > 2) {
        payload = bytes.subspan(1, bytes.size() - 2);
    }
    const std::size_t count = (payload.size() + bytesPerPacket - 1) / bytesPerPacket;
    std::vector<GLPacket> packets;
    packets.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t status = count == 1       ? complete
                                    : i == 0         ? start
                                    : i == count - 1 ? end
                                                     : proceed;
        const std::size_t size = std::min(payload.size(), bytesPerPacket);
        packets.push_back(createPackage(0, status, payload.first(size)));
        payload = payload.subspan(size);
    }
    return packets;
}

GLPacket MIDICommon::createPackage(std::uint8_t group, std::uint8_t status,
                                   std::span<const std::uint8_t> real_data) {
    const std::size_t count = std::min(real_data.size(), bytesPerPacket);
    s_share_buffer.fill(0);
    s_share_buffer[0] = static_cast<std::uint8_t>(0x30 | (group & 0xFU));
    s_share_buffer[1] = static_cast<std::uint8_t>((status & 0xFU) << 4 | count);
    std::copy_n(real_data.begin(), count, s_share_buffer.begin() + 2);

    GLPacket packet;
    packet.size = 2;
    for (std::size_t i = 0; i < 2 + bytesPerPacket; ++i) {
        packet.data[i / 4] = packet.data[i / 4] << 8 | s_share_buffer[i];
    }
    return packet;
}

} // namespace deckmate
