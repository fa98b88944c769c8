#include "device/MIDIConnectSequence.h"

#include "device/MIDIManager.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace deckmate {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t identityRequest[] = {0xF0, 0x7E, 0x00, 0x06, 0x01, 0xF7};
constexpr std::uint8_t applicationStart[] = {0xF0, 0x52, 0x00, 0x00, 0x52, 0xF7};
constexpr std::uint8_t versionRequest[] = {0xF0, 0x52, 0x00, 0x00, 0x10, 0x01, 0xF7};
constexpr std::uint8_t cardStateRequest[] = {0xF0, 0x52, 0x00, 0x00, 0x67, 0x01, 0xF7};
constexpr std::uint8_t batteryTypeRequest[] = {0xF0, 0x52, 0x00, 0x00, 0x46, 0x01, 0xF7};
constexpr std::uint8_t autoPowOffRequest[] = {0xF0, 0x52, 0x00, 0x00, 0x46, 0x02, 0xF7};

/// What is waited for. Sequences count in twos, as requests and replies.
enum Step : std::uint64_t {
    identity = 2,
    applicationStarted = 4,
    version = 6,
    cardState = 8,
    batteryType = 10,
    autoPowOff = 12,
    dateSet = 14,
};

bool isReply(Bytes message, std::size_t length, std::uint8_t fourth, std::uint8_t fifth) {
    return message.size() == length && message[4] == fourth && message[5] == fifth;
}

bool isAwaited(std::uint64_t step, Bytes message) {
    switch (step) {
    case identity:
        return message.size() == 14 && message[4] == 0x02;
    case applicationStarted:
        return isReply(message, 6, 0x00, 0x15);
    case version:
        return isReply(message, 10, 0x11, 0x01);
    case cardState:
        return ORLODeviceInfo::isCardState(message);
    case batteryType:
        return isReply(message, 7, 0x45, 0x01);
    case autoPowOff:
        return isReply(message, 7, 0x45, 0x02);
    case dateSet:
        return isReply(message, 6, 0x00, 0x0F);
    default:
        return false;
    }
}

std::tm localNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    tzset(); // localtime_r alone may go on using a time zone that has changed since
    localtime_r(&now, &local);
    return local;
}

std::string fixed(float value, int digits) {
    char text[64];
    const std::to_chars_result result =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, digits);
    return {text, result.ptr};
}

} // namespace

void MIDIConnectSequence::startSequence() {
    markTimeOutWithDescription("CONNECT_SEQUENCE_DEVICE_ID_REQ");
    request(identityRequest, identity);
}

void MIDIConnectSequence::request(Bytes message, std::uint64_t step) {
    // An answer may come before sending returns.
    setSeq(step);
    MIDIManager::get().send(message);
}

void MIDIConnectSequence::receivedMidi(Bytes message) {
    if (!isAwaited(seq(), message)) {
        return;
    }
    cleanTimeOutTimer();
    switch (seq()) {
    case identity:
        std::copy_n(message.begin() + 5, 4, deviceInfo_->device_id.begin());
        std::copy_n(message.begin() + 9, 4, deviceInfo_->version.begin());
        markTimeOutWithDescription("CONNECT_SEQUENCE_PC_APP_START_REQ");
        request(applicationStart, applicationStarted);
        break;
    case applicationStarted:
        request(versionRequest, version);
        break;
    case version:
        std::copy_n(message.begin() + 6, 4, deviceInfo_->version.begin());
        request(cardStateRequest, cardState);
        break;
    case cardState:
        deviceInfo_->storeCardState(message);
        request(batteryTypeRequest, batteryType);
        break;
    case batteryType:
        deviceInfo_->batteryType = message[6];
        request(autoPowOffRequest, autoPowOff);
        break;
    case autoPowOff:
        deviceInfo_->autoPowOffType = message[6];
        request(buildDateMessage(localNow()), dateSet);
        break;
    default:
        dispose();
        break;
    }
}

std::array<std::uint8_t, 14> MIDIConnectSequence::buildDateMessage(const std::tm& local) {
    std::array<std::uint8_t, 14> message = {0xF0, 0x52, 0x00, 0x00, 0x31, 0x00, 0x14,
                                            0x16, 0x01, 0x01, 0x0C, 0x00, 0x00, 0xF7};
    const int year = local.tm_year + 1900;
    message[6] = static_cast<std::uint8_t>(year / 100);
    message[7] = static_cast<std::uint8_t>(year % 100);
    message[8] = static_cast<std::uint8_t>(local.tm_mon + 1);
    message[9] = static_cast<std::uint8_t>(local.tm_mday);
    message[10] = static_cast<std::uint8_t>(local.tm_hour);
    message[11] = static_cast<std::uint8_t>(local.tm_min);
    message[12] = static_cast<std::uint8_t>(local.tm_sec);
    return message;
}

std::string MIDIConnectSequence::buildSizeString(float bytes) {
    const bool isSmall = bytes < 0x1p30F;
    const float value = bytes * (isSmall ? 0x1p-20F : 0x1p-30F);
    const char* const unit = isSmall ? " MB" : " GB";
    if (value < 10) {
        return fixed(value, 2) + unit;
    }
    if (value < 100) {
        return fixed(value, 1) + unit;
    }
    constexpr double most = std::numeric_limits<std::int32_t>::max();
    return std::to_string(static_cast<std::int32_t>(std::min<double>(value, most))) + unit;
}

} // namespace deckmate
