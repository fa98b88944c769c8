#include "device/MIDIManager.h"

#include "device/MIDICommon.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>
#include <vector>

namespace deckmate {

namespace {

constexpr const char* clientName = "ORLO Tonebench";
constexpr std::string_view deviceName = "H8 ORLO";
constexpr std::chrono::seconds settlingTime{1};

bool isDevice(MidiRef endpoint) {
    return NameOfEndpoint(endpoint).starts_with(deviceName);
}

/// The manager, null when it has gone. The token is not kept, so that it expires even if the
/// manager goes inside the call that is about to be made.
MIDIManager* alive(const std::weak_ptr<MIDIManager*>& life) {
    const auto token = life.lock();
    return token ? *token : nullptr;
}

} // namespace

std::string NameOfEndpoint(MidiRef endpoint) {
    return Midi::current().displayName(endpoint).value_or("Unknown name");
}

std::unique_ptr<MIDIManager>& MIDIManager::s_midi() {
    // Never destroyed: its timer could not outlive the main loop.
    static auto* const manager = new std::unique_ptr<MIDIManager>;
    return *manager;
}

MIDIManager& MIDIManager::get() {
    if (!s_midi()) {
        s_midi().reset(new MIDIManager);
    }
    return *s_midi();
}

MIDIManager::MIDIManager() {
    // The client stays when this goes.
    client_ =
        Midi::current().createClient(clientName, [weak = std::weak_ptr(life_)](MidiNotice notice) {
            if (MIDIManager* const manager = alive(weak)) {
                NotifyStatusFromK22CB(notice, *manager);
            }
        });
}

MIDIManager::~MIDIManager() {
    clean_up();
}

void MIDIManager::NotifyStatusFromK22CB(MidiNotice notice, MIDIManager& manager) {
    if (notice == MidiNotice::objectAdded) {
        manager.scanOrloDevice();
    } else if (notice == MidiNotice::objectRemoved) {
        manager.DeviceDisconnected();
    }
}

bool MIDIManager::isHasWritingEndpoint() {
    const Midi& midi = Midi::current();
    for (std::size_t i = 0; i < midi.numberOfDestinations(); ++i) {
        if (const MidiRef endpoint = midi.destination(i); isDevice(endpoint)) {
            write_endpoint_tmp_ = endpoint;
            return true;
        }
    }
    return false;
}

bool MIDIManager::isHasReadingEndpoint() {
    const Midi& midi = Midi::current();
    for (std::size_t i = 0; i < midi.numberOfSources(); ++i) {
        if (const MidiRef endpoint = midi.source(i); isDevice(endpoint)) {
            read_endpoint_tmp_ = endpoint;
            return true;
        }
    }
    return false;
}

void MIDIManager::scanOrloDevice() {
    if (!isHasWritingEndpoint() || !isHasReadingEndpoint()) {
        DeviceDisconnected();
    } else if (state_ < found) {
        changeStateTo(found);
        if (delegate_ != nullptr) {
            delegate_->MIDIManagerFound();
        }
    }
}

void MIDIManager::connect() {
    if (state_ != found) {
        return;
    }
    changeStateTo(connecting);
    write_endpoint_ = write_endpoint_tmp_;
    read_endpoint_ = read_endpoint_tmp_;
    writePort_ = 0;
    readPort_ = 0;
    Midi& midi = Midi::current();
    if (buildPortForReadDataFromHW(client_) == 0) {
        midi.connectSource(readPort_, read_endpoint_);
    }
    midi.createOutputPort(client_, "Lumo Output Port", writePort_);
    changeStateTo(settling);
    startTimerConnected();
}

MidiStatus MIDIManager::buildPortForReadDataFromHW(MidiRef client) {
    Midi& midi = Midi::current();
    if (midi.hasEventLists()) {
        return midi.createInputPort(
            client, "Input Port",
            Midi::EventReader([weak = std::weak_ptr(life_)](const MIDIEventList& events) {
                if (MIDIManager* const manager = alive(weak)) {
                    manager->receiveForMacOS11(events);
                }
            }),
            readPort_);
    }
    return midi.createInputPort(
        client, "Input",
        Midi::PacketReader([weak = std::weak_ptr(life_)](const MIDIPacketList& packets) {
            if (MIDIManager* const manager = alive(weak)) {
                receiveForMacOS10(packets, *manager);
            }
        }),
        readPort_);
}

void MIDIManager::startTimerConnected() {
    stopTimerConnected();
    timer_connected_ = RunLoop::main().makeTimer();
    timer_connected_->startOnce(settlingTime, [this] {
        if (state_ == settling) {
            changeStateTo(connected);
            if (delegate_ != nullptr) {
                delegate_->MIDIManagerConnected();
            }
        }
    });
}

void MIDIManager::stopTimerConnected() {
    timer_connected_.reset();
}

void MIDIManager::DeviceDisconnected() {
    if (state_ != disconnected) {
        changeStateTo(disconnected);
        clean_up();
        if (delegate_ != nullptr) {
            delegate_->MIDIManagerDisconnected();
        }
    }
}

void MIDIManager::clean_up() {
    stopTimerConnected();
    if (readPort_ == 0 || read_endpoint_ == 0) {
        return;
    }
    Midi& midi = Midi::current();
    midi.disconnectSource(readPort_, read_endpoint_);
    midi.disposePort(readPort_);
    readPort_ = 0;
    if (writePort_ != 0) {
        midi.disposePort(writePort_);
        writePort_ = 0;
    }
    midi.flushOutput(read_endpoint_);
    read_endpoint_ = 0;
    if (write_endpoint_ != 0) {
        midi.flushOutput(write_endpoint_);
        write_endpoint_ = 0;
    }
}

void MIDIManager::send(std::span<const std::uint8_t> bytes) {
    if (Midi::current().hasEventLists()) {
        sendForMacOS11(bytes);
    } else {
        sendForMacOS10(bytes);
    }
}

void MIDIManager::sendForMacOS11(std::span<const std::uint8_t> bytes) const {
    Midi& midi = Midi::current();
    const std::optional<std::vector<GLPacket>> packets = MIDICommon::convertByteToPacket(bytes);
    if (!midi.hasEventLists() || !packets) {
        return;
    }
    for (const GLPacket& packet : *packets) {
        MIDIEventPacket event;
        event.wordCount = packet.size;
        std::copy_n(packet.data.begin(), packet.size, event.words.begin());
        midi.send(writePort_, write_endpoint_, {MidiProtocol::midi1, {&event, 1}});
    }
}

void MIDIManager::sendForMacOS10(std::span<const std::uint8_t> bytes) {
    packetBuffer_.fill(0);
    MIDIPacketList list(packetBuffer_);
    while (!bytes.empty()) {
        const auto piece = bytes.first(std::min(bytes.size(), MIDIPacket::mostBytes));
        list.add(midiTimeStamp(), piece);
        bytes = bytes.subspan(piece.size());
    }
    Midi::current().send(writePort_, write_endpoint_, list);
}

void MIDIManager::receiveForMacOS10(const MIDIPacketList& packets, MIDIManager& manager) {
    const std::weak_ptr life(manager.life_);
    MIDIPacketList::Walk walk(packets);
    std::uint32_t count = 0;
    while (const MIDIPacket* const packet = walk.next()) {
        if (life.expired()) {
            return;
        }
        ++count;
        if (manager.delegate_ != nullptr) {
            manager.delegate_->MIDIManagerReceivedData_iOS13(*packet,
                                                             count == packets.numPackets());
        }
    }
}

void MIDIManager::receiveForMacOS11(const MIDIEventList& events) {
    const std::weak_ptr life(life_);
    for (const MIDIEventPacket& packet : events.packets) {
        if (life.expired()) {
            return;
        }
        if (delegate_ != nullptr) {
            delegate_->MIDIManagerReceivedData(packet);
        }
    }
}

std::string MIDIManager::stateToString(std::uint64_t state) {
    switch (state) {
    case disconnected:
        return "DISCONNECTED";
    case scan:
        return "SCAN";
    case found:
        return "FOUND";
    case connecting:
        return "CONNECTING";
    case connected:
        return "CONNECTED";
    default:
        return "";
    }
}

} // namespace deckmate
