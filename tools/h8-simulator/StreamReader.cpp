#include "h8-simulator/StreamReader.h"

#include <utility>

namespace deckmate::tools {

namespace {

constexpr std::uint8_t start = 0xF0;
constexpr std::uint8_t end = 0xF7;
constexpr std::uint8_t firstStatus = 0x80;
constexpr std::uint8_t firstRealTime = 0xF8;

} // namespace

std::vector<StreamReader::Item> StreamReader::read(ByteView bytes) {
    std::vector<Item> items;
    for (const std::uint8_t byte : bytes) {
        if (byte < firstRealTime) {
            take(byte, items);
        }
    }
    if (!isInMessage_) {
        close(false, items); // nobody knows whether more of it comes
    }
    return items;
}

void StreamReader::take(std::uint8_t byte, std::vector<Item>& items) {
    if (byte == end && isInMessage_) {
        current_.push_back(byte);
        isInMessage_ = false;
        close(true, items);
        return;
    }
    if (byte >= firstStatus) {
        close(false, items);
        isInMessage_ = byte == start;
    }
    current_.push_back(byte);
    if (current_.size() >= longest) {
        isInMessage_ = false;
        close(false, items);
    }
}

void StreamReader::close(bool isMessage, std::vector<Item>& items) {
    if (!current_.empty()) {
        items.push_back({std::exchange(current_, {}), isMessage});
    }
}

} // namespace deckmate::tools
