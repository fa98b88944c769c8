#include "platform/alsa/SequencerState.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace deckmate {
namespace {

using namespace sequencerPort;
using Changes = SequencerState::Changes;
using Refs = std::vector<MidiRef>;

constexpr int ownClient = 128;
constexpr int recorder = 24;
constexpr int keyboard = 28;
constexpr unsigned readable = canRead | canSubscribeRead;
constexpr unsigned writable = canWrite | canSubscribeWrite;
constexpr unsigned duplex = readable | writable;

EndpointChange added(MidiRef endpoint) {
    return {MidiNotice::objectAdded, endpoint};
}
EndpointChange removed(MidiRef endpoint) {
    return {MidiNotice::objectRemoved, endpoint};
}

class SequencerStateTest : public testing::Test {
protected:
    /// References count up from 1: of a duplex port first the source, then the destination.
    Changes plug(int client, unsigned capabilities = duplex, int port = 0) {
        return state_.portPresent({{client, port}, "port", capabilities});
    }
    std::optional<std::string> nameOf(const std::string& client, const std::string& port) {
        state_.clientNamed(recorder, client);
        state_.portPresent({{recorder, 0}, port, readable});
        return state_.displayName(state_.sources().at(0));
    }

    MidiRef last_ = 0;
    SequencerState state_{ownClient, [this] { return ++last_; }};
};

// Which ports count

TEST_F(SequencerStateTest, AtFirstThereIsNothing) {
    EXPECT_EQ(state_.sources(), Refs{});
    EXPECT_EQ(state_.destinations(), Refs{});
}

TEST_F(SequencerStateTest, ADuplexPortIsASourceAndADestination) {
    EXPECT_EQ(plug(recorder), (Changes{added(1), added(2)}));
    EXPECT_EQ(state_.sources(), Refs{1});
    EXPECT_EQ(state_.destinations(), Refs{2});
}

TEST_F(SequencerStateTest, AReadablePortIsASource) {
    EXPECT_EQ(plug(recorder, readable), Changes{added(1)});
    EXPECT_EQ(state_.sources(), Refs{1});
    EXPECT_EQ(state_.destinations(), Refs{});
}

TEST_F(SequencerStateTest, AWritablePortIsADestination) {
    EXPECT_EQ(plug(recorder, writable), Changes{added(1)});
    EXPECT_EQ(state_.sources(), Refs{});
    EXPECT_EQ(state_.destinations(), Refs{1});
}

TEST_F(SequencerStateTest, OtherCapabilitiesDontMatter) {
    constexpr unsigned others = ~(duplex | noExport);
    EXPECT_EQ(plug(recorder, others), Changes{});
    EXPECT_EQ(plug(recorder, others | readable), Changes{added(1)});
}

TEST_F(SequencerStateTest, APortThatCantBeSubscribedToIsNone) {
    EXPECT_EQ(plug(recorder, canRead | canWrite), Changes{});
    EXPECT_EQ(plug(recorder, canSubscribeRead | canSubscribeWrite), Changes{});
    EXPECT_EQ(plug(recorder, canRead | canSubscribeWrite), Changes{});
}

TEST_F(SequencerStateTest, APortThatIsNotToBeExportedIsNone) {
    EXPECT_EQ(plug(recorder, duplex | noExport), Changes{});
}

TEST_F(SequencerStateTest, OurOwnPortsAreNone) {
    EXPECT_EQ(plug(ownClient), Changes{});
}

TEST_F(SequencerStateTest, TheSequencersPortsAreNone) {
    EXPECT_EQ(plug(0), Changes{});
}

// Coming and going

TEST_F(SequencerStateTest, EndpointsStandInTheOrderOfAppearance) {
    plug(keyboard);
    plug(recorder);
    plug(keyboard, duplex, 1);
    EXPECT_EQ(state_.sources(), (Refs{1, 3, 5}));
    EXPECT_EQ(state_.destinations(), (Refs{2, 4, 6}));
}

TEST_F(SequencerStateTest, APortThatLeavesTakesItsEndpoints) {
    plug(keyboard);
    plug(recorder);
    EXPECT_EQ(state_.portLeft({keyboard, 0}), (Changes{removed(1), removed(2)}));
    EXPECT_EQ(state_.sources(), Refs{3});
    EXPECT_EQ(state_.destinations(), Refs{4});
}

TEST_F(SequencerStateTest, APortThatIsNoEndpointLeavesInSilence) {
    plug(ownClient);
    EXPECT_EQ(state_.portLeft({ownClient, 0}), Changes{});
    EXPECT_EQ(state_.portLeft({99, 3}), Changes{});
}

TEST_F(SequencerStateTest, APortLeavesOnce) {
    plug(recorder);
    state_.portLeft({recorder, 0});
    EXPECT_EQ(state_.portLeft({recorder, 0}), Changes{});
}

TEST_F(SequencerStateTest, APortThatStartsTwiceIsThere) {
    plug(recorder);
    EXPECT_EQ(plug(recorder), Changes{});
    EXPECT_EQ(state_.sources(), Refs{1});
}

TEST_F(SequencerStateTest, ReferencesAreNotReused) {
    plug(recorder);
    state_.portLeft({recorder, 0});
    EXPECT_EQ(plug(recorder), (Changes{added(3), added(4)}));
    EXPECT_EQ(state_.addressOf(1), std::nullopt);
    EXPECT_EQ(state_.addressOf(3), (SequencerAddress{recorder, 0}));
}

TEST_F(SequencerStateTest, AClientThatLeavesTakesAllItsPorts) {
    plug(recorder, readable, 0);
    plug(keyboard, readable);
    plug(recorder, writable, 1);
    EXPECT_EQ(state_.clientLeft(recorder), (Changes{removed(1), removed(3)}));
    EXPECT_EQ(state_.sources(), Refs{2});
    EXPECT_EQ(state_.destinations(), Refs{});
}

TEST_F(SequencerStateTest, AClientWhosePortsHaveLeftLeavesInSilence) {
    plug(recorder);
    state_.portLeft({recorder, 0});
    EXPECT_EQ(state_.clientLeft(recorder), Changes{});
}

// Changing

TEST_F(SequencerStateTest, APortThatCanDoMoreHasAnotherEndpoint) {
    plug(recorder, readable);
    EXPECT_EQ(plug(recorder, duplex), Changes{added(2)});
    EXPECT_EQ(state_.sources(), Refs{1});
    EXPECT_EQ(state_.destinations(), Refs{2});
}

TEST_F(SequencerStateTest, APortThatCanDoLessLosesAnEndpoint) {
    plug(recorder, duplex);
    EXPECT_EQ(plug(recorder, writable), Changes{removed(1)});
    EXPECT_EQ(state_.sources(), Refs{});
    EXPECT_EQ(state_.destinations(), Refs{2});
}

TEST_F(SequencerStateTest, APortThatTurnsRoundLosesBeforeItGains) {
    plug(recorder, writable);
    EXPECT_EQ(plug(recorder, readable), (Changes{removed(1), added(2)}));
}

TEST_F(SequencerStateTest, APortThatIsExportedNoMoreLosesItsEndpoints) {
    plug(recorder);
    EXPECT_EQ(plug(recorder, duplex | noExport), (Changes{removed(1), removed(2)}));
}

// Names

TEST_F(SequencerStateTest, APortThatRepeatsItsClientsNameStandsAlone) {
    EXPECT_EQ(nameOf("H8 ORLO", "H8 ORLO MIDI 1"), "H8 ORLO MIDI 1");
    EXPECT_EQ(nameOf("H8 ORLO", "H8 ORLO"), "H8 ORLO");
}

TEST_F(SequencerStateTest, OtherPortsHaveTheirClientInFront) {
    EXPECT_EQ(nameOf("Synth", "Out 1"), "Synth Out 1");
    EXPECT_EQ(nameOf("Synth", "synth out"), "Synth synth out");
    EXPECT_EQ(nameOf("H8 ORLO", "MIDI of H8 ORLO"), "H8 ORLO MIDI of H8 ORLO");
}

TEST_F(SequencerStateTest, EmptyNamesAreNames) {
    EXPECT_EQ(nameOf("", "Out"), "Out");
    EXPECT_EQ(nameOf("", ""), "");
    EXPECT_EQ(nameOf("Synth", ""), "Synth ");
}

TEST_F(SequencerStateTest, NamesMayHoldAnyBytes) {
    const std::string port = "\xff\xfe\n" + std::string(5000, 'x');
    EXPECT_EQ(nameOf("\xc3", port), "\xc3 " + port);
}

TEST_F(SequencerStateTest, AClientWithoutANameLeavesThePortsAlone) {
    plug(recorder);
    EXPECT_EQ(state_.displayName(1), "port");
}

TEST_F(SequencerStateTest, ARenamedClientRenamesItsEndpoints) {
    state_.clientNamed(recorder, "Client-24");
    plug(recorder);
    state_.clientNamed(recorder, "H8 ORLO");
    EXPECT_EQ(state_.displayName(1), "H8 ORLO port");
    EXPECT_EQ(state_.displayName(2), "H8 ORLO port");
}

TEST_F(SequencerStateTest, ARenamedPortRemainsTheSameEndpoint) {
    plug(recorder);
    EXPECT_EQ(state_.portPresent({{recorder, 0}, "new", duplex}), Changes{});
    EXPECT_EQ(state_.displayName(1), "new");
}

TEST_F(SequencerStateTest, WhatHasGoneHasNoName) {
    plug(recorder);
    state_.portLeft({recorder, 0});
    EXPECT_EQ(state_.displayName(1), std::nullopt);
    EXPECT_EQ(state_.displayName(0), std::nullopt);
    EXPECT_EQ(state_.displayName(77), std::nullopt);
}

TEST_F(SequencerStateTest, ALaterClientOfTheSameNumberHasItsOwnName) {
    nameOf("H8 ORLO", "MIDI");
    state_.clientLeft(recorder);
    plug(recorder);
    EXPECT_EQ(state_.displayName(2), "port");
}

// Addresses

TEST_F(SequencerStateTest, EndpointsHaveTheirPortsAddress) {
    plug(recorder, duplex, 3);
    EXPECT_EQ(state_.addressOf(1), (SequencerAddress{recorder, 3}));
    EXPECT_EQ(state_.addressOf(2), (SequencerAddress{recorder, 3}));
    EXPECT_EQ(state_.addressOf(0), std::nullopt);
}

TEST_F(SequencerStateTest, SourcesAreFoundByAddress) {
    plug(recorder, duplex, 3);
    plug(keyboard, writable);
    EXPECT_EQ(state_.sourceAt({recorder, 3}), 1U);
    EXPECT_EQ(state_.sourceAt({recorder, 2}), 0U);
    EXPECT_EQ(state_.sourceAt({keyboard, 0}), 0U);
}

// Scanning anew

SequencerListing listing(int client, const std::string& name, unsigned capabilities = duplex) {
    return {client, name, {{{client, 0}, "port", capabilities}}};
}

TEST_F(SequencerStateTest, AScanFindsAll) {
    const Changes changes =
        state_.rescanned({listing(0, "System"), listing(recorder, "H8 ORLO"),
                          listing(keyboard, "Keys", readable), listing(ownClient, "we")});
    EXPECT_EQ(changes, (Changes{added(1), added(2), added(3)}));
    EXPECT_EQ(state_.sources(), (Refs{1, 3}));
    EXPECT_EQ(state_.displayName(3), "Keys port");
}

TEST_F(SequencerStateTest, AScanOfTheSameChangesNothing) {
    state_.rescanned({listing(recorder, "H8 ORLO")});
    EXPECT_EQ(state_.rescanned({listing(recorder, "H8 ORLO")}), Changes{});
    EXPECT_EQ(state_.sources(), Refs{1});
}

TEST_F(SequencerStateTest, AScanRemovesBeforeItAdds) {
    state_.rescanned({listing(recorder, "H8 ORLO"), listing(keyboard, "Keys")});
    EXPECT_EQ(state_.rescanned({listing(14, "Through"), listing(keyboard, "Keys")}),
              (Changes{removed(1), removed(2), added(5), added(6)}));
    EXPECT_EQ(state_.sources(), (Refs{3, 5}));
}

TEST_F(SequencerStateTest, AScanRemovesBeforeItAddsWhenPortsTurnRound) {
    state_.rescanned({listing(recorder, "H8 ORLO", readable), listing(keyboard, "Keys", readable)});
    EXPECT_EQ(state_.rescanned(
                  {listing(recorder, "H8 ORLO", writable), listing(keyboard, "Keys", writable)}),
              (Changes{removed(1), removed(2), added(3), added(4)}));
}

TEST_F(SequencerStateTest, AScanTakesAPortOfAnotherNameForAnotherPort) {
    state_.rescanned({{recorder, "client", {{{recorder, 0}, "before", duplex}}}});
    EXPECT_EQ(state_.rescanned({{recorder, "client", {{{recorder, 0}, "after", duplex}}}}),
              (Changes{removed(1), removed(2), added(3), added(4)}));
    EXPECT_EQ(state_.displayName(3), "client after");
}

TEST_F(SequencerStateTest, AScanRenamesClients) {
    state_.rescanned({listing(recorder, "before")});
    state_.rescanned({listing(recorder, "after")});
    EXPECT_EQ(state_.displayName(1), "after port");
}

TEST_F(SequencerStateTest, AScanOfNothingRemovesAll) {
    state_.rescanned({listing(recorder, "H8 ORLO"), listing(keyboard, "Keys", readable)});
    EXPECT_EQ(state_.rescanned({}), (Changes{removed(1), removed(2), removed(3)}));
    EXPECT_EQ(state_.sources(), Refs{});
    EXPECT_EQ(state_.destinations(), Refs{});
}

} // namespace
} // namespace deckmate
