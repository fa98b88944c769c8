// Listens to what the recorder tells of its memory card by itself.
#pragma once

#include "device/MIDISequenceBase.h"
#include "device/ORLODeviceInfo.h"

#include <cstdint>
#include <memory>
#include <string>

namespace deckmate {

/// What runs while nothing else does. It waits for nothing, so that any other sequence may begin at
/// once, and is always completed: its completion is called after every message.
class MIDIRecvSDCardRemain final : public MIDISequenceBase {
public:
    void startSequence() override;
    void receivedMidi(std::span<const std::uint8_t> message) override;
    void sequenceTimeOut(const std::string& description) override;
    /// Stops listening until the next start.
    void dispose() override;
    void setDeviceInfo(std::shared_ptr<ORLODeviceInfo> deviceInfo) {
        deviceInfo_ = std::move(deviceInfo);
    }
    std::uint64_t seq() const { return seq_; }

private:
    std::uint64_t seq_ = 0; ///< 1 while it listens
    std::shared_ptr<ORLODeviceInfo> deviceInfo_;
};

} // namespace deckmate
