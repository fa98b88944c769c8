// The link to a recorder, for programs that ask it something.
#pragma once

#include "device/MIDIManager.h"
#include "device/MIDISequenceManager.h"

#include <functional>

namespace deckmate::tools {

/// Connects by itself whenever a recorder is there, and gets to know it. One at a time.
/// Thread: main.
class DeviceLink final : public MIDIManagerCB {
public:
    /// `changed` is called when the recorder has come, has gone, or has told something.
    explicit DeviceLink(std::function<void()> changed);
    ~DeviceLink() override;
    DeviceLink(const DeviceLink&) = delete;
    DeviceLink& operator=(const DeviceLink&) = delete;
    DeviceLink(DeviceLink&&) = delete;
    DeviceLink& operator=(DeviceLink&&) = delete;

    /// A recorder is there, connected or about to be.
    static bool isThere() { return MIDIManager::get().state() != MIDIManager::disconnected; }
    /// It has answered all questions since it came.
    bool isKnown() const { return isKnown_; }
    /// It is not known and will not be: it didn't answer in time.
    bool isSilent() const;

    void MIDIManagerFound() override;
    void MIDIManagerConnected() override;
    void MIDIManagerDisconnected() override;
    void MIDIManagerReceivedData(const MIDIEventPacket& packet) override;
    void MIDIManagerReceivedData_iOS13(const MIDIPacket& packet, bool isLast) override;

private:
    std::function<void()> changed_;
    bool isAsked_ = false;
    bool isKnown_ = false;
    bool isAnswer_ = false; ///< what is being received
};

} // namespace deckmate::tools
