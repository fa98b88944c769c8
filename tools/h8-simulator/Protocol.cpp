#include "h8-simulator/Protocol.h"

#include "h8-simulator/CardSize.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>

namespace deckmate::tools {

namespace {

constexpr std::uint8_t start = 0xF0;
constexpr std::uint8_t end = 0xF7;
constexpr std::uint8_t universal = 0x7E;
constexpr std::uint8_t maker = 0x52;
constexpr std::uint8_t everyDevice = 0x7F;
constexpr std::size_t headerSize = 4;
constexpr std::array<std::uint8_t, headerSize> universalHeader = {start, universal, 0x00, 0x06};
constexpr std::array<std::uint8_t, headerSize> makerHeader = {start, maker, 0x00, 0x00};

/// Codes from position 4 on, then so many parameters, then F7.
struct Shape {
    Kind kind;
    const char* meaning;
    std::uint8_t family;
    std::array<std::uint8_t, 2> codes;
    std::size_t numberOfCodes;
    std::size_t numberOfParameters;

    std::size_t size() const { return headerSize + numberOfCodes + numberOfParameters + 1; }
};

constexpr std::array shapes = {
    Shape{Kind::identityRequest, "identity request", universal, {0x01}, 1, 0},
    Shape{Kind::identityReply, "identity", universal, {0x02}, 1, 9},
    Shape{Kind::applicationStart, "application start", maker, {0x52}, 1, 0},
    Shape{Kind::applicationStartDone, "application start acknowledged", maker, {0, 0x15}, 2, 0},
    Shape{Kind::versionRequest, "version request", maker, {0x10, 0x01}, 2, 0},
    Shape{Kind::versionReply, "version", maker, {0x11, 0x01}, 2, 4},
    Shape{Kind::cardRequest, "card state request", maker, {0x67, 0x01}, 2, 0},
    Shape{Kind::cardReport, "card state", maker, {0x67, 0x00}, 2, 24},
    Shape{Kind::batteryRequest, "battery type request", maker, {0x46, 0x01}, 2, 0},
    Shape{Kind::batteryReply, "battery type", maker, {0x45, 0x01}, 2, 1},
    Shape{Kind::powerOffRequest, "auto power-off request", maker, {0x46, 0x02}, 2, 0},
    Shape{Kind::powerOffReply, "auto power-off", maker, {0x45, 0x02}, 2, 1},
    Shape{Kind::setClock, "set date and time", maker, {0x31, 0x00}, 2, 7},
    Shape{Kind::clockDone, "date and time acknowledged", maker, {0x00, 0x0F}, 2, 0},
    Shape{Kind::setBattery, "set battery type", maker, {0x31, 0x01}, 2, 1},
    Shape{Kind::batteryDone, "battery type acknowledged", maker, {0x00, 0x10}, 2, 0},
    Shape{Kind::setPowerOff, "set auto power-off", maker, {0x31, 0x02}, 2, 1},
    Shape{Kind::powerOffDone, "auto power-off acknowledged", maker, {0x00, 0x11}, 2, 0},
};

bool hasHeader(ByteView message, std::uint8_t family) {
    if (family == maker) {
        return std::equal(makerHeader.begin(), makerHeader.end(), message.begin());
    }
    // To this device or to whichever there is.
    return message[0] == start && message[1] == universal &&
           (message[2] == universalHeader[2] || message[2] == everyDevice) &&
           message[3] == universalHeader[3];
}

bool isOf(ByteView message, const Shape& shape) {
    return message.size() == shape.size() && message.back() == end &&
           hasHeader(message, shape.family) &&
           std::equal(shape.codes.begin(),
                      shape.codes.begin() + static_cast<std::ptrdiff_t>(shape.numberOfCodes),
                      message.begin() + headerSize);
}

const Shape* shapeOf(ByteView message) {
    const auto* found = std::find_if(shapes.begin(), shapes.end(),
                                     [&](const Shape& shape) { return isOf(message, shape); });
    return found == shapes.end() ? nullptr : found;
}

[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...) {
    std::array<char, 160> text = {};
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return text.data();
}

std::string cardText(ByteView card) {
    if (card[0] == 0) {
        return "no card";
    }
    const auto used = card.subspan<4, numberOfDigits>();
    const auto capacity = card.subspan<4 + numberOfDigits, numberOfDigits>();
    return formatted("card %d, %02d:%02d:%02d remaining, %llu of %llu bytes used", card[0], card[1],
                     card[2], card[3], static_cast<unsigned long long>(bytesOf(used)),
                     static_cast<unsigned long long>(bytesOf(capacity)));
}

std::string valuesOf(Kind kind, ByteView parameters) {
    switch (kind) {
    case Kind::identityReply:
        return hexOf(parameters.first(4)) + ", version " + versionText(parameters.subspan(4, 4));
    case Kind::versionReply:
        return versionText(parameters);
    case Kind::cardReport:
        return cardText(parameters);
    case Kind::setClock:
        return clockText(parameters);
    default:
        return parameters.empty() ? "" : std::to_string(parameters[0]);
    }
}

} // namespace

Kind kindOf(ByteView message) {
    const Shape* shape = shapeOf(message);
    return shape == nullptr ? Kind::unknown : shape->kind;
}

ByteView parametersOf(ByteView message) {
    const Shape* shape = shapeOf(message);
    return message.subspan(headerSize + shape->numberOfCodes, shape->numberOfParameters);
}

Bytes makeMessage(Kind kind, ByteView parameters) {
    const Shape& shape = *std::find_if(shapes.begin(), shapes.end(),
                                       [&](const Shape& one) { return one.kind == kind; });
    Bytes message;
    message.reserve(shape.size());
    for (const std::uint8_t byte : shape.family == universal ? universalHeader : makerHeader) {
        message.push_back(byte);
    }
    for (std::size_t i = 0; i < shape.numberOfCodes; ++i) {
        message.push_back(shape.codes[i]);
    }
    message.insert(message.end(), parameters.begin(), parameters.end());
    message.push_back(end);
    return message;
}

std::string meaningOf(ByteView message) {
    const Shape* shape = shapeOf(message);
    if (shape == nullptr) {
        return "unknown";
    }
    const std::string values = valuesOf(shape->kind, parametersOf(message));
    return values.empty() ? shape->meaning : shape->meaning + (": " + values);
}

std::string hexOf(ByteView bytes, std::size_t most) {
    std::string text;
    for (const std::uint8_t byte : bytes.first(std::min(most, bytes.size()))) {
        text += formatted(text.empty() ? "%02X" : " %02X", byte);
    }
    if (bytes.size() > most) {
        text += formatted(" ... (%zu bytes)", bytes.size());
    }
    return text;
}

std::string clockText(ByteView clock) {
    return formatted("%02d%02d-%02d-%02d %02d:%02d:%02d", clock[0], clock[1], clock[2], clock[3],
                     clock[4], clock[5], clock[6]);
}

std::string versionText(ByteView version) {
    const bool isText = std::all_of(version.begin(), version.end(), [](std::uint8_t character) {
        return character > ' ' && character < 0x7F;
    });
    return isText ? std::string(version.begin(), version.end()) : hexOf(version);
}

} // namespace deckmate::tools
