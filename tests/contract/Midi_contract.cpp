// Asked of each back end of Midi: those with devices that a test can plug in, in both shapes of
// messages, and the one that never has any. The sequencer's where this machine has one.
#include "platform/Midi.h"

#include "platform/MidiDevice.h"
#include "platform/UmpTranslation.h"
#include "platform/alsa/AlsaMidi.h"
#include "platform/alsa/MidiPath.h"
#include "platform/none/NoMidi.h"
#include "platform/qt/QtRunLoop.h"
#include "support/Bytes.h"
#include "support/InProcessMidi.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace deckmate {
namespace {

using namespace std::chrono_literals;
using test::Bytes;
using test::InProcessDevice;
using test::InProcessMidi;
using Notices = std::vector<MidiNotice>;

/// A back end and the devices of this machine.
class World {
public:
    World() = default;
    virtual ~World() = default;
    World(const World&) = delete;
    World& operator=(const World&) = delete;
    World(World&&) = delete;
    World& operator=(World&&) = delete;

    virtual Midi& midi() = 0;
    virtual void plug(const std::string& name) = 0;
    virtual void unplug(const std::string& name) = 0;
    /// The device sends, and it is on its way.
    virtual void answer(const std::string& name, const Bytes& bytes) = 0;
    /// All that the device has got.
    virtual Bytes taken(const std::string& name) = 0;
};

class NoDevices final : public World {
public:
    Midi& midi() override { return *midi_; }
    void plug(const std::string& /*name*/) override {}
    void unplug(const std::string& /*name*/) override {}
    void answer(const std::string& /*name*/, const Bytes& /*bytes*/) override {}
    Bytes taken(const std::string& /*name*/) override { return {}; }

private:
    std::unique_ptr<Midi> midi_ = makeNoMidi();
};

class InProcessWorld final : public World {
public:
    explicit InProcessWorld(bool hasEventLists) : midi_(hasEventLists) {}
    Midi& midi() override { return midi_; }
    void plug(const std::string& name) override { devices_[name] = &midi_.addDevice(name); }
    void unplug(const std::string& name) override { midi_.removeDevice(*devices_.at(name)); }
    void answer(const std::string& name, const Bytes& bytes) override {
        devices_.at(name)->answerLater(bytes);
    }
    Bytes taken(const std::string& name) override {
        Bytes all;
        for (const Bytes& message : devices_.at(name)->messages) {
            all.insert(all.end(), message.begin(), message.end());
        }
        return all;
    }

private:
    InProcessMidi midi_;
    std::map<std::string, InProcessDevice*> devices_;
};

class AlsaWorld final : public World {
public:
    explicit AlsaWorld(bool hasEventLists) {
        setenv(midiPathVariable, hasEventLists ? "events" : "packets", 1);
        midi_ = makeAlsaMidi();
    }
    ~AlsaWorld() override { unsetenv(midiPathVariable); }
    AlsaWorld(const AlsaWorld&) = delete;
    AlsaWorld& operator=(const AlsaWorld&) = delete;
    AlsaWorld(AlsaWorld&&) = delete;
    AlsaWorld& operator=(AlsaWorld&&) = delete;

