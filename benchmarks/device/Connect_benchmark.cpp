// From a recorder's appearance to the record that is filled with what it has told: what the program
// takes beside the second that it gives the recorder to settle.
#include "support/DeviceMessages.h"
#include "support/InProcessMidi.h"
#include "support/LinkUser.h"
#include "support/ManualRunLoop.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace deckmate;
using namespace deckmate::test;
using Clock = std::chrono::steady_clock;

/// The link logs to standard output what it receives.
class SilentOutput {
public:
    SilentOutput() : before_(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    ~SilentOutput() {
        dup2(before_, STDOUT_FILENO);
        close(before_);
    }
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;
    SilentOutput(SilentOutput&&) = delete;
    SilentOutput& operator=(SilentOutput&&) = delete;

private:
    int before_;
};

/// Connects as the main window does, and notes when the recorder is known.
class User final : public LinkUser {
public:
    bool isKnown = false;
    Clock::time_point knownAt;

    void MIDIManagerConnected() override {
        MIDISequenceManager::get().startConnectSeq([this] {
            isKnown = true;
            knownAt = Clock::now();
        });
    }
};

/// One life of the link, with a recorder that answers at once; NO when it didn't get that far.
bool becomesKnown(bool hasEventLists, Clock::duration& taken) {
    ManualRunLoop loop;
    InProcessMidi midi(hasEventLists);
    User user;
    MIDISequenceManager::get();

    const Clock::time_point begin = Clock::now();
    InProcessDevice& recorder = midi.addDevice("H8 ORLO MIDI 1");
    std::size_t answered = 0;
    recorder.onMessage = [&](const Bytes& /*request*/) {
        recorder.answer(reply::all()[answered++]);
    };
    loop.runPending();
    loop.advance(std::chrono::seconds(1));
    taken = user.knownAt - begin;

    return user.isKnown && MIDISequenceManager::getDeviceInfo().autoPowOffType == 3;
}

void BM_Connect(benchmark::State& state, bool hasEventLists) {
    const SilentOutput silent;
    for (auto _ : state) {
        Clock::duration taken{};
        if (!becomesKnown(hasEventLists, taken)) {
            state.SkipWithError("the recorder didn't become known");
            break;
        }
        state.SetIterationTime(std::chrono::duration<double>(taken).count());
    }
}

BENCHMARK_CAPTURE(BM_Connect, bytes, false)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Connect, events, true)->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace
