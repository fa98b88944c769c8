// Any packets at any time: both ways of receiving, the sequences, and a cable that comes and goes.
#include "device/MIDISequenceManager.h"
#include "support/DeviceMessages.h"
#include "support/InProcessMidi.h"
#include "support/LinkUser.h"
#include "support/ManualRunLoop.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace deckmate;
using namespace deckmate::test;
using Payload = std::span<const std::uint8_t>;

void require(bool isTrue) {
    if (!isTrue) {
        std::abort();
    }
}

class Window final : public LinkUser {
public:
    void MIDIManagerConnected() override { startConnect(); }
    static void startConnect() {
        MIDISequenceManager::get().startConnectSeq(
            [] { require(MIDISequenceManager::getDeviceInfo().sdUsedSize.size() < 20); });
    }
};

/// Plays what the input says: steps of a number, a length and as many bytes.
class Player {
public:
    explicit Player(bool hasEventLists) : midi_(hasEventLists) {}

    void step(std::uint8_t kind, Payload payload) {
        const std::uint8_t first = payload.empty() ? 0 : payload.front();
        switch (kind % 8) {
        case 0:
            answer(payload);
            break;
        case 1:
            answerWords(payload);
            break;
        case 2:
            loop_.advance(std::chrono::milliseconds(20) * first);
            break;
        case 3:
            plugOrUnplug();
            break;
        case 4:
            Window::startConnect();
            break;
        case 5:
            MIDISequenceManager::get().startChangeBatteryTypeSeq(first, nullptr);
            break;
        case 6:
            MIDISequenceManager::get().startChangeAutoPowOffSeq(first, nullptr);
            break;
        default:
            answer(reply::all()[first % reply::all().size()]);
            break;
        }
        loop_.runPending();
        require(MIDISequenceManager::message().size() <= MIDISequenceManager::capacity);
    }

private:
    void plugOrUnplug() {
        if (device_ != nullptr) {
            midi_.removeDevice(*device_);
            device_ = nullptr;
        } else {
            device_ = &midi_.addDevice("H8 ORLO MIDI 1");
        }
    }

    void answer(Payload payload) {
        if (device_ != nullptr) {
            device_->answer({payload.begin(), payload.end()});
        }
    }

    void answerWords(Payload payload) {
        InProcessDevice::Words words(std::min<std::size_t>(payload.size() / 4, 64));
        if (device_ == nullptr || words.empty()) {
            return;
        }
        std::memcpy(words.data(), payload.data(), words.size() * 4);
        device_->answerEvents({words});
    }

    ManualRunLoop loop_;
    InProcessMidi midi_;
    Window window_;
    InProcessDevice* device_ = nullptr;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    // Where what is received is logged.
    const int nowhere = open("/dev/null", O_WRONLY);
    return dup2(nowhere, STDOUT_FILENO) < 0 ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Payload left(data, size);
    if (left.empty()) {
        return 0;
    }
    Player player(left.front() % 2 != 0);
    left = left.subspan(1);
    while (left.size() >= 2) {
        const std::uint8_t kind = left[0];
        const std::size_t length = std::min<std::size_t>(left[1], left.size() - 2);
        player.step(kind, left.subspan(2, length));
        left = left.subspan(2 + length);
    }
    return 0;
}