    Midi& midi() override { return *midi_; }
    void plug(const std::string& name) override {
        std::string error;
        devices_[name] = MidiDevice::openSequencerPort(
            name,
            [this, name](std::span<const std::uint8_t> bytes) {
                taken_[name].insert(taken_[name].end(), bytes.begin(), bytes.end());
            },
            [] {}, error);
        EXPECT_NE(devices_[name], nullptr) << error;
    }
    void unplug(const std::string& name) override { devices_.erase(name); }
    void answer(const std::string& name, const Bytes& bytes) override {
        EXPECT_TRUE(devices_.at(name)->send(bytes));
    }
    Bytes taken(const std::string& name) override { return taken_[name]; }

private:
    std::unique_ptr<Midi> midi_;
    std::map<std::string, std::unique_ptr<MidiDevice>> devices_;
    std::map<std::string, Bytes> taken_;
};

struct Kind {
    std::string name;
    std::function<std::unique_ptr<World>()> make;
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

std::vector<Kind> kindsWithDevices() {
    std::vector<Kind> kinds = {
        {"InProcessPackets", [] { return std::make_unique<InProcessWorld>(false); }},
        {"InProcessEvents", [] { return std::make_unique<InProcessWorld>(true); }}};
    if (access("/dev/snd/seq", R_OK | W_OK) == 0) {
        kinds.push_back({"AlsaPackets", [] { return std::make_unique<AlsaWorld>(false); }});
        kinds.push_back({"AlsaEvents", [] { return std::make_unique<AlsaWorld>(true); }});
    }
    return kinds;
}

std::vector<Kind> allKinds() {
    std::vector<Kind> kinds = kindsWithDevices();
    kinds.push_back({"None", [] { return std::make_unique<NoDevices>(); }});
    return kinds;
}

const std::string recorder = "H8 ORLO Contract";
const std::string keyboard = "Keyboard Contract";

/// F0, so many data bytes, F7.
Bytes sysEx(std::size_t count) {
    Bytes bytes = {0xF0};
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(i % 100));
    }
    bytes.push_back(0xF7);
    return bytes;
}

class MidiContract : public testing::TestWithParam<Kind> {
protected:
    bool runUntil(const std::function<bool()>& isDone) { return loop_.runUntil(isDone, 60s); }
    /// Everything that is on its way has arrived, and then some time passed.
    void settle() {
        bool isReached = false;
        const std::unique_ptr<Timer> timer = loop_.makeTimer();
        timer->startOnce(20ms, [&] { isReached = true; });
        EXPECT_TRUE(runUntil([&] { return isReached; }));
    }

    MidiRef sourceOf(const std::string& name) {
        for (std::size_t i = 0; i < midi().numberOfSources(); ++i) {
            if (midi().displayName(midi().source(i)) == name) {
                return midi().source(i);
            }
        }
        return 0;
    }
    MidiRef destinationOf(const std::string& name) {
        for (std::size_t i = 0; i < midi().numberOfDestinations(); ++i) {
            if (midi().displayName(midi().destination(i)) == name) {
                return midi().destination(i);
            }
        }
        return 0;
    }
    void plug(const std::string& name) {
        world_->plug(name);
        EXPECT_TRUE(runUntil([&] { return sourceOf(name) != 0 && destinationOf(name) != 0; }));
        settle();
    }
    void unplug(const std::string& name) {
        world_->unplug(name);
        EXPECT_TRUE(runUntil([&] { return sourceOf(name) == 0 && destinationOf(name) == 0; }));
        settle();
    }

    /// A port that adds the bytes that it receives, in the shape that this back end prefers.
    MidiRef inputPort(Bytes& bytes) {
        return inputPort(
            [&bytes](const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); });
    }
    MidiRef inputPort(std::function<void(const Bytes& bytes)> take) {
        MidiRef port = 0;
        const MidiStatus status =
            midi().hasEventLists()
                ? midi().createInputPort(
                      client_, "Input",
                      [take](const MIDIEventList& events) {
                          Bytes bytes;
                          for (const MIDIEventPacket& packet : events.packets) {
                              decodeUmp(std::span(packet.words).first(packet.wordCount), bytes);
                          }
                          take(bytes);
                      },
                      port)
                : midi().createInputPort(
                      client_, "Input",
                      [take](const MIDIPacketList& packets) {
                          Bytes bytes;
                          MIDIPacketList::Walk walk(packets);
                          while (const MIDIPacket* packet = walk.next()) {
                              bytes.insert(bytes.end(), packet->data.begin(),
                                           packet->data.begin() + packet->length);
                          }
                          take(bytes);
                      },
                      port);
        EXPECT_EQ(status, 0);
        return port;
    }
    MidiRef outputPort() {
        MidiRef port = 0;
        EXPECT_EQ(midi().createOutputPort(client_, "Output", port), 0);
        return port;
    }
    MidiStatus send(MidiRef port, MidiRef destination, const Bytes& bytes) {
        if (midi().hasEventLists()) {
            std::vector<std::uint32_t> words;
            UmpEncoder().encode(bytes, words);
            const std::vector<MIDIEventPacket> packets = packEvents(words, 0);
            return midi().send(port, destination, MIDIEventList{.packets = packets});
        }
        Bytes room(10'000);
        MIDIPacketList list(room);
        for (std::size_t at = 0; at < bytes.size(); at += MIDIPacket::mostBytes) {
            list.add(0, std::span(bytes).subspan(at).first(
                            std::min(bytes.size() - at, MIDIPacket::mostBytes)));
        }
        return midi().send(port, destination, list);
    }

    Midi& midi() { return world_->midi(); }

    QtRunLoop loop_;
    std::unique_ptr<World> world_ = GetParam().make();
    Notices notices_;
    MidiRef client_ =
        midi().createClient("Contract", [this](MidiNotice notice) { notices_.push_back(notice); });
};

