#include "platform/UmpTranslation.h"

#include <algorithm>
#include <iterator>

namespace deckmate {

namespace {

// Message types: the four highest bits.
constexpr std::uint32_t typeSystem = 1;
constexpr std::uint32_t typeVoice = 2;
constexpr std::uint32_t typeSysEx = 3;

// What a packet of type 3 is of its message: bits 23 to 20.
constexpr std::uint32_t sysExComplete = 0;
constexpr std::uint32_t sysExStart = 1;
constexpr std::uint32_t sysExContinue = 2;
constexpr std::uint32_t sysExEnd = 3;

constexpr std::uint8_t startOfSysEx = 0xF0;
constexpr std::uint8_t endOfSysEx = 0xF7;
constexpr std::uint8_t firstRealTime = 0xF8;
constexpr std::uint8_t dataBits = 0x7F;

constexpr bool isStatus(std::uint8_t byte) {
    return byte >= 0x80;
}

/// The data bytes behind a status; -1 for the statuses of no message of known length.
constexpr int dataBytesOf(std::uint8_t status) {
    switch (status >> 4) {
    case 0x8:
    case 0x9:
    case 0xA:
    case 0xB:
    case 0xE:
        return 2;
    case 0xC:
    case 0xD:
        return 1;
    case 0xF:
        break;
    default:
        return -1;
    }
    switch (status) {
    case 0xF1: // time code
    case 0xF3: // song select
        return 1;
    case 0xF2: // song position
        return 2;
    case 0xF6: // tune request
    case 0xF8: // clock
    case 0xFA: // start
    case 0xFB: // continue
    case 0xFC: // stop
    case 0xFE: // active sensing
    case 0xFF: // reset
        return 0;
    default:
        return -1;
    }
}

std::uint32_t shortPacket(std::uint8_t status, std::uint8_t first, std::uint8_t second) {
    const std::uint32_t type = status < startOfSysEx ? typeVoice : typeSystem;
    return (type << 28) | (std::uint32_t{status} << 16) | (std::uint32_t{first} << 8) | second;
}

std::uint8_t byteAt(std::uint32_t word, unsigned shift) {
    return static_cast<std::uint8_t>(word >> shift);
}

void decodeShort(std::uint32_t word, std::uint32_t type, std::vector<std::uint8_t>& bytes) {
    const std::uint8_t status = byteAt(word, 16);
    const int count = dataBytesOf(status);
    const bool isVoice = status < startOfSysEx;
    if (count < 0 || isVoice != (type == typeVoice)) {
        return;
    }
    bytes.push_back(status);
    for (int i = 0; i < count; ++i) {
        bytes.push_back(byteAt(word, i == 0 ? 8 : 0) & dataBits);
    }
}

void decodeSysEx(std::uint32_t first, std::uint32_t second, std::vector<std::uint8_t>& bytes) {
    const std::uint32_t status = (first >> 20) & 0xF;
    const std::uint32_t count = (first >> 16) & 0xF;
    const std::array<std::uint8_t, 6> data = {byteAt(first, 8),   byteAt(first, 0),
                                              byteAt(second, 24), byteAt(second, 16),
                                              byteAt(second, 8),  byteAt(second, 0)};
    if (status > sysExEnd || count > data.size()) {
        return;
    }
    if (status == sysExComplete || status == sysExStart) {
        bytes.push_back(startOfSysEx);
    }
    std::transform(data.begin(), data.begin() + count, std::back_inserter(bytes),
                   [](std::uint8_t byte) { return static_cast<std::uint8_t>(byte & dataBits); });
    if (status == sysExComplete || status == sysExEnd) {
        bytes.push_back(endOfSysEx);
    }
}

bool endsMessage(std::uint32_t firstWord) {
    const std::uint32_t status = (firstWord >> 20) & 0xF;
    return firstWord >> 28 != typeSysEx || status == sysExComplete || status == sysExEnd;
}

} // namespace

void UmpEncoder::encode(std::span<const std::uint8_t> bytes, std::vector<std::uint32_t>& words) {
    for (const std::uint8_t byte : bytes) {
        if (isStatus(byte)) {
            takeStatus(byte, words);
        } else if (isInSysEx_) {
            takeSysExData(byte, words);
        } else {
            takeData(byte, words);
        }
    }
}

void UmpEncoder::reset() {
    *this = UmpEncoder();
}

void UmpEncoder::takeStatus(std::uint8_t status, std::vector<std::uint32_t>& words) {
    const int count = dataBytesOf(status);
    if (status >= firstRealTime) {
        if (count == 0) {
            words.push_back(shortPacket(status, 0, 0));
        }
        return; // inside any other message, without touching it
    }
    if (status == endOfSysEx && isInSysEx_) {
        putSysEx(true, words);
    }
    reset();
    if (status == startOfSysEx) {
        isInSysEx_ = true;
    } else if (count == 0) {
        words.push_back(shortPacket(status, 0, 0));
    } else if (count > 0) {
        status_ = status;
    }
}

void UmpEncoder::takeData(std::uint8_t data, std::vector<std::uint32_t>& words) {
    if (status_ == 0) {
        return;
    }
    if (dataBytesOf(status_) == 2 && !hasFirstData_) {
        firstData_ = data;
        hasFirstData_ = true;
        return;
    }
    words.push_back(hasFirstData_ ? shortPacket(status_, firstData_, data)
                                  : shortPacket(status_, data, 0));
    hasFirstData_ = false;
    if (status_ >= startOfSysEx) {
        status_ = 0; // only channel messages go on without a new status
    }
}

void UmpEncoder::takeSysExData(std::uint8_t data, std::vector<std::uint32_t>& words) {
    if (heldCount_ == held_.size()) {
        putSysEx(false, words);
    }
    held_[heldCount_] = data;
    ++heldCount_;
}

void UmpEncoder::putSysEx(bool isEnd, std::vector<std::uint32_t>& words) {
    const std::uint32_t status =
        hasStarted_ ? (isEnd ? sysExEnd : sysExContinue) : (isEnd ? sysExComplete : sysExStart);
    std::fill(held_.begin() + static_cast<std::ptrdiff_t>(heldCount_), held_.end(),
              std::uint8_t{0});
    words.push_back((typeSysEx << 28) | (status << 20) |
                    (static_cast<std::uint32_t>(heldCount_) << 16) |
                    (std::uint32_t{held_[0]} << 8) | held_[1]);
    words.push_back((std::uint32_t{held_[2]} << 24) | (std::uint32_t{held_[3]} << 16) |
                    (std::uint32_t{held_[4]} << 8) | held_[5]);
    hasStarted_ = true;
    heldCount_ = 0;
}

std::size_t wordsOfUmp(std::uint32_t firstWord) {
    constexpr std::array<std::uint8_t, 16> words = {1, 1, 1, 2, 2, 4, 1, 1, 2, 2, 2, 3, 3, 4, 4, 4};
    return words[firstWord >> 28];
}

void decodeUmp(std::span<const std::uint32_t> words, std::vector<std::uint8_t>& bytes) {
    while (!words.empty() && wordsOfUmp(words[0]) <= words.size()) {
        const std::uint32_t type = words[0] >> 28;
        if (type == typeSystem || type == typeVoice) {
            decodeShort(words[0], type, bytes);
        } else if (type == typeSysEx) {
            decodeSysEx(words[0], words[1], bytes);
        }
        words = words.subspan(wordsOfUmp(words[0]));
    }
}

std::vector<MIDIEventPacket> packEvents(std::span<const std::uint32_t> words,
                                        std::uint64_t timeStamp) {
    std::vector<MIDIEventPacket> packets;
    bool isNew = true;
    while (!words.empty() && wordsOfUmp(words[0]) <= words.size()) {
        const auto ump = words.first(wordsOfUmp(words[0]));
        if (isNew || packets.back().wordCount + ump.size() > MIDIEventPacket::mostWords) {
            packets.push_back({.timeStamp = timeStamp});
        }
        MIDIEventPacket& packet = packets.back();
        std::copy(ump.begin(), ump.end(), packet.words.begin() + packet.wordCount);
        packet.wordCount += static_cast<std::uint32_t>(ump.size());
        isNew = endsMessage(ump[0]);
        words = words.subspan(ump.size());
    }
    return packets;
}

} // namespace deckmate
