// Changes a setting of the recorder.
#pragma once

#include "device/MIDISequenceBase.h"

#include <cstdint>
#include <string>

namespace deckmate {

/// Sends a value and waits for its acknowledgement. The base of the sequences for each setting.
class MIDISettingSequence : public MIDIStepSequence {
public:
    void startSequence() final;
    void receivedMidi(std::span<const std::uint8_t> message) final;

protected:
    /// How the setting is told and acknowledged.
    struct Setting {
        std::uint8_t code;            ///< in the request
        std::uint8_t acknowledgement; ///< in the reply
        const char* timeOut;          ///< what its time-out is called
    };

    MIDISettingSequence(const Setting& setting, std::uint8_t param)
        : setting_(setting), param_(param) {}

private:
    Setting setting_;
    std::uint8_t param_;
};

} // namespace deckmate
