#include "platform/MidiPackets.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace deckmate {

namespace {

constexpr std::size_t stampBytes = sizeof(std::uint64_t);
constexpr std::size_t headerBytes = stampBytes + sizeof(std::uint16_t);

} // namespace

std::uint64_t midiTimeStamp() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::nanoseconds(now).count());
}

bool MIDIPacketList::add(std::uint64_t timeStamp, std::span<const std::uint8_t> data) {
    if (data.size() > MIDIPacket::mostBytes || room_.size() - used_ < headerBytes + data.size()) {
        return false;
    }
    std::uint8_t* const packet = room_.data() + used_;
    const auto length = static_cast<std::uint16_t>(data.size());
    std::memcpy(packet, &timeStamp, stampBytes);
    std::memcpy(packet + stampBytes, &length, sizeof length);
    std::copy(data.begin(), data.end(), packet + headerBytes);
    used_ += headerBytes + data.size();
    ++numPackets_;
    return true;
}

const MIDIPacket* MIDIPacketList::Walk::next() {
    if (left_.empty()) {
        return nullptr;
    }
    std::memcpy(&packet_.timeStamp, left_.data(), stampBytes);
    std::memcpy(&packet_.length, left_.data() + stampBytes, sizeof packet_.length);
    const auto data = left_.subspan(headerBytes, packet_.length);
    std::copy(data.begin(), data.end(), packet_.data.begin());
    left_ = left_.subspan(headerBytes + data.size());
    return &packet_;
}

} // namespace deckmate
