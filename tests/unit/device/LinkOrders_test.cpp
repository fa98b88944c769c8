// Connection, answers, time-outs, unplugging and quitting in every order: nothing hangs, nothing is
// left behind, and the next connection works as far as it is meant to.
#include "DeviceTest.h"

#include <algorithm>
#include <array>
#include <map>

namespace deckmate::test {
namespace {

enum class Event { unplug, plug, settle, answerAll, answerOne, timeOut, changeSetting, quit };

constexpr std::array events = {Event::unplug,    Event::plug,    Event::settle,
                               Event::answerAll, Event::timeOut, Event::changeSetting,
                               Event::answerOne, Event::quit};

/// One life of the link, from its first use to the end of the program.
class Link {
public:
    explicit Link(bool hasEventLists) : midi_(hasEventLists) {
        user_.onConnected = [this] {
            MIDISequenceManager::get().startConnectSeq([this] { ++completions; });
        };
        MIDIManager::get().setDelegate(&user_);
        handle(Event::plug);
    }
    ~Link() {
        handle(Event::quit);
        EXPECT_EQ(midi_.ports(), 0U);
        EXPECT_EQ(midi_.connections(), 0U);
        EXPECT_EQ(loop_.activeTimers(), 0U);
    }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    Link(Link&&) = delete;
    Link& operator=(Link&&) = delete;

    void handle(Event event) {
        switch (event) {
        case Event::unplug:
            if (device_ != nullptr) {
                midi_.removeDevice(*std::exchange(device_, nullptr));
            }
            break;
        case Event::plug:
            if (device_ == nullptr) {
                device_ = &midi_.addDevice("H8 ORLO MIDI 1");
            }
            break;
        case Event::settle:
            loop_.advance(1s);
            break;
        case Event::timeOut:
            loop_.advance(2s);
            break;
        case Event::answerOne:
            answer(answered_++ % reply::all().size());
            break;
        case Event::answerAll:
            for (std::size_t i = 0; i < reply::all().size(); ++i) {
                answer(i);
            }
            break;
        case Event::changeSetting:
            if (!hasQuit_) {
                MIDISequenceManager::get().startChangeBatteryTypeSeq(1, nullptr);
            }
            break;
        case Event::quit:
            hasQuit_ = true;
            MIDIManager::s_midi().reset();
            MIDISequenceManager::s_seq_controller().reset();
            break;
        }
        loop_.runPending();
    }

    int completions = 0;

private:
    void answer(std::size_t number) {
        if (device_ != nullptr && !hasQuit_) {
            device_->answer(reply::all()[number]);
        }
    }

    ManualRunLoop loop_;
    InProcessMidi midi_;
    LinkUser user_;
    InProcessDevice* device_ = nullptr;
    std::size_t answered_ = 0;
    bool hasQuit_ = false;
};

class LinkOrders : public testing::TestWithParam<bool> {
protected:
    LinkOrders() { testing::internal::CaptureStdout(); }
    ~LinkOrders() override { testing::internal::GetCapturedStdout(); }
    LinkOrders(const LinkOrders&) = delete;
    LinkOrders& operator=(const LinkOrders&) = delete;
    LinkOrders(LinkOrders&&) = delete;
    LinkOrders& operator=(LinkOrders&&) = delete;
};

INSTANTIATE_TEST_SUITE_P(Paths, LinkOrders, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });

TEST_P(LinkOrders, AllOfThemEnd) {
    std::array<Event, events.size()> order = events;
    std::sort(order.begin(), order.end());
    std::map<int, int> livesByCompletions;
    do {
        Link link(GetParam());
        for (const Event event : order) {
            link.handle(event);
        }
        ++livesByCompletions[std::min(link.completions, 1)];
    } while (std::next_permutation(order.begin(), order.end()));
    // 8! lives. A connection completes where it settles before it is answered, and both come before
    // unplugging, quitting and, between the two, the time-out.
    EXPECT_EQ(livesByCompletions[0] + livesByCompletions[1], 40320);
    EXPECT_GT(livesByCompletions[1], 0);
    EXPECT_GT(livesByCompletions[0], livesByCompletions[1]);
}

} // namespace
} // namespace deckmate::test
