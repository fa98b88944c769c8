// Tells the recorder which batteries it runs on.
#pragma once

#include "device/MIDISequenceBase.h"

#include <cstdint>

namespace deckmate {

class MIDIBatteryTypeSequence final : public MIDIStepSequence {
public:
    explicit MIDIBatteryTypeSequence(std::uint8_t param) : param_(param) {}

    void startSequence() override;
    void receivedMidi(std::span<const std::uint8_t> message) override;

private:
    std::uint8_t param_; ///< the index of the menu's item
};

} // namespace deckmate