using MidiDeviceContract = MidiContract;

std::string nameOf(const testing::TestParamInfo<Kind>& kind) {
    return kind.param.name;
}
INSTANTIATE_TEST_SUITE_P(All, MidiContract, testing::ValuesIn(allKinds()), nameOf);
INSTANTIATE_TEST_SUITE_P(All, MidiDeviceContract, testing::ValuesIn(kindsWithDevices()), nameOf);

// Whatever is plugged in

TEST_P(MidiContract, IsTheOneThatCurrentGives) {
    EXPECT_EQ(&Midi::current(), &midi());
}

TEST_P(MidiContract, EveryObjectHasAReferenceOfItsOwn) {
    Bytes bytes;
    const std::set<MidiRef> refs = {client_,          midi().createClient("Other", {}),
                                    inputPort(bytes), inputPort(bytes),
                                    outputPort(),     outputPort()};
    EXPECT_EQ(refs.size(), 6U);
    EXPECT_FALSE(refs.contains(0));
}

TEST_P(MidiContract, APortNeedsAClient) {
    MidiRef port = 77;
    const MidiRef noClient = outputPort();
    for (const MidiRef client : {MidiRef{0}, noClient}) {
        EXPECT_EQ(midi().createInputPort(client, "Input", Midi::PacketReader(), port),
                  midiUnknownObject);
        EXPECT_EQ(midi().createInputPort(client, "Input", Midi::EventReader(), port),
                  midiUnknownObject);
        EXPECT_EQ(midi().createOutputPort(client, "Output", port), midiUnknownObject);
    }
    EXPECT_EQ(port, 77U);
}

TEST_P(MidiContract, APortIsDisposedOfOnce) {
    Bytes bytes;
    for (const MidiRef port : {inputPort(bytes), outputPort()}) {
        EXPECT_EQ(midi().disposePort(port), 0);
        EXPECT_EQ(midi().disposePort(port), midiUnknownObject);
    }
}

TEST_P(MidiContract, OnlyPortsAreDisposedOf) {
    EXPECT_EQ(midi().disposePort(0), midiUnknownObject);
    EXPECT_EQ(midi().disposePort(client_), midiUnknownObject);
}

TEST_P(MidiContract, BeyondTheLastEndpointIsNone) {
    EXPECT_EQ(midi().source(midi().numberOfSources()), 0U);
    EXPECT_EQ(midi().destination(midi().numberOfDestinations()), 0U);
    EXPECT_EQ(midi().source(static_cast<std::size_t>(-1)), 0U);
    EXPECT_EQ(midi().destination(static_cast<std::size_t>(-1)), 0U);
}

TEST_P(MidiContract, WhatIsNoEndpointHasNoName) {
    EXPECT_EQ(midi().displayName(0), std::nullopt);
    EXPECT_EQ(midi().displayName(client_), std::nullopt);
}

