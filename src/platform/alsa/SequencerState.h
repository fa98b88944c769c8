// Which MIDI endpoints there are, by what the ALSA sequencer tells.
#pragma once

#include "platform/Midi.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace deckmate {

/// A port's place in the sequencer, which is given to others once the port has gone.
struct SequencerAddress {
    int client = 0;
    int port = 0;

    bool operator==(const SequencerAddress&) const = default;
    bool operator<(const SequencerAddress& other) const {
        return std::tie(client, port) < std::tie(other.client, other.port);
    }
};

/// What a port can do: the bits of the sequencer's port capabilities that count here.
namespace sequencerPort {
inline constexpr unsigned canRead = 1U << 0;
inline constexpr unsigned canWrite = 1U << 1;
inline constexpr unsigned canSubscribeRead = 1U << 5;
inline constexpr unsigned canSubscribeWrite = 1U << 6;
inline constexpr unsigned noExport = 1U << 7;
} // namespace sequencerPort

struct SequencerPort {
    SequencerAddress address;
    std::string name;
    unsigned capabilities = 0; ///< of sequencerPort
};

struct SequencerListing {
    int client = 0;
    std::string name;
    std::vector<SequencerPort> ports;
};

/// An endpoint that came or went.
struct EndpointChange {
    MidiNotice notice = MidiNotice::objectAdded; ///< or objectRemoved
    MidiRef endpoint = 0;

    bool operator==(const EndpointChange&) const = default;
};

/// Follows clients and ports and keeps the endpoints: a port of another program or device that can
/// be subscribed to for reading is a source, for writing a destination, and it may be both. Ports
/// of this program, of the sequencer itself (client 0) and those flagged as not to be exported are
/// none.
///
/// Each operation returns what changed, the removed before the added, sources before destinations;
/// the change of a port as a whole has been made by then. What is told twice changes nothing.
class SequencerState {
public:
    using Changes = std::vector<EndpointChange>;

    /// `nextRef` gives a reference that was never used.
    SequencerState(int ownClient, std::function<MidiRef()> nextRef);

    /// A client has started or has another name. Changes display names only.
    void clientNamed(int client, std::string name);
    Changes clientLeft(int client);
    /// A port has started, or has changed.
    Changes portPresent(SequencerPort port);
    Changes portLeft(SequencerAddress address);
    /// All that there is now, after messages of the sequencer were lost. Endpoints of a port of the
    /// same name at the same address remain the same.
    Changes rescanned(std::vector<SequencerListing> all);

    /// In the order in which they appeared.
    const std::vector<MidiRef>& sources() const { return sources_; }
    const std::vector<MidiRef>& destinations() const { return destinations_; }
    /// Nothing for an endpoint that has gone.
    std::optional<SequencerAddress> addressOf(MidiRef endpoint) const;
    /// The port's name, with the client's name and a space in front unless it begins with that.
    std::optional<std::string> displayName(MidiRef endpoint) const;
    /// The port's endpoint to receive from; 0 if it has none.
    MidiRef sourceAt(SequencerAddress address) const;

private:
    struct Port {
        std::string name;
        MidiRef source = 0;      ///< 0 if it is none
        MidiRef destination = 0; ///< likewise
    };
    using Ports = std::map<SequencerAddress, Port>;

    Changes update(SequencerAddress address, std::string name, bool isSource, bool isDestination);
    Ports::const_iterator portOf(MidiRef endpoint) const;

    int ownClient_;
    std::function<MidiRef()> nextRef_;
    std::map<int, std::string> clientNames_;
    Ports ports_; ///< those with an endpoint
    std::vector<MidiRef> sources_;
    std::vector<MidiRef> destinations_;
};

/// Puts the later changes behind the earlier ones.
void append(SequencerState::Changes& changes, const SequencerState::Changes& later);

} // namespace deckmate
