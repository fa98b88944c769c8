#include "support/InProcessMidi.h"

#include "platform/RunLoop.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace deckmate::test {

namespace {

constexpr std::uint8_t startOfSysEx = 0xF0;
constexpr std::uint8_t endOfSysEx = 0xF7;

[[noreturn]] void misuse(const std::string& what) {
    std::fprintf(stderr, "InProcessMidi: %s\n", what.c_str());
    std::abort();
}

} // namespace

InProcessDevice::InProcessDevice(InProcessMidi& midi, std::string name, MidiRef source,
                                 MidiRef destination)
    : midi_(midi), name_(std::move(name)), source_(source), destination_(destination) {}

void InProcessDevice::take(std::span<const std::uint8_t> bytes) {
    unfinished_.insert(unfinished_.end(), bytes.begin(), bytes.end());
    while (!unfinished_.empty()) {
        auto end = unfinished_.end();
        if (unfinished_.front() == startOfSysEx) {
            end = std::find(unfinished_.begin(), unfinished_.end(), endOfSysEx);
            if (end == unfinished_.end()) {
                return;
            }
            ++end;
        } else {
            end = std::find(unfinished_.begin(), unfinished_.end(), startOfSysEx);
        }
        const Bytes message(unfinished_.begin(), end);
        unfinished_.erase(unfinished_.begin(), end);
        messages.push_back(message);
        if (const auto reader = onMessage) {
            reader(message);
        }
    }
}

void InProcessDevice::expectPluggedIn() const {
    midi_.expectUse("device answers", {});
    if (!isPluggedIn_) {
        misuse("a device answers that is gone");
    }
    if (source_ == 0) {
        misuse("a device answers that has no source");
    }
}

void InProcessDevice::later(std::function<void()> action) {
    expectPluggedIn();
    RunLoop::main().runLater([this, exists = std::weak_ptr(exists_), action = std::move(action)] {
        if (!exists.expired() && isPluggedIn_) {
            action();
        }
    });
}

void InProcessDevice::answer(const Bytes& bytes) {
    expectPluggedIn();
    for (const MidiRef port : midi_.portsOf(source_)) {
        midi_.received(port, source_, bytes);
    }
}

void InProcessDevice::answerLater(const Bytes& bytes) {
    later([this, bytes] { answer(bytes); });
}

void InProcessDevice::answerPackets(const std::vector<Bytes>& packetData) {
    expectPluggedIn();
    Bytes room(packetData.size() * sizeof(MIDIPacket));
    MIDIPacketList list(room);
    for (const Bytes& data : packetData) {
        if (!list.add(midiTimeStamp(), data)) {
            misuse("a packet of more than 256 bytes");
        }
    }
    midi_.receivedList(source_, list);
}

void InProcessDevice::answerPacketsLater(const std::vector<Bytes>& packetData) {
    later([this, packetData] { answerPackets(packetData); });
}

void InProcessDevice::answerEvents(const std::vector<Words>& packetWords) {
    expectPluggedIn();
    std::vector<MIDIEventPacket> list;
    for (const Words& words : packetWords) {
        if (words.size() > MIDIEventPacket::mostWords) {
            misuse("an event packet of more than 64 words");
        }
        MIDIEventPacket& packet = list.emplace_back();
        packet.timeStamp = midiTimeStamp();
        packet.wordCount = static_cast<std::uint32_t>(words.size());
        std::copy(words.begin(), words.end(), packet.words.begin());
    }
    midi_.receivedList(source_, MIDIEventList{.protocol = MidiProtocol::midi1, .packets = list});
}

void InProcessDevice::answerEventsLater(const std::vector<Words>& packetWords) {
    later([this, packetWords] { answerEvents(packetWords); });
}

InProcessMidi::InProcessMidi(bool hasEventLists) : hasEventLists_(hasEventLists) {}

InProcessMidi::~InProcessMidi() = default;

void InProcessMidi::expectUse(const char* what, std::initializer_list<MidiRef> refs) const {
    if (std::this_thread::get_id() != thread_) {
        misuse(std::string(what) + " on another thread than the main one");
    }
    for (const MidiRef ref : refs) {
        if (ref != 0 && !wasGiven(ref)) {
            misuse(std::string(what) + " with a reference that was never given out");
        }
    }
}

InProcessDevice* InProcessMidi::deviceAt(MidiRef endpoint) const {
    for (const auto& device : devices_) {
        if (device->isPluggedIn_ && endpoint != 0 &&
            (device->source_ == endpoint || device->destination_ == endpoint)) {
            return device.get();
        }
    }
    return nullptr;
}