TEST_P(MidiContract, NothingCanBeConnectedToNothing) {
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    EXPECT_EQ(midi().connectSource(port, 0), midiUnknownObject);
    EXPECT_EQ(midi().connectSource(port, client_), midiUnknownObject);
    EXPECT_EQ(midi().connectSource(0, 0), midiUnknownObject);
    EXPECT_EQ(midi().disconnectSource(port, 0), midiUnknownObject);
    EXPECT_EQ(midi().disconnectSource(0, 0), midiUnknownObject);
}

TEST_P(MidiContract, NothingCanBeSentToNothing) {
    EXPECT_EQ(send(outputPort(), 0, sysEx(3)), midiUnknownObject);
    EXPECT_EQ(send(0, 0, sysEx(3)), midiUnknownObject);
}

TEST_P(MidiContract, NothingCanBeFlushedOfNothing) {
    EXPECT_EQ(midi().flushOutput(0), midiUnknownObject);
    EXPECT_EQ(midi().flushOutput(client_), midiUnknownObject);
}

TEST_P(MidiContract, OurOwnPortsAreNoNews) {
    settle();
    const std::size_t sources = midi().numberOfSources();
    const std::size_t destinations = midi().numberOfDestinations();
    notices_.clear();
    Bytes bytes;
    const MidiRef input = inputPort(bytes);
    const MidiRef output = outputPort();
    settle();
    EXPECT_EQ(midi().numberOfSources(), sources);
    EXPECT_EQ(midi().numberOfDestinations(), destinations);
    midi().disposePort(input);
    midi().disposePort(output);
    settle();
    EXPECT_EQ(notices_, Notices{});
}

// Plugging

TEST_P(MidiDeviceContract, ADeviceIsASourceAndADestination) {
    plug(recorder);
    EXPECT_NE(sourceOf(recorder), 0U);
    EXPECT_NE(destinationOf(recorder), 0U);
    EXPECT_NE(sourceOf(recorder), destinationOf(recorder));
}

TEST_P(MidiDeviceContract, EachEndpointIsAddedWithANotice) {
    plug(recorder);
    EXPECT_EQ(notices_, (Notices{MidiNotice::objectAdded, MidiNotice::objectAdded}));
}

TEST_P(MidiDeviceContract, EachEndpointIsRemovedWithANotice) {
    plug(recorder);
    notices_.clear();
    unplug(recorder);
    EXPECT_EQ(notices_, (Notices{MidiNotice::objectRemoved, MidiNotice::objectRemoved}));
}

TEST_P(MidiDeviceContract, NoticesComeFromTheLoop) {
    world_->plug(recorder);
    EXPECT_EQ(notices_, Notices{});
    EXPECT_TRUE(runUntil([&] { return notices_.size() == 2; }));
}

TEST_P(MidiDeviceContract, EveryClientIsNotified) {
    Notices others;
    midi().createClient("Other", [&](MidiNotice notice) { others.push_back(notice); });
    plug(recorder);
    EXPECT_EQ(notices_, (Notices{MidiNotice::objectAdded, MidiNotice::objectAdded}));
    EXPECT_EQ(others, notices_);
}

TEST_P(MidiDeviceContract, AtTheFirstNoticeTheWholeDeviceIsThereOrGone) {
    std::vector<bool> found;
    midi().createClient("Other", [&](MidiNotice /*notice*/) {
        found.push_back(sourceOf(recorder) != 0);
        found.push_back(destinationOf(recorder) != 0);
    });
    plug(recorder);
    unplug(recorder);
    EXPECT_EQ(found, (std::vector<bool>{true, true, true, true, false, false, false, false}));
}

TEST_P(MidiDeviceContract, WhatHasGoneHasNoName) {
    plug(recorder);
    const MidiRef source = sourceOf(recorder);
    EXPECT_EQ(midi().displayName(source), recorder);
    unplug(recorder);
    EXPECT_EQ(midi().displayName(source), std::nullopt);
}

