// What the contract tests of Midi have in common.
#pragma once

#include "MidiWorld.h"
#include "platform/Midi.h"
#include "platform/UmpTranslation.h"
#include "platform/qt/QtRunLoop.h"
#include "support/Bytes.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace deckmate::test {

using Notices = std::vector<MidiNotice>;

inline const std::string recorder = "H8 ORLO Contract";
inline const std::string keyboard = "Keyboard Contract";

/// F0, so many data bytes, F7.
inline Bytes sysEx(std::size_t count) {
    Bytes bytes = {0xF0};
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(i % 100));
    }
    bytes.push_back(0xF7);
    return bytes;
}

class MidiContractTest : public testing::TestWithParam<Kind> {
protected:
    bool runUntil(const std::function<bool()>& isDone) {
        return loop_.runUntil(isDone, std::chrono::seconds(60));
    }
    /// Everything that is on its way has arrived, and then some time passed.
    void settle() {
        bool isReached = false;
        const std::unique_ptr<Timer> timer = loop_.makeTimer();
        timer->startOnce(std::chrono::milliseconds(20), [&] { isReached = true; });
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

inline std::string nameOf(const testing::TestParamInfo<Kind>& kind) {
    return kind.param.name;
}

} // namespace deckmate::test
