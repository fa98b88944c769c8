// What is known of a recorder, for people and for programs.
#pragma once

#include "device/ORLODeviceInfo.h"

#include <string>
#include <utility>
#include <vector>

namespace deckmate::tools {

/// Names and values, in their order; characters that can't be shown appear as '?'.
std::vector<std::pair<std::string, std::string>> reportLines(const ORLODeviceInfo& info);

/// The same as one JSON object in a line: identity (four numbers), version (null where it can't be
/// shown), card (null where there is none), battery_type, auto_power_off.
std::string reportJson(const ORLODeviceInfo& info);

} // namespace deckmate::tools