TEST_P(MidiDeviceContract, ReferencesAreNotReused) {
    plug(recorder);
    const std::set<MidiRef> before = {sourceOf(recorder), destinationOf(recorder)};
    unplug(recorder);
    plug(recorder);
    EXPECT_FALSE(before.contains(sourceOf(recorder)));
    EXPECT_FALSE(before.contains(destinationOf(recorder)));
}

TEST_P(MidiDeviceContract, DevicesStandInTheOrderOfAppearance) {
    const std::size_t sources = midi().numberOfSources();
    const std::size_t destinations = midi().numberOfDestinations();
    plug(recorder);
    plug(keyboard);
    EXPECT_EQ(midi().source(sources), sourceOf(recorder));
    EXPECT_EQ(midi().source(sources + 1), sourceOf(keyboard));
    EXPECT_EQ(midi().destination(destinations), destinationOf(recorder));
    EXPECT_EQ(midi().destination(destinations + 1), destinationOf(keyboard));
    unplug(recorder);
    EXPECT_EQ(midi().source(sources), sourceOf(keyboard));
    EXPECT_EQ(midi().numberOfSources(), sources + 1);
    EXPECT_EQ(midi().numberOfDestinations(), destinations + 1);
}

// Receiving

TEST_P(MidiDeviceContract, AConnectedPortReceives) {
    plug(recorder);
    Bytes bytes;
    EXPECT_EQ(midi().connectSource(inputPort(bytes), sourceOf(recorder)), 0);
    world_->answer(recorder, sysEx(4));
    EXPECT_TRUE(runUntil([&] { return bytes == sysEx(4); }));
}

TEST_P(MidiDeviceContract, NothingIsReceivedOutsideTheLoop) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, LongMessagesArriveWhole) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    for (const std::size_t count : {6UL, 7UL, 254UL, 255UL, 256UL, 600UL, 3000UL}) {
        bytes.clear();
        world_->answer(recorder, sysEx(count));
        EXPECT_TRUE(runUntil([&] { return bytes.size() >= count + 2; }));
        EXPECT_EQ(bytes, sysEx(count));
    }
}

TEST_P(MidiDeviceContract, MessagesArriveWholeHoweverTheyAreCut) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    const Bytes message = sysEx(20);
    for (std::size_t cut = 1; cut < message.size(); ++cut) {
        bytes.clear();
        const auto at = message.begin() + static_cast<std::ptrdiff_t>(cut);
        world_->answer(recorder, Bytes(message.begin(), at));
        world_->answer(recorder, Bytes(at, message.end()));
        EXPECT_TRUE(runUntil([&] { return bytes.size() >= message.size(); }));
        EXPECT_EQ(bytes, message) << "cut at " << cut;
    }
}

TEST_P(MidiDeviceContract, OtherMessagesArriveAsWell) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    for (const Bytes& message : {Bytes{0x90, 0x3C, 0x64}, Bytes{0xC4, 0x09},
                                 Bytes{0xE0, 0x01, 0x02}, Bytes{0xF8}, Bytes{0xF2, 0x34, 0x56}}) {
        bytes.clear();
        world_->answer(recorder, message);
        EXPECT_TRUE(runUntil([&] { return bytes.size() >= message.size(); }));
        EXPECT_EQ(bytes, message);
    }
}

TEST_P(MidiDeviceContract, MessagesArriveInTheirOrder) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    Bytes all;
    for (std::size_t i = 0; i < 50; ++i) {
        const Bytes message = sysEx(i);
        world_->answer(recorder, message);
        all.insert(all.end(), message.begin(), message.end());
    }
    EXPECT_TRUE(runUntil([&] { return bytes.size() >= all.size(); }));
    EXPECT_EQ(bytes, all);
}

