// What all back ends of Midi have in common: clients, ports, connections, and the two shapes of
// messages.
#pragma once

#include "platform/Midi.h"
#include "platform/UmpTranslation.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace deckmate {

/// Keeps the books and translates, so that a back end only has to move bytes. It says which
/// endpoints there are, overrides what it needs of the protected operations, and calls notify() and
/// received().
///
/// Thread: main.
class MidiBackend : public Midi {
public:
    MidiRef createClient(std::string_view name, NoticeReader reader) override;
    MidiStatus createInputPort(MidiRef client, std::string_view name, PacketReader reader,
                               MidiRef& port) override;
    MidiStatus createInputPort(MidiRef client, std::string_view name, EventReader reader,
                               MidiRef& port) override;
    MidiStatus createOutputPort(MidiRef client, std::string_view name, MidiRef& port) override;
    MidiStatus connectSource(MidiRef port, MidiRef source) override;
    MidiStatus disconnectSource(MidiRef port, MidiRef source) override;
    MidiStatus disposePort(MidiRef port) override;
    MidiStatus send(MidiRef port, MidiRef destination, const MIDIPacketList& packets) override;
    MidiStatus send(MidiRef port, MidiRef destination, const MIDIEventList& events) override;
    MidiStatus flushOutput(MidiRef endpoint) override;

protected:
    enum class Direction { input, output };

    // For the back end to override. All references are to what exists.

    /// The program's name for itself, given with each client.
    virtual void named(std::string_view /*name*/) {}
    virtual MidiStatus openPort(MidiRef port, std::string_view name, Direction direction);
    virtual void closePort(MidiRef /*port*/) {}
    virtual MidiStatus connect(MidiRef port, MidiRef source);
    virtual void disconnect(MidiRef /*port*/, MidiRef /*source*/) {}
    /// Bytes of messages, cut anywhere. Never empty.
    virtual MidiStatus transmit(MidiRef port, MidiRef destination,
                                std::span<const std::uint8_t> bytes) = 0;
    virtual void flush(MidiRef /*endpoint*/) {}

    // For the back end to call.

    /// A reference that was never used.
    MidiRef nextRef() { return ++lastRef_; }
    /// Whether this one was ever given out.
    bool wasGiven(MidiRef ref) const { return ref != 0 && ref <= lastRef_; }
    bool isOutputPort(MidiRef ref) const;
    bool isSource(MidiRef ref) const;
    bool isDestination(MidiRef ref) const;
    /// Tells every client. From the main loop.
    void notify(MidiNotice notice);
    /// Hands bytes to the port, if it is there and connected to the source.
    void received(MidiRef port, MidiRef source, std::span<const std::uint8_t> bytes);
    /// Hands a list as it is to each port for such lists that is connected to the source.
    void receivedList(MidiRef source, const MIDIPacketList& packets);
    void receivedList(MidiRef source, const MIDIEventList& events);
    /// What is received next doesn't continue what was received before.
    void inputLost();
    /// The endpoint has gone, and its connections with it.
    void forgetEndpoint(MidiRef endpoint);
    /// The input ports that are connected to the source, in the order in which they were made.
    std::vector<MidiRef> portsOf(MidiRef source) const;
    std::size_t numberOfPorts() const { return ports_.size(); }
    std::size_t numberOfConnections() const;

private:
    struct Port {
        Direction direction = Direction::output;
        PacketReader packets = {}; ///< of input ports one of the two
        EventReader events = {};
        std::map<MidiRef, UmpEncoder> connections = {}; ///< by source
    };

    MidiStatus addPort(MidiRef client, std::string_view name, Port port, MidiRef& ref);
    /// Null unless there is such a port.
    std::shared_ptr<Port> findPort(MidiRef ref, Direction direction) const;

    MidiRef lastRef_ = 0;
    std::map<MidiRef, NoticeReader> clients_;
    std::map<MidiRef, std::shared_ptr<Port>> ports_; ///< shared with a call to its reader
};

} // namespace deckmate
