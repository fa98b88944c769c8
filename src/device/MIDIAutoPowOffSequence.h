// Tells the recorder when to switch itself off.
#pragma once

#include "device/MIDISequenceBase.h"

#include <cstdint>

namespace deckmate {

class MIDIAutoPowOffSequence final : public MIDIStepSequence {
public:
    explicit MIDIAutoPowOffSequence(std::uint8_t param) : param_(param) {}

    void startSequence() override;
    void receivedMidi(std::span<const std::uint8_t> message) override;

private:
    std::uint8_t param_; ///< 1, 2, 3 for the first three items of the menu, 0 for the fourth
};

} // namespace deckmate
