#include "app/DevicePanelText.h"

#include <cstdio>

namespace deckmate {

namespace {

constexpr int lastItem = 3;

bool hasCard(const ORLODeviceInfo& info) {
    return info.sdExist == 1;
}

} // namespace

std::string versionText(const ORLODeviceInfo& info) {
    std::string text = "Ver. ";
    const auto append = [&text](char character) {
        const bool isVisible = character >= 0x20 && character < 0x7F;
        text += isVisible ? character : '?';
    };
    for (std::size_t i = 1; i < info.version.size() && info.version[i] != '\0'; ++i) {
        append(info.version[i]);
        if (i == 1) {
            text += '.';
        }
    }
    return text;
}

std::string usedText(const ORLODeviceInfo& info) {
    return hasCard(info) ? info.sdUsedSize + " / " + info.sdMaxSize + " Used" : noCardUsed;
}

std::string remainText(const ORLODeviceInfo& info) {
    if (!hasCard(info)) {
        return noTime;
    }
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", info.sdRemaining[0], info.sdRemaining[1],
                  info.sdRemaining[2]);
    return text;
}

int autoPowOffIndex(std::uint8_t code) {
    return code >= 1 ? code - 1 : lastItem;
}

std::uint8_t autoPowOffCode(int index) {
    return index >= 0 && index < lastItem ? static_cast<std::uint8_t>(index + 1) : 0;
}

} // namespace deckmate
