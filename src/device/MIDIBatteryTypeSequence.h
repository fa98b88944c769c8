// Tells the recorder which batteries it runs on.
#pragma once

#include "device/MIDISettingSequence.h"

#include <cstdint>

namespace deckmate {

class MIDIBatteryTypeSequence final : public MIDISettingSequence {
public:
    /// `param`: the index of the menu's item.
    explicit MIDIBatteryTypeSequence(std::uint8_t param)
        : MIDISettingSequence({0x01, 0x10, "CONTROL_SEQUENCE_BT_CHG_REQ"}, param) {}
};

} // namespace deckmate
