// Finds the recorder among the MIDI endpoints, connects to it, and carries messages both ways.
#pragma once

#include "platform/Midi.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace deckmate {

class Timer;

/// Hears of the link. May be called on any thread. May empty MIDIManager::s_midi() inside any of
/// these.
class MIDIManagerCB {
public:
    MIDIManagerCB() = default;
    virtual ~MIDIManagerCB() = default;
    MIDIManagerCB(const MIDIManagerCB&) = delete;
    MIDIManagerCB& operator=(const MIDIManagerCB&) = delete;
    MIDIManagerCB(MIDIManagerCB&&) = delete;
    MIDIManagerCB& operator=(MIDIManagerCB&&) = delete;

    /// Both endpoints are there. The one who hears it decides whether to connect.
    virtual void MIDIManagerFound() = 0;
    /// The recorder has had its second to settle: requests may be sent.
    virtual void MIDIManagerConnected() = 0;
    virtual void MIDIManagerDisconnected() = 0;
    /// Words of Universal MIDI Packets, where the MIDI system has event lists.
    virtual void MIDIManagerReceivedData(const MIDIEventPacket& packet) = 0;
    /// Bytes, where it has not. `isLast`: the last packet of a list.
    virtual void MIDIManagerReceivedData_iOS13(const MIDIPacket& packet, bool isLast) = 0;
};

/// The link to the recorder: state, endpoints and ports. What is said over it is the sequences'.
/// Failures show by nothing arriving, and nowhere else.
///
///     MIDIManager& manager = MIDIManager::get();
///     manager.setDelegate(&window);   // whose MIDIManagerFound() calls connect()
///     manager.scanOrloDevice();
///
/// Thread: main.
class MIDIManager {
public:
    enum State : std::uint64_t {
        disconnected = 0,
        scan = 1, ///< never entered
        found = 2,
        connecting = 3,
        settling = 4, ///< ports are open, the recorder is given a second
        connected = 5,
    };

    /// The one there is; made by the first call.
    static MIDIManager& get();
    /// Null before that. To be emptied before the main loop and the MIDI system go.
    static std::unique_ptr<MIDIManager>& s_midi();

    ~MIDIManager();
    MIDIManager(const MIDIManager&) = delete;
    MIDIManager& operator=(const MIDIManager&) = delete;
    MIDIManager(MIDIManager&&) = delete;
    MIDIManager& operator=(MIDIManager&&) = delete;

    /// Looks for the recorder, and tells the delegate if it has come or gone.
    void scanOrloDevice();
    /// Opens the ports to the recorder that was found, in state `found` only.
    void connect();
    /// Gives up the link if there is one.
    void DeviceDisconnected();
    /// Closes ports and forgets endpoints, if the reading side was connected.
    void clean_up();

    /// Sends a whole message, in whichever form the MIDI system takes. Whether it arrived shows by
    /// the reply.
    void send(std::span<const std::uint8_t> bytes);
    void sendForMacOS11(std::span<const std::uint8_t> bytes) const;
    void sendForMacOS10(std::span<const std::uint8_t> bytes);
    void receiveForMacOS11(const MIDIEventList& events);

    std::uint64_t state() const { return state_; }
    void changeStateTo(std::uint64_t state) { state_ = state; }
    /// Empty for `settling` and for what is no state.
    static std::string stateToString(std::uint64_t state);

    /// Not owned; null for none.
    MIDIManagerCB* delegate() const { return delegate_; }
    void setDelegate(MIDIManagerCB* delegate) { delegate_ = delegate; }

private:
    MIDIManager();

    static void NotifyStatusFromK22CB(MidiNotice notice, MIDIManager& manager);
    static void receiveForMacOS10(const MIDIPacketList& packets, MIDIManager& manager);
    /// Finds the first endpoint whose name begins as the recorder's, and keeps it for connect().
    bool isHasWritingEndpoint();
    bool isHasReadingEndpoint();
    MidiStatus buildPortForReadDataFromHW(MidiRef client);
    void startTimerConnected();
    void stopTimerConnected();

    MidiRef client_ = 0;
    MidiRef write_endpoint_ = 0;
    MidiRef read_endpoint_ = 0;
    MidiRef writePort_ = 0;
    MidiRef readPort_ = 0;
    MidiRef write_endpoint_tmp_ = 0; ///< found, but not in use yet
    MidiRef read_endpoint_tmp_ = 0;
    std::uint64_t state_ = disconnected;
    std::unique_ptr<Timer> timer_connected_;
    std::array<std::uint8_t, 10000> packetBuffer_ = {};
    MIDIManagerCB* delegate_ = nullptr;
    /// Expires with this, which may be inside any call to the delegate.
    std::shared_ptr<MIDIManager*> life_ = std::make_shared<MIDIManager*>(this);
};

/// The endpoint's display name; "Unknown name" if it has none.
std::string NameOfEndpoint(MidiRef endpoint);

} // namespace deckmate
