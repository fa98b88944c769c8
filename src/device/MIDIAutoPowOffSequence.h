// Tells the recorder when to switch itself off.
#pragma once

#include "device/MIDISettingSequence.h"

#include <cstdint>

namespace deckmate {

class MIDIAutoPowOffSequence final : public MIDISettingSequence {
public:
    /// `param`: 1, 2, 3 for the first three items of the menu, 0 for the fourth.
    explicit MIDIAutoPowOffSequence(std::uint8_t param)
        : MIDISettingSequence({0x02, 0x11, "CONTROL_SEQUENCE_APO_CHG_REQ"}, param) {}
};

} // namespace deckmate
