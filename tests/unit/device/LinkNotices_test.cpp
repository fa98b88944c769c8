// What the link makes of scans, notices and unplugging in each of its states.
#include "DeviceTest.h"

#include <tuple>

namespace deckmate::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using State = MIDIManager::State;

std::string pathName(bool hasEventLists) {
    return hasEventLists ? "Events" : "Bytes";
}

class LinkNotices : public DeviceTest, public testing::WithParamInterface<bool> {
protected:
    LinkNotices() : DeviceTest(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Paths, LinkNotices, testing::Bool(),
                         [](const auto& path) { return pathName(path.param); });

/// With a recorder and in a state that lasts.
class LinkInState : public DeviceTest, public testing::WithParamInterface<std::tuple<bool, State>> {
protected:
    LinkInState() : DeviceTest(std::get<0>(GetParam())) {
        user.connects = state > State::found;
        in = &midi.addDevice("H8 ORLO MIDI 1", Ends::source);
        out = &midi.addDevice("H8 ORLO MIDI 1", Ends::destination);
        loop.runPending();
        if (state == State::connected) {
            loop.advance(1s);
        }
        EXPECT_EQ(manager().state(), state);
        user.heard.clear();
    }
    void expectGone() {
        EXPECT_EQ(manager().state(), State::disconnected);
        EXPECT_THAT(user.heard, ElementsAre("disconnected"));
        EXPECT_EQ(midi.ports(), 0U);
        EXPECT_EQ(midi.connections(), 0U);
        EXPECT_EQ(loop.activeTimers(), 0U);
    }

