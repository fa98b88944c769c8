#include "desktop/monkey/Recorder.h"

#include "support/DeviceMessages.h"

#include <optional>
#include <random>
#include <utility>

namespace deckmate::test {

namespace {

std::optional<Bytes> replyTo(const Bytes& message) {
    const std::vector<std::pair<Bytes, Bytes>> answers = {
        {request::identity, reply::identity},
        {request::applicationStart, reply::applicationStarted},
        {request::version, reply::version},
        {request::cardState, reply::cardState},
        {request::batteryType, reply::batteryType},
        {request::autoPowOff, reply::autoPowOff},
    };
    for (const auto& [question, answer] : answers) {
        if (message == question) {
            return answer;
        }
    }
    constexpr std::size_t setting = 5; // what is set: the date, the battery, automatic power-off
    if (message.size() <= setting || message[4] != 0x31) {
        return std::nullopt;
    }
    switch (message[setting]) {
    case 0:
        return reply::dateSet;
    case 1:
        return reply::batteryTypeSet;
    default:
        return reply::autoPowOffSet;
    }
}

} // namespace

void Recorder::plug() {
    if (device_ != nullptr) {
        midi_.removeDevice(*std::exchange(device_, nullptr));
        return;
    }
    device_ = &midi_.addDevice("H8 ORLO MIDI 1");
    device_->onMessage = [this](const Bytes& message) { asked(message); };
    answerOwed();
}

void Recorder::pullAllOut() {
    if (device_ != nullptr) {
        plug();
    }
    if (other_ != nullptr) {
        plugOther();
    }
}

void Recorder::muzzle(bool isSilent) {
    isSilent_ = isSilent;
    answerOwed();
}

// A sequence that has begun waits for ever for the next answer: without these, one silence would be
// the last that is heard of any recorder.
void Recorder::answerOwed() {
    if (!isSilent_ && device_ != nullptr) {
        for (const Bytes& message : std::exchange(owed_, {})) {
            device_->answerLater(message);
        }
    }
}

void Recorder::asked(const Bytes& request) {
    if (const std::optional<Bytes> message = replyTo(request)) {
        answer(*message);
    }
}

void Recorder::answer(const Bytes& message) {
    if (isSilent_ || device_ == nullptr) {
        owed_.push_back(message);
    } else {
        device_->answerLater(message);
    }
}

void Recorder::report(std::uint64_t which) {
    if (device_ == nullptr) {
        return;
    }
    std::mt19937_64 random(which);
    Bytes message = reply::cardState;
    const auto data = [&random] { return static_cast<std::uint8_t>(random() & 0x7FU); };
    switch (random() % 4) {
    case 0:
        message[6] = 0; // no card
        break;
    case 1:
        message.resize(message.size() + random() % 20 - 10, 0);
        break;
    default:
        for (std::size_t i = 7; i + 1 < message.size(); ++i) {
            message[i] = data();
        }
        break;
    }
    if (random() % 8 == 0) {
        message.pop_back(); // begun, and never ended
    }
    device_->answerLater(message);
}

void Recorder::plugOther() {
    if (other_ != nullptr) {
        midi_.removeDevice(*std::exchange(other_, nullptr));
    } else {
        other_ = &midi_.addDevice("Keys 25");
    }
}

} // namespace deckmate::test