InProcessDevice& InProcessMidi::addDevice(const std::string& displayName, Ends ends) {
    expectUse("device added", {});
    const MidiRef source = ends != Ends::destination ? nextRef() : 0;
    const MidiRef destination = ends != Ends::source ? nextRef() : 0;
    for (const auto& [endpoint, list] :
         {std::pair(source, &sources_), std::pair(destination, &destinations_)}) {
        if (endpoint != 0) {
            list->push_back(endpoint);
            notifyLater(MidiNotice::objectAdded);
        }
    }
    devices_.push_back(std::make_unique<InProcessDevice>(*this, displayName, source, destination));
    return *devices_.back();
}

void InProcessMidi::removeDevice(InProcessDevice& device) {
    expectUse("device removed", {});
    if (!std::exchange(device.isPluggedIn_, false)) {
        misuse("a device is removed that is gone");
    }
    for (const auto& [endpoint, list] :
         {std::pair(device.source_, &sources_), std::pair(device.destination_, &destinations_)}) {
        if (endpoint != 0) {
            std::erase(*list, endpoint);
            forgetEndpoint(endpoint);
            notifyLater(MidiNotice::objectRemoved);
        }
    }
}

void InProcessMidi::notifyLater(MidiNotice notice) {
    RunLoop::main().runLater([this, exists = std::weak_ptr(exists_), notice] {
        if (!exists.expired()) {
            notify(notice);
        }
    });
}

MidiRef InProcessMidi::source(std::size_t index) const {
    return index < sources_.size() ? sources_[index] : 0;
}

MidiRef InProcessMidi::destination(std::size_t index) const {
    return index < destinations_.size() ? destinations_[index] : 0;
}

std::optional<std::string> InProcessMidi::displayName(MidiRef endpoint) const {
    expectUse("displayName called", {endpoint});
    const InProcessDevice* const device = deviceAt(endpoint);
    return device != nullptr && device->hasName ? std::optional(device->name_) : std::nullopt;
}

MidiRef InProcessMidi::createClient(std::string_view name, NoticeReader reader) {
    expectUse("createClient called", {});
    return MidiBackend::createClient(name, std::move(reader));
}

MidiStatus InProcessMidi::connectSource(MidiRef port, MidiRef source) {
    expectUse("connectSource called", {port, source});
    return MidiBackend::connectSource(port, source);
}

MidiStatus InProcessMidi::disconnectSource(MidiRef port, MidiRef source) {
    expectUse("disconnectSource called", {port, source});
    return MidiBackend::disconnectSource(port, source);
}

MidiStatus InProcessMidi::disposePort(MidiRef port) {
    expectUse("disposePort called", {port});
    return MidiBackend::disposePort(port);
}

MidiStatus InProcessMidi::send(MidiRef port, MidiRef destination, const MIDIPacketList& packets) {
    expectUse("send called", {port, destination});
    InProcessDevice* const device = deviceAt(destination);
    if (device != nullptr && isOutputPort(port) && canSend) {
        ++device->sends;
        MIDIPacketList::Walk walk(packets);
        while (const MIDIPacket* packet = walk.next()) {
            device->timeStamps.push_back(packet->timeStamp);
            device->packets.emplace_back(packet->data.begin(),
                                         packet->data.begin() + packet->length);
        }
    }
    return MidiBackend::send(port, destination, packets);
}

MidiStatus InProcessMidi::send(MidiRef port, MidiRef destination, const MIDIEventList& events) {
    expectUse("send called", {port, destination});
    InProcessDevice* const device = deviceAt(destination);
    if (device != nullptr && isOutputPort(port) && canSend) {
        ++device->sends;
        device->protocols.push_back(events.protocol);
        for (const MIDIEventPacket& packet : events.packets) {
            if (packet.wordCount > packet.words.size()) {
                misuse("an event packet of more than 64 words");
            }
            device->timeStamps.push_back(packet.timeStamp);
            device->events.emplace_back(packet.words.begin(),
                                        packet.words.begin() + packet.wordCount);
        }
    }
    return MidiBackend::send(port, destination, events);
}

MidiStatus InProcessMidi::flushOutput(MidiRef endpoint) {
    expectUse("flushOutput called", {endpoint});
    return MidiBackend::flushOutput(endpoint);
}

MidiStatus InProcessMidi::openPort(MidiRef /*port*/, std::string_view name, Direction direction) {
    expectUse("port created", {});
    if (!(direction == Direction::input ? canCreateInputPorts : canCreateOutputPorts)) {
        return midiNotAvailable;
    }
    portNames.emplace_back(name);
    return 0;
}

void InProcessMidi::disconnect(MidiRef /*port*/, MidiRef /*source*/) {
    ++disconnections;
}

MidiStatus InProcessMidi::transmit(MidiRef /*port*/, MidiRef destination,
                                   std::span<const std::uint8_t> bytes) {
    if (!canSend) {
        return midiSendFailed;
    }
    deviceAt(destination)->take(bytes);
    return 0;
}

void InProcessMidi::flush(MidiRef /*endpoint*/) {
    ++flushes;
}

} // namespace deckmate::test
