// What only the sequencer's back end has to cope with, on machines that have a sequencer.
#include "platform/alsa/AlsaMidi.h"

#include "platform/Midi.h"
#include "platform/UmpTranslation.h"
#include "platform/alsa/MidiPath.h"
#include "platform/alsa/SequencerClient.h"
#include "platform/qt/QtRunLoop.h"
#include "support/Bytes.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace deckmate {
namespace {

using namespace std::chrono_literals;
using test::Bytes;

constexpr unsigned duplex = sequencerPort::canRead | sequencerPort::canSubscribeRead |
                            sequencerPort::canWrite | sequencerPort::canSubscribeWrite;

/// Another program: a client with one port.
class Other {
public:
    Other(const std::string& client, const std::string& port, unsigned capabilities = duplex) {
        std::string error;
        sequencer_ = SequencerClient::open(error);
        if (!sequencer_) {
            ADD_FAILURE() << error;
            std::abort();
        }
        sequencer_->setName(client);
        sequencer_->start({});
        port_ = sequencer_->createPort(port, capabilities).value_or(-1);
        EXPECT_GE(port_, 0);
    }

    void rename(const std::string& client) { sequencer_->setName(client); }
    void addPort(const std::string& port) {
        EXPECT_NE(sequencer_->createPort(port, duplex), std::nullopt);
    }
    bool send(const Bytes& bytes) {
        return sequencer_->sendPiece(port_, SequencerClient::subscribers, bytes);
    }

private:
    std::unique_ptr<SequencerClient> sequencer_;
    int port_ = -1;
};

class AlsaMidiContract : public testing::TestWithParam<std::string> {
protected:
    bool runUntil(const std::function<bool()>& isDone) { return loop_.runUntil(isDone, 60s); }
    void settle() {
        loop_.runUntil([] { return false; }, 50ms);
    }

