#include "platform/MidiBackend.h"

#include <algorithm>
#include <utility>

namespace deckmate {

namespace {

/// More than a packet's time stamp and length take.
constexpr std::size_t packetOverhead = 16;

void deliverPackets(const Midi::PacketReader& reader, std::span<const std::uint8_t> bytes) {
    const std::size_t count = (bytes.size() + MIDIPacket::mostBytes - 1) / MIDIPacket::mostBytes;
    std::vector<std::uint8_t> room(bytes.size() + count * packetOverhead);
    MIDIPacketList list(room);
    const std::uint64_t now = midiTimeStamp();
    while (!bytes.empty()) {
        const auto piece = bytes.first(std::min(bytes.size(), MIDIPacket::mostBytes));
        list.add(now, piece);
        bytes = bytes.subspan(piece.size());
    }
    reader(list);
}

} // namespace

MidiRef MidiBackend::createClient(std::string_view name, NoticeReader reader) {
    named(name);
    const MidiRef client = nextRef();
    clients_[client] = std::move(reader);
    return client;
}

MidiStatus MidiBackend::createInputPort(MidiRef client, std::string_view name, PacketReader reader,
                                        MidiRef& port) {
    return addPort(client, name, {.direction = Direction::input, .packets = std::move(reader)},
                   port);
}

MidiStatus MidiBackend::createInputPort(MidiRef client, std::string_view name, EventReader reader,
                                        MidiRef& port) {
    return addPort(client, name, {.direction = Direction::input, .events = std::move(reader)},
                   port);
}

MidiStatus MidiBackend::createOutputPort(MidiRef client, std::string_view name, MidiRef& port) {
    return addPort(client, name, {.direction = Direction::output}, port);
}

MidiStatus MidiBackend::addPort(MidiRef client, std::string_view name, Port port, MidiRef& ref) {
    if (!clients_.contains(client)) {
        return midiUnknownObject;
    }
    const MidiRef fresh = nextRef();
    const MidiStatus status = openPort(fresh, name, port.direction);
    if (status == 0) {
        ports_[fresh] = std::make_shared<Port>(std::move(port));
        ref = fresh;
    }
    return status;
}

std::shared_ptr<MidiBackend::Port> MidiBackend::findPort(MidiRef ref, Direction direction) const {
    const auto found = ports_.find(ref);
    return found != ports_.end() && found->second->direction == direction ? found->second : nullptr;
}

MidiStatus MidiBackend::connectSource(MidiRef port, MidiRef source) {
    const auto found = findPort(port, Direction::input);
    if (!found || !isSource(source)) {
        return midiUnknownObject;
    }
    if (found->connections.contains(source)) {
        return 0;
    }
    const MidiStatus status = connect(port, source);
    if (status == 0) {
        found->connections.try_emplace(source);
    }
    return status;
}

MidiStatus MidiBackend::disconnectSource(MidiRef port, MidiRef source) {
    const auto found = findPort(port, Direction::input);
    if (!found || found->connections.erase(source) == 0) {
        return midiUnknownObject;
    }
    disconnect(port, source);
    return 0;
}

MidiStatus MidiBackend::disposePort(MidiRef port) {
    const auto found = ports_.find(port);
    if (found == ports_.end()) {
        return midiUnknownObject;
    }
    found->second->connections.clear();
    ports_.erase(found);
    closePort(port);
    return 0;
}

MidiStatus MidiBackend::send(MidiRef port, MidiRef destination, const MIDIPacketList& packets) {
    if (!isOutputPort(port) || !isDestination(destination)) {
        return midiUnknownObject;
    }
    std::vector<std::uint8_t> bytes;
    MIDIPacketList::Walk walk(packets);
    while (const MIDIPacket* packet = walk.next()) {
        const auto data = std::span(packet->data)
                              .first(std::min<std::size_t>(packet->length, packet->data.size()));
        bytes.insert(bytes.end(), data.begin(), data.end());
    }
    return bytes.empty() ? 0 : transmit(port, destination, bytes);
}

MidiStatus MidiBackend::send(MidiRef port, MidiRef destination, const MIDIEventList& events) {
    if (!isOutputPort(port) || !isDestination(destination)) {
        return midiUnknownObject;
    }
    std::vector<std::uint8_t> bytes;
    for (const MIDIEventPacket& packet : events.packets) {
        const std::size_t count = std::min<std::size_t>(packet.wordCount, packet.words.size());
        decodeUmp(std::span(packet.words).first(count), bytes);
    }
    return bytes.empty() ? 0 : transmit(port, destination, bytes);
}

MidiStatus MidiBackend::flushOutput(MidiRef endpoint) {
    if (!isSource(endpoint) && !isDestination(endpoint)) {
        return midiUnknownObject;
    }
    flush(endpoint);
    return 0;
}

MidiStatus MidiBackend::openPort(MidiRef /*port*/, std::string_view /*name*/,
                                 Direction /*direction*/) {
    return 0;
}

MidiStatus MidiBackend::connect(MidiRef /*port*/, MidiRef /*source*/) {
    return 0;
}

bool MidiBackend::isOutputPort(MidiRef ref) const {
    return findPort(ref, Direction::output) != nullptr;
}

bool MidiBackend::isSource(MidiRef ref) const {
    for (std::size_t i = 0; i < numberOfSources(); ++i) {
        if (source(i) == ref) {
            return true;
        }
    }
    return false;
}

bool MidiBackend::isDestination(MidiRef ref) const {
    for (std::size_t i = 0; i < numberOfDestinations(); ++i) {
        if (destination(i) == ref) {
            return true;
        }
    }
    return false;
}

void MidiBackend::notify(MidiNotice notice) {
    // A reader may create another client.
    const auto clients = clients_;
    for (const auto& [client, reader] : clients) {
        if (reader) {
            reader(notice);
        }
    }
}

void MidiBackend::received(MidiRef port, MidiRef source, std::span<const std::uint8_t> bytes) {
    // Held here, because the reader may dispose of the port.
    const auto found = findPort(port, Direction::input);
    if (!found || bytes.empty()) {
        return;
    }
    const auto connection = found->connections.find(source);
    if (connection == found->connections.end()) {
        return;
    }
    if (found->packets) {
        deliverPackets(found->packets, bytes);
        return;
    }
    std::vector<std::uint32_t> words;
    connection->second.encode(bytes, words);
    const std::vector<MIDIEventPacket> packets = packEvents(words, midiTimeStamp());
    if (!packets.empty() && found->events) {
        found->events({.protocol = MidiProtocol::midi1, .packets = packets});
    }
}

void MidiBackend::receivedList(MidiRef source, const MIDIPacketList& packets) {
    for (const MidiRef ref : portsOf(source)) {
        const auto port = findPort(ref, Direction::input);
        if (port && port->packets) {
            port->packets(packets);
        }
    }
}

void MidiBackend::receivedList(MidiRef source, const MIDIEventList& events) {
    for (const MidiRef ref : portsOf(source)) {
        const auto port = findPort(ref, Direction::input);
        if (port && port->events) {
            port->events(events);
        }
    }
}

void MidiBackend::inputLost() {
    for (const auto& [ref, port] : ports_) {
        for (auto& [source, encoder] : port->connections) {
            encoder.reset();
        }
    }
}

void MidiBackend::forgetEndpoint(MidiRef endpoint) {
    for (const auto& [ref, port] : ports_) {
        port->connections.erase(endpoint);
    }
}

std::vector<MidiRef> MidiBackend::portsOf(MidiRef source) const {
    std::vector<MidiRef> connected;
    for (const auto& [ref, port] : ports_) {
        if (port->connections.contains(source)) {
            connected.push_back(ref);
        }
    }
    return connected;
}

std::size_t MidiBackend::numberOfConnections() const {
    std::size_t count = 0;
    for (const auto& [ref, port] : ports_) {
        count += port->connections.size();
    }
    return count;
}

} // namespace deckmate