    const State state = std::get<1>(GetParam());
    InProcessDevice* in = nullptr; ///< the recorder's ends
    InProcessDevice* out = nullptr;
};

INSTANTIATE_TEST_SUITE_P(States, LinkInState,
                         testing::Combine(testing::Bool(),
                                          testing::Values(State::found, State::settling,
                                                          State::connected)),
                         [](const auto& row) {
                             const State state = std::get<1>(row.param);
                             return pathName(std::get<0>(row.param)) +
                                    (state == State::found      ? "Found"
                                     : state == State::settling ? "Settling"
                                                                : "Connected");
                         });

// A removal may be seen by a scan before its notice comes.
TEST_P(LinkInState, AScanThatMissesTheSourceEndsTheLinkOnce) {
    midi.removeDevice(*in);
    manager().scanOrloDevice();
    expectGone();
    loop.runPending();
    expectGone();
}

TEST_P(LinkInState, AScanThatMissesTheDestinationEndsTheLinkOnce) {
    midi.removeDevice(*out);
    manager().scanOrloDevice();
    expectGone();
    loop.runPending();
    expectGone();
}

TEST_P(LinkInState, AnEndThatLosesItsNameIsMissed) {
    in->hasName = false;
    manager().scanOrloDevice();
    expectGone();
}

TEST_P(LinkInState, AScanThatFindsBothEndsChangesNothing) {
    manager().scanOrloDevice();
    EXPECT_EQ(manager().state(), state);
    EXPECT_THAT(user.heard, IsEmpty());
}

TEST_P(LinkInState, OneNoticeForEachEndThatGoesIsOneDisconnection) {
    midi.removeDevice(*in);
    midi.removeDevice(*out);
    loop.runPending();
    expectGone();
}

TEST_P(LinkInState, NothingComesAfterIt) {
    unplug(*in);
    loop.advance(1h);
    expectGone();
    manager().connect();
    expectGone();
}

TEST_P(LinkInState, OtherNoticesChangeNothing) {
    for (const MidiNotice notice : {MidiNotice::setupChanged, MidiNotice::propertyChanged,
                                    MidiNotice{0}, MidiNotice{5}, MidiNotice{6}, MidiNotice{-1}}) {
        midi.notifyLater(notice);
        loop.runPending();
        EXPECT_EQ(manager().state(), state);
    }
    EXPECT_THAT(user.heard, IsEmpty());
}

TEST_P(LinkNotices, OtherNoticesDontFindARecorderThatIsThere) {
    connect();
    manager().DeviceDisconnected();
    user.heard.clear();
    for (const MidiNotice notice : {MidiNotice::setupChanged, MidiNotice::propertyChanged,
                                    MidiNotice{0}, MidiNotice{5}, MidiNotice{6}, MidiNotice{-1}}) {
        midi.notifyLater(notice);
        loop.runPending();
        EXPECT_EQ(manager().state(), State::disconnected);
    }
    EXPECT_THAT(user.heard, IsEmpty());
    midi.notifyLater(MidiNotice::objectAdded);
    loop.runPending();
    EXPECT_THAT(user.heard, ElementsAre("found"));
}

TEST_P(LinkNotices, AScanWithoutARecorderEndsAnyStateButTheFirst) {
    for (const std::uint64_t state : {1, 2, 3, 4, 5, 6}) {
        manager().changeStateTo(state);
        manager().scanOrloDevice();
        EXPECT_EQ(manager().state(), State::disconnected);
        EXPECT_THAT(user.heard, ElementsAre("disconnected")) << state;
        user.heard.clear();
    }
    manager().scanOrloDevice();
    EXPECT_THAT(user.heard, IsEmpty());
}

TEST_P(LinkNotices, ARecorderIsFoundInTheStatesBelowFoundOnly) {
    user.connects = false;
    midi.addDevice("H8 ORLO MIDI 1");
    for (const std::uint64_t state : {0, 1, 2, 3, 4, 5, 6}) {
        manager().changeStateTo(state);
        manager().scanOrloDevice();
        EXPECT_EQ(user.heard.size(), state < 2 ? 1U : 0U) << state;
        EXPECT_EQ(manager().state(), state < 2 ? 2U : state);
        user.heard.clear();
    }
}

TEST_P(LinkNotices, ASecondThatEndsInAnotherStateConnectsNothing) {
    plug();
    manager().changeStateTo(State::connecting);
    loop.advance(1s);
    EXPECT_EQ(manager().state(), State::connecting);
    EXPECT_THAT(user.heard, ElementsAre("found"));
}

// Without a second call, since nothing that its reader could see has changed.
TEST_P(LinkNotices, UntilItIsConnectedTheLastScanTellsTheRecorder) {
    user.connects = false;
    InProcessDevice& first = plug();
    InProcessDevice& second = plug();
    midi.removeDevice(first);
    manager().scanOrloDevice();
    manager().connect();
    manager().send(request::identity);
    EXPECT_THAT(second.messages, ElementsAre(request::identity));
    EXPECT_THAT(user.heard, ElementsAre("found"));
}

TEST_P(LinkNotices, AScanKeepsTheRecorderThatIsInUse) {
    midi.addDevice("Piano");
    InProcessDevice& device = connect();
    plug();
    manager().scanOrloDevice();
    manager().send(request::identity);
    EXPECT_THAT(device.messages, ElementsAre(request::identity));
}

TEST_P(LinkNotices, WhatHasNoNameIsUnknown) {
    InProcessDevice& device = midi.addDevice("H8 ORLO MIDI 1");
    EXPECT_EQ(NameOfEndpoint(device.source()), "H8 ORLO MIDI 1");
    device.hasName = false;
    EXPECT_EQ(NameOfEndpoint(device.source()), "Unknown name");
    EXPECT_EQ(NameOfEndpoint(device.destination()), "Unknown name");
    midi.removeDevice(device);
    EXPECT_EQ(NameOfEndpoint(device.source()), "Unknown name");
    EXPECT_EQ(NameOfEndpoint(0), "Unknown name");
}

TEST_P(LinkNotices, WhatHasNoNameIsPassedOver) {
    InProcessDevice& nameless = midi.addDevice("H8 ORLO MIDI 1");
    nameless.hasName = false;
    loop.runPending();
    EXPECT_EQ(manager().state(), State::disconnected);
    InProcessDevice& device = connect();
    manager().send(request::identity);
    EXPECT_THAT(nameless.messages, IsEmpty());
    EXPECT_THAT(device.messages, ElementsAre(request::identity));
}

/// Unplugged when so many of the first questions have been answered.
class LinkUnplugged : public DeviceTest,
                      public testing::WithParamInterface<std::tuple<bool, std::size_t>> {
protected:
    LinkUnplugged() : DeviceTest(std::get<0>(GetParam())) {
        user.onConnected = [this] { sequences().startConnectSeq([this] { ++completions; }); };
    }

    const std::size_t answered = std::get<1>(GetParam());
    int completions = 0;
};

INSTANTIATE_TEST_SUITE_P(Steps, LinkUnplugged,
                         testing::Combine(testing::Bool(), testing::Range(0UL, 8UL)),
                         [](const auto& row) {
                             return pathName(std::get<0>(row.param)) +
                                    std::to_string(std::get<1>(row.param));
                         });

TEST_P(LinkUnplugged, TheUserHearsItOnce) {
    InProcessDevice& device = connect();
    for (std::size_t i = 0; i < answered; ++i) {
        device.answer(reply::all()[i]);
    }
    unplug(device);
    EXPECT_THAT(user.heard, ElementsAre("found", "connected", "disconnected"));
    EXPECT_EQ(manager().state(), State::disconnected);
    EXPECT_EQ(midi.ports(), 0U);
    EXPECT_EQ(midi.connections(), 0U);
    loop.advance(1h);
    EXPECT_EQ(user.heard.size(), 3U);
    EXPECT_EQ(completions, answered == 7 ? 1 : 0);
}

// Only the first two questions have a time-out: it has always been so.
TEST_P(LinkUnplugged, TheSequenceIsLeftToItsTimeOut) {
    InProcessDevice& device = connect();
    for (std::size_t i = 0; i < answered; ++i) {
        device.answer(reply::all()[i]);
    }
    unplug(device);
    EXPECT_EQ(sequences().isSeqRunning(), answered < 7);
    EXPECT_EQ(loop.activeTimers(), answered < 2 ? 1U : 0U);
    loop.advance(2s);
    EXPECT_EQ(sequences().isSeqRunning(), answered >= 2 && answered < 7);
    EXPECT_EQ(loop.activeTimers(), 0U);
}

} // namespace
} // namespace deckmate::test
