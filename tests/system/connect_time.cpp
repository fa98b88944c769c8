// connect-time: how long it takes to know a recorder beyond what has to pass, which is the second
// that its port may settle, and as many questions and answers. Prints a line for each time that it
// connects.
#include "common/Interruptible.h"
#include "platform/alsa/AlsaMidi.h"
#include "platform/qt/QtRunLoop.h"
#include "support/LinkUser.h"

#include <chrono>
#include <cstdio>
#include <memory>

namespace {

using namespace deckmate;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr Milliseconds settling(1000);
constexpr int questions = 7;

class Stopwatch final : public test::LinkUser {
public:
    Stopwatch() { MIDIManager::get().scanOrloDevice(); }

    void MIDIManagerFound() override {
        isKnown_ = false;
        found_ = Clock::now();
        LinkUser::MIDIManagerFound();
    }
    void MIDIManagerConnected() override {
        MIDISequenceManager::get().startConnectSeq([this] { learn(); });
    }

private:
    /// Also called for what is received later.
    void learn() {
        if (!isKnown_) {
            isKnown_ = true;
            known_ = Clock::now();
            ask(questions);
        }
    }

    /// Setting what is set already is a question and an answer, too.
    void ask(int left) {
        if (left > 0) {
            MIDISequenceManager::get().startChangeBatteryTypeSeq(
                MIDISequenceManager::getDeviceInfo().batteryType, [this, left] { ask(left - 1); });
            return;
        }
        const Milliseconds answers = Clock::now() - known_;
        const Milliseconds excess = known_ - found_ - settling - answers;
        std::printf("connected: %.2f ms beyond settling and %d answers, which took %.2f ms\n",
                    excess.count(), questions, answers.count());
        std::fflush(stdout);
    }

    Clock::time_point found_;
    Clock::time_point known_;
    bool isKnown_ = false;
};

} // namespace

int main() {
    QtRunLoop loop;
    const std::unique_ptr<Midi> midi = makeAlsaMidi();
    Stopwatch stopwatch;
    const tools::Interruptible interruptible(loop.makeSignal([&loop] { loop.quit(); }));
    loop.run();
    return 0;
}
