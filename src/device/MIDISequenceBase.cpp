#include "device/MIDISequenceBase.h"

#include "device/MIDICommon.h"
#include "platform/RunLoop.h"

#include <chrono>

namespace deckmate {

std::unique_ptr<Timer>& MIDISequenceBase::S_TIMER_TIMEOUT() {
    // Never destroyed: a timer can't outlive the main loop.
    static auto* const timer = new std::unique_ptr<Timer>;
    return *timer;
}

void MIDISequenceBase::cleanTimeOutTimer() {
    S_TIMER_TIMEOUT().reset();
}

void MIDISequenceBase::markTimeOut(double seconds) {
    cleanTimeOutTimer();
    MIDICommon::runOnUIThread([&] {
        S_TIMER_TIMEOUT() = RunLoop::main().makeTimer();
        const std::chrono::duration<double> wait(seconds);
        S_TIMER_TIMEOUT()->startOnce(
            std::chrono::duration_cast<Timer::Duration>(wait),
            [self = shared_from_this()] { self->sequenceTimeOut(self->timeout_description_); });
    });
}

void MIDISequenceBase::markTimeOutWithDescription(const std::string& description) {
    markTimeOut(usualTimeOut, description);
}

void MIDISequenceBase::markTimeOut(double seconds, const std::string& description) {
    timeout_description_ = description;
    markTimeOut(seconds);
}

void MIDISequenceBase::sequenceTimeOut(const std::string& /*description*/) {}

void MIDISequenceBase::receivedMidi(std::span<const std::uint8_t> /*message*/) {}

void MIDIStepSequence::dispose() {
    MIDISequenceBase::dispose();
    seq_ = 0;
}

void MIDIStepSequence::sequenceTimeOut(const std::string& description) {
    MIDISequenceBase::sequenceTimeOut(description);
    dispose();
}

} // namespace deckmate