TEST_P(MidiDeviceContract, APortThatIsNotConnectedReceivesNothing) {
    plug(recorder);
    plug(keyboard);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(keyboard));
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, AllConnectedPortsReceive) {
    plug(recorder);
    Bytes one;
    Bytes other;
    midi().connectSource(inputPort(one), sourceOf(recorder));
    midi().connectSource(inputPort(other), sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    EXPECT_TRUE(runUntil([&] { return one == sysEx(4) && other == sysEx(4); }));
}

TEST_P(MidiDeviceContract, APortReceivesFromAllItsSources) {
    plug(recorder);
    plug(keyboard);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    midi().connectSource(port, sourceOf(recorder));
    midi().connectSource(port, sourceOf(keyboard));
    world_->answer(recorder, sysEx(1));
    EXPECT_TRUE(runUntil([&] { return bytes == sysEx(1); }));
    bytes.clear();
    world_->answer(keyboard, sysEx(2));
    EXPECT_TRUE(runUntil([&] { return bytes == sysEx(2); }));
}

TEST_P(MidiDeviceContract, ConnectingTwiceReceivesOnce) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    EXPECT_EQ(midi().connectSource(port, sourceOf(recorder)), 0);
    EXPECT_EQ(midi().connectSource(port, sourceOf(recorder)), 0);
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(bytes, sysEx(4));
}

TEST_P(MidiDeviceContract, ADisconnectedPortReceivesNothing) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    midi().connectSource(port, sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    EXPECT_EQ(midi().disconnectSource(port, sourceOf(recorder)), 0);
    EXPECT_EQ(midi().disconnectSource(port, sourceOf(recorder)), midiUnknownObject);
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, ADisposedPortDoesntReceiveWhatIsOnItsWay) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    midi().connectSource(port, sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    midi().disposePort(port);
    settle();
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, AReaderMayDisposeOfItsPort) {
    plug(recorder);
    MidiRef port = 0;
    int calls = 0;
    port = inputPort([&](const Bytes& /*bytes*/) {
        ++calls;
        EXPECT_EQ(midi().disposePort(port), 0);
    });
    midi().connectSource(port, sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(calls, 1);
}

TEST_P(MidiDeviceContract, OnlyInputPortsConnect) {
    plug(recorder);
    EXPECT_EQ(midi().connectSource(outputPort(), sourceOf(recorder)), midiUnknownObject);
}

TEST_P(MidiDeviceContract, OnlySourcesAreConnectedTo) {
    plug(recorder);
    Bytes bytes;
    EXPECT_EQ(midi().connectSource(inputPort(bytes), destinationOf(recorder)), midiUnknownObject);
}

TEST_P(MidiDeviceContract, UnpluggingDisconnects) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    const MidiRef source = sourceOf(recorder);
    midi().connectSource(port, source);
    unplug(recorder);
    EXPECT_EQ(midi().disconnectSource(port, source), midiUnknownObject);
    plug(recorder);
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, ADeviceThatComesBackIsConnectedAnew) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    midi().connectSource(port, sourceOf(recorder));
    unplug(recorder);
    plug(recorder);
    EXPECT_EQ(midi().connectSource(port, sourceOf(recorder)), 0);
    world_->answer(recorder, sysEx(4));
    EXPECT_TRUE(runUntil([&] { return bytes == sysEx(4); }));
}

TEST_P(MidiDeviceContract, PortsMayBeMadeAThousandTimes) {
    plug(recorder);
    Bytes bytes;
    for (int i = 0; i < 1000; ++i) {
        const MidiRef input = inputPort(bytes);
        const MidiRef output = outputPort();
        ASSERT_EQ(midi().connectSource(input, sourceOf(recorder)), 0);
        ASSERT_EQ(midi().disposePort(input), 0);
        ASSERT_EQ(midi().disposePort(output), 0);
    }
}

// Sending

TEST_P(MidiDeviceContract, WhatIsSentArrives) {
    plug(recorder);
    EXPECT_EQ(send(outputPort(), destinationOf(recorder), sysEx(4)), 0);
    EXPECT_TRUE(runUntil([&] { return world_->taken(recorder) == sysEx(4); }));
}

