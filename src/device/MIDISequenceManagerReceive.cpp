#include "device/MIDICommon.h"
#include "device/MIDISequenceManager.h"
#include "platform/StandardStreams.h"

#include <algorithm>
#include <string>

#include <unistd.h>

namespace deckmate {

namespace {

using Manager = MIDISequenceManager;

/// The message in the making, or the last one.
std::array<std::uint8_t, Manager::capacity> S_MESSAGE_BYTE_ARR_FROM_K22 = {};
std::uint32_t s_buffer_idx = 0;   ///< how many of its bytes count
bool s_buffer_overflowed = false; ///< bytes were dropped since the message began

void clearBuffer() {
    S_MESSAGE_BYTE_ARR_FROM_K22.fill(0);
    s_buffer_idx = 0;
    s_buffer_overflowed = false;
}

void append(std::uint8_t byte) {
    if (s_buffer_idx < Manager::capacity) {
        S_MESSAGE_BYTE_ARR_FROM_K22[s_buffer_idx++] = byte;
    } else {
        s_buffer_overflowed = true;
    }
}

void beginSysEx() {
    clearBuffer();
    append(0xF0);
}

/// Bytes of a MIDI 1.0 message with its status byte.
std::uint32_t messageLength(std::uint32_t status) {
    status |= 0x80;
    if (status < 0xF0) {
        return status >= 0xC0 && status < 0xE0 ? 2 : 3;
    }
    switch (status) {
    case 0xF1:
    case 0xF3:
        return 2;
    case 0xF2:
        return 3;
    default:
        return 1;
    }
}

void logMessage() {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string line = "LOG GL RECV <--- HW: ";
    for (const std::uint8_t byte : Manager::message()) {
        line += {digits[byte >> 4], digits[byte & 0xF], ','};
    }
    line += "F7,\n\n";
    writeToStream(STDOUT_FILENO, line);
}

} // namespace

std::span<const std::uint8_t> MIDISequenceManager::message() {
    return std::span(S_MESSAGE_BYTE_ARR_FROM_K22).first(s_buffer_idx);
}

void MIDISequenceManager::receivedMidi(const MIDIEventPacket& packet) {
    notifyNewData(convertMidiPacket2ByteArr(packet));
}

void MIDISequenceManager::receivedMidi_iOS13(const MIDIPacket& packet, bool isLast) {
    notifyNewData(storeToBuffer(isLast, packet));
}

std::uint32_t MIDISequenceManager::count_word_in_message(std::uint32_t word) {
    constexpr std::array<std::uint8_t, 16> words = {1, 1, 1, 2, 2, 4, 1, 1, 2, 2, 2, 3, 3, 4, 4, 4};
    return words[MIDICommon::messageType(word)];
}

void MIDISequenceManager::midi2ToMidi1DefaultTranslation(const MessageInfo& /*info*/) {}

void MIDISequenceManager::insert_to_buffer(std::span<const std::uint32_t, 2> words) {
    const std::uint32_t count = MIDICommon::messageChannel(words[0]);
    if (count < 1 || count > 6) {
        return;
    }
    const std::array<std::uint32_t, 6> bytes = {words[0] >> 8,  words[0],      words[1] >> 24,
                                                words[1] >> 16, words[1] >> 8, words[1]};
    for (std::uint32_t i = 0; i < count; ++i) {
        append(static_cast<std::uint8_t>(bytes[i]));
    }
}

void MIDISequenceManager::processMessage1(std::uint32_t word) {
    // Without clearing the rest. The leading F0 gives it the form of the other messages.
    const std::array<std::uint8_t, 4> bytes = {0xF0, static_cast<std::uint8_t>(word >> 16),
                                               static_cast<std::uint8_t>(word >> 8),
                                               static_cast<std::uint8_t>(word)};
    std::copy(bytes.begin(), bytes.end(), S_MESSAGE_BYTE_ARR_FROM_K22.begin());
    s_buffer_idx = messageLength(bytes[1]) + 1;
    s_buffer_overflowed = false;
}

bool MIDISequenceManager::processSysEx(std::span<const std::uint32_t, 2> words) {
    switch (MIDICommon::messageStatus(words[0])) {
    case 0: // complete
        beginSysEx();
        insert_to_buffer(words);
        return true;
    case 1: // start
        beginSysEx();
        insert_to_buffer(words);
        return false;
    case 2: // continue
        insert_to_buffer(words);
        return false;
    case 3: // end
        insert_to_buffer(words);
        return !s_buffer_overflowed;
    default:
        return false;
    }
}

bool MIDISequenceManager::convetMessageInfo(const MessageInfo& info) {
    const std::uint32_t type = MIDICommon::messageType(info.words[0]);
    if (info.count == 2 && type == 3) {
        return processSysEx(std::span(info.words).first<2>());
    }
    if (info.count == 1 && type != 0) {
        processMessage1(info.words[0]);
        return true;
    }
    return false;
}

bool MIDISequenceManager::convertMidiPacket2ByteArr(const MIDIEventPacket& packet) {
    bool isComplete = false;
    MessageInfo info;
    std::uint32_t wanted = 0;
    const std::size_t count = std::min<std::size_t>(packet.wordCount, MIDIEventPacket::mostWords);
    for (const std::uint32_t word : std::span(packet.words).first(count)) {
        if (info.count == 0) {
            wanted = count_word_in_message(word);
            if (wanted > 3) {
                break;
            }
        }
        info.words[info.count++] = word;
        if (info.count == wanted) {
            midi2ToMidi1DefaultTranslation(info);
            isComplete = isComplete || convetMessageInfo(info);
            info.count = 0;
        }
    }
    return isComplete;
}

bool MIDISequenceManager::storeToBuffer(bool /*isLast*/, const MIDIPacket& packet) {
    if (packet.length == 0) {
        return false;
    }
    if (packet.data[0] == 0xF0) {
        clearBuffer();
        is_message_received_finish_ios13_ = false;
    } else if (is_message_received_finish_ios13_) {
        // The beginning was lost.
        beginSysEx();
        is_message_received_finish_ios13_ = false;
    }
    const std::size_t length = std::min<std::size_t>(packet.length, MIDIPacket::mostBytes);
    const bool isEnd = packet.length == length && packet.data[length - 1] == 0xF7;
    const auto data = std::span(packet.data).first(isEnd ? length - 1 : length);
    for (const std::uint8_t byte : data) {
        append(byte);
    }
    // Bytes that the packet claims beyond what it can hold count all the same.
    for (std::size_t i = length; i < packet.length; ++i) {
        append(0);
    }
    if (!isEnd) {
        return false;
    }
    is_message_received_finish_ios13_ = true;
    if (s_buffer_overflowed) {
        return false;
    }
    logMessage();
    return true;
}

} // namespace deckmate
