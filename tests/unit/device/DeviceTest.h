// A recorder in the hands of a test, and one who uses the link to it as the main window does.
#pragma once

#include "platform/RunLoop.h"
#include "support/Bytes.h"
#include "support/DeviceMessages.h"
#include "support/InProcessMidi.h"
#include "support/LinkUser.h"
#include "support/ManualRunLoop.h"

#include <chrono>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace deckmate::test {

using namespace std::chrono_literals;

/// Notes what it hears.
class NotingUser final : public LinkUser {
public:
    std::vector<std::string> heard;
    bool connects = true;
    std::function<void()> onConnected;
    std::vector<bool> lastFlags; ///< of byte packets

    void MIDIManagerFound() override {
        heard.emplace_back("found");
        if (connects) {
            LinkUser::MIDIManagerFound();
        }
    }
    void MIDIManagerConnected() override {
        heard.emplace_back("connected");
        if (onConnected) {
            onConnected();
        }
    }
    void MIDIManagerDisconnected() override { heard.emplace_back("disconnected"); }
    void MIDIManagerReceivedData_iOS13(const MIDIPacket& packet, bool isLast) override {
        lastFlags.push_back(isLast);
        LinkUser::MIDIManagerReceivedData_iOS13(packet, isLast);
    }
};

/// With the MIDI system of older machines (bytes) or newer ones (event lists).
class DeviceTest : public testing::Test {
protected:
    explicit DeviceTest(bool hasEventLists = false) : midi(hasEventLists) {
        testing::internal::CaptureStdout(); // where what is received is logged
    }
    ~DeviceTest() override { testing::internal::GetCapturedStdout(); }
    DeviceTest(const DeviceTest&) = delete;
    DeviceTest& operator=(const DeviceTest&) = delete;
    DeviceTest(DeviceTest&&) = delete;
    DeviceTest& operator=(DeviceTest&&) = delete;

    InProcessDevice& plug(const std::string& name = "H8 ORLO MIDI 1") {
        InProcessDevice& device = midi.addDevice(name);
        loop.runPending();
        return device;
    }
    void unplug(InProcessDevice& device) {
        midi.removeDevice(device);
        loop.runPending();
    }
    /// Plugs the recorder in and waits until it has settled.
    InProcessDevice& connect() {
        InProcessDevice& device = plug();
        loop.advance(1s);
        return device;
    }

    static MIDIManager& manager() { return MIDIManager::get(); }
    static MIDISequenceManager& sequences() { return MIDISequenceManager::get(); }
    static ORLODeviceInfo& info() { return MIDISequenceManager::getDeviceInfo(); }

    ManualRunLoop loop;
    InProcessMidi midi;
    NotingUser user;
};

} // namespace deckmate::test