TEST_P(MidiDeviceContract, LongMessagesAreSentWhole) {
    plug(recorder);
    const MidiRef port = outputPort();
    for (const std::size_t count : {254UL, 255UL, 600UL, 3000UL}) {
        const std::size_t before = world_->taken(recorder).size();
        EXPECT_EQ(send(port, destinationOf(recorder), sysEx(count)), 0);
        EXPECT_TRUE(runUntil([&] { return world_->taken(recorder).size() >= before + count + 2; }));
        const Bytes all = world_->taken(recorder);
        EXPECT_EQ(Bytes(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
                  sysEx(count));
    }
}

TEST_P(MidiDeviceContract, MessagesAreSentInTheirOrder) {
    plug(recorder);
    const MidiRef port = outputPort();
    Bytes all;
    for (const Bytes& message :
         {sysEx(0), sysEx(20), Bytes{0x90, 0x3C, 0x64}, Bytes{0xF8}, sysEx(6)}) {
        EXPECT_EQ(send(port, destinationOf(recorder), message), 0);
        all.insert(all.end(), message.begin(), message.end());
    }
    EXPECT_TRUE(runUntil([&] { return world_->taken(recorder).size() >= all.size(); }));
    EXPECT_EQ(world_->taken(recorder), all);
}

TEST_P(MidiDeviceContract, WhatIsSentArrivesAtItsDestinationOnly) {
    plug(recorder);
    plug(keyboard);
    const MidiRef port = outputPort();
    send(port, destinationOf(recorder), sysEx(1));
    send(port, destinationOf(keyboard), sysEx(2));
    EXPECT_TRUE(runUntil([&] { return !world_->taken(keyboard).empty(); }));
    settle();
    EXPECT_EQ(world_->taken(recorder), sysEx(1));
    EXPECT_EQ(world_->taken(keyboard), sysEx(2));
}

TEST_P(MidiDeviceContract, SendingNothingIsNoFailure) {
    plug(recorder);
    EXPECT_EQ(send(outputPort(), destinationOf(recorder), {}), 0);
}

TEST_P(MidiDeviceContract, OnlyOutputPortsSend) {
    plug(recorder);
    Bytes bytes;
    EXPECT_EQ(send(inputPort(bytes), destinationOf(recorder), sysEx(4)), midiUnknownObject);
    const MidiRef disposed = outputPort();
    midi().disposePort(disposed);
    EXPECT_EQ(send(disposed, destinationOf(recorder), sysEx(4)), midiUnknownObject);
}

TEST_P(MidiDeviceContract, OnlyDestinationsAreSentTo) {
    plug(recorder);
    EXPECT_EQ(send(outputPort(), sourceOf(recorder), sysEx(4)), midiUnknownObject);
}

TEST_P(MidiDeviceContract, NothingIsSentToWhatHasGone) {
    plug(recorder);
    const MidiRef destination = destinationOf(recorder);
    const MidiRef port = outputPort();
    EXPECT_EQ(send(port, destination, sysEx(4)), 0);
    unplug(recorder);
    EXPECT_EQ(send(port, destination, sysEx(4)), midiUnknownObject);
    EXPECT_EQ(midi().flushOutput(destination), midiUnknownObject);
}

TEST_P(MidiDeviceContract, ADeviceThatComesBackIsSentToAnew) {
    plug(recorder);
    const MidiRef port = outputPort();
    send(port, destinationOf(recorder), sysEx(1));
    EXPECT_TRUE(runUntil([&] { return !world_->taken(recorder).empty(); }));
    unplug(recorder);
    plug(recorder);
    EXPECT_EQ(send(port, destinationOf(recorder), sysEx(2)), 0);
    EXPECT_TRUE(runUntil([&] {
        const Bytes all = world_->taken(recorder);
        const Bytes last = sysEx(2);
        return all.size() >= last.size() && std::equal(last.rbegin(), last.rend(), all.rbegin());
    }));
}

TEST_P(MidiDeviceContract, EndpointsCanBeFlushed) {
    plug(recorder);
    EXPECT_EQ(midi().flushOutput(sourceOf(recorder)), 0);
    EXPECT_EQ(midi().flushOutput(destinationOf(recorder)), 0);
}

} // namespace
} // namespace deckmate
