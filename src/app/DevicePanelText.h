// What the device panel writes about the recorder, and what its menus mean.
#pragma once

#include "device/ORLODeviceInfo.h"

#include <cstdint>
#include <string>

namespace deckmate {

inline constexpr auto noCardUsed = "-- GB / -- GB Used";
inline constexpr auto noTime = "--:--:--";

/// "Ver. 1.23" of the last three characters of four. The text ends where one of them is zero, and
/// what can't be shown appears as '?'. ASCII.
std::string versionText(const ORLODeviceInfo& info);
/// Used and total space of the card, or noCardUsed.
std::string usedText(const ORLODeviceInfo& info);
/// The recording time left on the card, or noTime.
std::string remainText(const ORLODeviceInfo& info);

/// The item of the menu "Auto power off" for the recorder's code, and back: the last item is 0.
int autoPowOffIndex(std::uint8_t code);
std::uint8_t autoPowOffCode(int index);

} // namespace deckmate
