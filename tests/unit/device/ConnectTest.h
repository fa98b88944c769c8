// A recorder that is asked who it is as soon as it has been connected.
#pragma once

#include "DeviceTest.h"

#include <cstddef>
#include <vector>

namespace deckmate::test {

/// The parameter: whether the MIDI system has event lists.
class ConnectTest : public DeviceTest, public testing::WithParamInterface<bool> {
protected:
    ConnectTest() : DeviceTest(GetParam()) {
        user.onConnected = [this] { sequences().startConnectSeq([this] { ++completions; }); };
    }

    /// Answers the first requests, and leaves the next one waiting.
    InProcessDevice& connectAndAnswer(std::size_t count) {
        InProcessDevice& device = connect();
        for (std::size_t i = 0; i < count; ++i) {
            device.answer(replies[i]);
        }
        return device;
    }

    const std::vector<Bytes> replies = {
        reply::identity,    reply::applicationStarted, reply::version, reply::cardState,
        reply::batteryType, reply::autoPowOff,         reply::dateSet};
    /// All but the last one, which tells the time.
    const std::vector<Bytes> requests = {request::identity,    request::applicationStart,
                                         request::version,     request::cardState,
                                         request::batteryType, request::autoPowOff};
    int completions = 0;
};

} // namespace deckmate::test
