// Gets to know the recorder when it has been connected, and sets its clock.
#pragma once

#include "device/MIDISequenceBase.h"
#include "device/ORLODeviceInfo.h"

#include <array>
#include <ctime>
#include <memory>
#include <string>

namespace deckmate {

/// Seven requests, each sent when the one before has been answered: identity, application start,
/// version, card state, battery type, automatic power-off, date and time. Only the first two have a
/// time-out: a recorder that stops answering later is waited for without end.
class MIDIConnectSequence final : public MIDIStepSequence {
public:
    void startSequence() override;
    void receivedMidi(std::span<const std::uint8_t> message) override;
    /// Where all that is learnt goes.
    void setDeviceInfo(std::shared_ptr<ORLODeviceInfo> deviceInfo) {
        deviceInfo_ = std::move(deviceInfo);
    }

    /// A number of bytes in MB or GB, with a point whatever the locale.
    static std::string buildSizeString(float bytes);
    /// The message that sets the recorder's clock.
    static std::array<std::uint8_t, 14> buildDateMessage(const std::tm& local);

private:
    void request(std::span<const std::uint8_t> message, std::uint64_t step);

    std::shared_ptr<ORLODeviceInfo> deviceInfo_;
};

} // namespace deckmate
