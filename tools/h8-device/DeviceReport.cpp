#include "DeviceReport.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace deckmate::tools {

namespace {

bool isVisible(char character) {
    return character >= 0x20 && character < 0x7F;
}

std::string versionText(const ORLODeviceInfo& info) {
    std::string text = {info.version[1], '.', info.version[2], info.version[3]};
    std::replace_if(
        text.begin(), text.end(), [](char c) { return !isVisible(c); }, '?');
    return text;
}

std::string remainingText(const ORLODeviceInfo& info) {
    char text[20];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", info.sdRemaining[0], info.sdRemaining[1],
                  info.sdRemaining[2]);
    return text;
}

std::string identityText(const ORLODeviceInfo& info) {
    char text[20];
    std::snprintf(text, sizeof text, "%02X %02X %02X %02X", info.device_id[0], info.device_id[1],
                  info.device_id[2], info.device_id[3]);
    return text;
}

} // namespace

std::vector<std::pair<std::string, std::string>> reportLines(const ORLODeviceInfo& info) {
    const std::string card = info.sdExist == 0 ? "none"
                                               : info.sdUsedSize + " of " + info.sdMaxSize +
                                                     " used, " + remainingText(info) + " left";
    return {{"identity", identityText(info)},
            {"version", versionText(info)},
            {"card", card},
            {"battery type", std::to_string(info.batteryType)},
            {"auto power-off", std::to_string(info.autoPowOffType)}};
}

std::string reportJson(const ORLODeviceInfo& info) {
    using Json = nlohmann::ordered_json;
    const bool hasVersion = std::all_of(info.version.begin() + 1, info.version.end(), isVisible);
    const Json card = info.sdExist == 0 ? Json()
                                        : Json{{"used", info.sdUsedSize},
                                               {"capacity", info.sdMaxSize},
                                               {"remaining", remainingText(info)}};
    const Json report = {{"identity", info.device_id},
                         {"version", hasVersion ? Json(versionText(info)) : Json()},
                         {"card", card},
                         {"battery_type", info.batteryType},
                         {"auto_power_off", info.autoPowOffType}};
    return report.dump();
}

} // namespace deckmate::tools