    MidiRef sourceOf(const std::string& name) const {
        for (std::size_t i = 0; i < midi_->numberOfSources(); ++i) {
            if (midi_->displayName(midi_->source(i)) == name) {
                return midi_->source(i);
            }
        }
        return 0;
    }
    bool appears(const std::string& name) {
        return runUntil([&] { return sourceOf(name) != 0; });
    }
    /// Connects a port for packet lists that adds what it receives to `taken_`.
    void listenTo(const std::string& name) {
        MidiRef port = 0;
        EXPECT_EQ(midi_->createInputPort(
                      client_, "Input",
                      [this](const MIDIPacketList& packets) {
                          MIDIPacketList::Walk walk(packets);
                          while (const MIDIPacket* packet = walk.next()) {
                              taken_.insert(taken_.end(), packet->data.begin(),
                                            packet->data.begin() + packet->length);
                          }
                      },
                      port),
                  0);
        EXPECT_EQ(midi_->connectSource(port, sourceOf(name)), 0);
    }
    void listenToEventsOf(const std::string& name) {
        MidiRef port = 0;
        EXPECT_EQ(midi_->createInputPort(
                      client_, "Input",
                      [this](const MIDIEventList& events) {
                          for (const MIDIEventPacket& packet : events.packets) {
                              decodeUmp(std::span(packet.words).first(packet.wordCount), taken_);
                          }
                      },
                      port),
                  0);
        EXPECT_EQ(midi_->connectSource(port, sourceOf(name)), 0);
    }
    /// Sends until what the back end has not yet read overflows.
    static void flood(Other& other) {
        Bytes noise(250, 0x11);
        int sent = 0;
        while (other.send(noise) && sent < 10'000) {
            ++sent;
        }
        EXPECT_LT(sent, 10'000);
    }

    QtRunLoop loop_;
    std::unique_ptr<Midi> midi_ = makeAlsaMidi();
    int added_ = 0;
    int removed_ = 0;
    MidiRef client_ = midi_->createClient("Contract", [this](MidiNotice notice) {
        ++(notice == MidiNotice::objectAdded ? added_ : removed_);
    });
    Bytes taken_;
};

std::vector<std::string> sequencers() {
    if (access("/dev/snd/seq", R_OK | W_OK) == 0) {
        return {"Sequencer"};
    }
    return {};
}
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AlsaMidiContract);
INSTANTIATE_TEST_SUITE_P(All, AlsaMidiContract, testing::ValuesIn(sequencers()),
                         [](const auto& kind) { return kind.param; });

TEST_P(AlsaMidiContract, WhoWasThereBeforeIsFoundWithoutANotice) {
    midi_ = nullptr;
    const Other other("H8 ORLO Early", "H8 ORLO Early MIDI 1");
    midi_ = makeAlsaMidi();
    EXPECT_NE(sourceOf("H8 ORLO Early MIDI 1"), 0U);
    settle();
    EXPECT_EQ(added_, 0);
}

TEST_P(AlsaMidiContract, ADeviceIsKnownByTheNameOfItsPort) {
    const Other other("H8 ORLO", "H8 ORLO MIDI 1");
    EXPECT_TRUE(appears("H8 ORLO MIDI 1"));
}

TEST_P(AlsaMidiContract, AProgramIsKnownByItsNameAndThatOfItsPort) {
    const Other other("Contract Synth", "Out");
    EXPECT_TRUE(appears("Contract Synth Out"));
}

// Not before: the kernel tells nobody of the new name itself.
TEST_P(AlsaMidiContract, ARenamedProgramIsKnownByItsNewNameFromItsNextPortOn) {
    Other other("Contract Synth", "Out");
    EXPECT_TRUE(appears("Contract Synth Out"));
    other.rename("Contract Organ");
    other.addPort("In");
    EXPECT_TRUE(appears("Contract Organ In"));
    EXPECT_TRUE(appears("Contract Organ Out"));
    EXPECT_EQ(removed_, 0);
}

TEST_P(AlsaMidiContract, APortThatNobodyCanSubscribeToIsNoNews) {
    const Other direct("Contract Direct", "Out", sequencerPort::canRead | sequencerPort::canWrite);
    const Other hidden("Contract Hidden", "Out", duplex | sequencerPort::noExport);
    settle();
    EXPECT_EQ(added_, 0);
}

TEST_P(AlsaMidiContract, LargePiecesAreReadInOne) {
    Other other("Contract Large", "Out");
    EXPECT_TRUE(appears("Contract Large Out"));
    listenTo("Contract Large Out");
    Bytes piece(40'000, 0x11);
    piece.front() = 0xF0;
    piece.back() = 0xF7;
    EXPECT_TRUE(other.send(piece));
    EXPECT_TRUE(runUntil([&] { return taken_.size() >= piece.size(); }));
    EXPECT_EQ(taken_, piece);
}

TEST_P(AlsaMidiContract, WhoComesWhileInputOverflowsIsFound) {
    Other loud("Contract Loud", "Out");
    EXPECT_TRUE(appears("Contract Loud Out"));
    listenTo("Contract Loud Out");
    added_ = 0;
    flood(loud);
    const Other late("Contract Late", "Out");
    EXPECT_TRUE(appears("Contract Late Out"));
    EXPECT_TRUE(runUntil([&] { return added_ == 2; }));
    settle();
    EXPECT_EQ(added_, 2);
    EXPECT_EQ(removed_, 0);
}

TEST_P(AlsaMidiContract, WhoGoesWhileInputOverflowsIsMissed) {
    Other loud("Contract Loud", "Out");
    auto early = std::make_unique<Other>("Contract Early", "Out");
    EXPECT_TRUE(appears("Contract Loud Out"));
    EXPECT_TRUE(appears("Contract Early Out"));
    listenTo("Contract Loud Out");
    flood(loud);
    early = nullptr;
    EXPECT_TRUE(runUntil([&] { return removed_ == 2; }));
    EXPECT_EQ(sourceOf("Contract Early Out"), 0U);
    EXPECT_NE(sourceOf("Contract Loud Out"), 0U);
}

TEST_P(AlsaMidiContract, ConnectionsOutliveAnOverflow) {
    Other loud("Contract Loud", "Out");
    EXPECT_TRUE(appears("Contract Loud Out"));
    listenTo("Contract Loud Out");
    flood(loud);
    settle();
    taken_.clear();
    const Bytes message = {0xF0, 1, 2, 3, 0xF7};
    EXPECT_TRUE(loud.send(message));
    EXPECT_TRUE(runUntil([&] { return taken_ == message; }));
}

TEST_P(AlsaMidiContract, WhoIsReplacedWhileInputOverflowsIsAnotherOne) {
    auto early = std::make_unique<Other>("Contract Early", "Out");
    EXPECT_TRUE(appears("Contract Early Out"));
    const MidiRef first = sourceOf("Contract Early Out");
    listenTo("Contract Early Out");
    Other loud("Contract Loud", "Out");
    EXPECT_TRUE(appears("Contract Loud Out"));
    listenTo("Contract Loud Out");
    flood(loud);
    early = nullptr; // the next program gets its number
    early = std::make_unique<Other>("Contract Early", "Out");
    added_ = 0;
    EXPECT_TRUE(runUntil([&] { return added_ == 2; }));
    EXPECT_EQ(removed_, 2);
    EXPECT_NE(sourceOf("Contract Early Out"), first);
}

TEST_P(AlsaMidiContract, AMessageThatAnOverflowCutsIsNotJoinedWithTheNext) {
    Other loud("Contract Loud", "Out");
    EXPECT_TRUE(appears("Contract Loud Out"));
    listenToEventsOf("Contract Loud Out");
    EXPECT_TRUE(loud.send({0xF0, 1, 2, 3}));
    settle();
    flood(loud);
    settle();
    EXPECT_TRUE(loud.send({4, 0xF7}));
    EXPECT_TRUE(loud.send({0xF0, 5, 0xF7}));
    EXPECT_TRUE(runUntil([&] { return !taken_.empty(); }));
    EXPECT_EQ(taken_, (Bytes{0xF0, 5, 0xF7}));
}

} // namespace
} // namespace deckmate
