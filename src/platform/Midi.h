// The MIDI endpoints of this machine: who is there, receiving from them and sending to them.
#pragma once

#include "platform/MidiPackets.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace deckmate {

/// Stands for a client, a port or an endpoint; 0 for none. Never used twice.
using MidiRef = std::uint32_t;
/// 0 for success.
using MidiStatus = std::int32_t;

enum MidiError : MidiStatus {
    midiUnknownObject = -1, ///< a reference to nothing, or to an object of another kind
    midiNotAvailable = -2,  ///< no sequencer, or it refuses
    midiSendFailed = -3,    ///< some or all of the message didn't leave
};

/// What a client hears of: of each endpoint of another program or device that comes or goes. The
/// two endpoints of a port have both come or gone at the first notice of either.
enum class MidiNotice : std::int32_t {
    setupChanged = 1,
    objectAdded = 2,
    objectRemoved = 3,
    propertyChanged = 4,
};

/// The MIDI system. A source is an endpoint to receive from, a destination one to send to; both
/// have an index below the present number of them, in the order in which they appeared.
///
///     Midi& midi = Midi::current();
///     const MidiRef client = midi.createClient("Deckmate", [](MidiNotice notice) { rescan(); });
///     MidiRef port = 0;
///     if (midi.createInputPort(client, "Input", takePackets, port) == 0) {
///         midi.connectSource(port, midi.source(0));
///     }
///
/// Exactly one exists while anything of this program runs; whoever made it outlives its users.
/// Where there is no sequencer there are no endpoints, and nothing fails but sending.
///
/// Thread: main, and so are all calls it makes. These come from the main loop, never from inside
/// one of these operations, except that in-process back ends may deliver what is sent at once.
class Midi {
public:
    using NoticeReader = std::function<void(MidiNotice notice)>;
    /// Packets in the order of arrival. A message may be split over packets and lists.
    using PacketReader = std::function<void(const MIDIPacketList& packets)>;
    /// Likewise, each packet holding one or more whole Universal MIDI Packets of MIDI 1.0.
    using EventReader = std::function<void(const MIDIEventList& events)>;

    /// Makes this the system that current() gives.
    Midi();
    virtual ~Midi();
    Midi(const Midi&) = delete;
    Midi& operator=(const Midi&) = delete;
    Midi(Midi&&) = delete;
    Midi& operator=(Midi&&) = delete;

    /// The one that exists. Thread: any.
    static Midi& current();

    /// Whether ports that take and give event lists are to be used, instead of packet lists.
    virtual bool hasEventLists() const = 0;

    virtual MidiRef createClient(std::string_view name, NoticeReader reader) = 0;

    virtual std::size_t numberOfSources() const = 0;
    virtual std::size_t numberOfDestinations() const = 0;
    /// 0 beyond the number of them. A device's source and destination are two endpoints.
    virtual MidiRef source(std::size_t index) const = 0;
    virtual MidiRef destination(std::size_t index) const = 0;
    /// As the user knows it, in bytes of any kind; nothing for an endpoint that has gone.
    virtual std::optional<std::string> displayName(MidiRef endpoint) const = 0;

    /// On failure `port` stays as it is.
    virtual MidiStatus createInputPort(MidiRef client, std::string_view name, PacketReader reader,
                                       MidiRef& port) = 0;
    virtual MidiStatus createInputPort(MidiRef client, std::string_view name, EventReader reader,
                                       MidiRef& port) = 0;
    virtual MidiStatus createOutputPort(MidiRef client, std::string_view name, MidiRef& port) = 0;
    /// From now on the port receives what the source sends.
    virtual MidiStatus connectSource(MidiRef port, MidiRef source) = 0;
    virtual MidiStatus disconnectSource(MidiRef port, MidiRef source) = 0;
    /// Nothing is received from the port any more, not even what has arrived already.
    virtual MidiStatus disposePort(MidiRef port) = 0;

    /// Never waits for the receiver. A device that is too slow for all of it may lose the rest
    /// without a failure: some 4 kilobytes at a time are safe.
    virtual MidiStatus send(MidiRef port, MidiRef destination, const MIDIPacketList& packets) = 0;
    virtual MidiStatus send(MidiRef port, MidiRef destination, const MIDIEventList& events) = 0;
    /// Drops what was sent to the endpoint and has not left this program.
    virtual MidiStatus flushOutput(MidiRef endpoint) = 0;
};

} // namespace deckmate
