// Connection, answers, time-outs, unplugging and quitting in every order: nothing hangs, nothing is
// left behind, and the next connection works as far as it is meant to.
#include "DeviceTest.h"

#include <algorithm>
#include <array>
#include <deque>

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
    NotingUser user_;
    InProcessDevice* device_ = nullptr;
    std::size_t answered_ = 0;
    bool hasQuit_ = false;
};

/// What is to come of it: no packets, ports or objects, only who waits for which reply. Replies are
/// numbered as in reply::all().
class Expected {
public:
    void handle(Event event) {
        if (hasQuit_) {
            return;
        }
        switch (event) {
        case Event::unplug:
            isPluggedIn_ = false;
            settlesIn_ = 0;
            break;
        case Event::plug:
            settlesIn_ = isPluggedIn_ ? settlesIn_ : 1;
            isPluggedIn_ = true;
            break;
        case Event::timeOut:
            passSecond();
            [[fallthrough]];
        case Event::settle:
            passSecond();
            break;
        case Event::answerOne:
            hear(0);
            break;
        case Event::answerAll:
            for (int reply = 0; reply <= 8; ++reply) {
                hear(reply);
            }
            break;
        case Event::changeSetting:
            ask({7, 7});
            break;
        case Event::quit:
            hasQuit_ = true;
            break;
        }
    }

    int completions = 0;

private:
    /// A connection has the replies 0 to 6, a change of the battery type has 7.
    struct Questions {
        int awaited = 0;
        int last = 0;
        bool isConnection() const { return last == 6; }
    };

    /// A time-out of two seconds began before settling for one that ends with it.
    void passSecond() {
        if (timeOutIn_ > 0 && --timeOutIn_ == 0) {
            isWaiting_ = false;
        }
        if (settlesIn_ > 0 && --settlesIn_ == 0) {
            hasListener_ = true;
            ask({0, 6});
        }
    }
    void ask(const Questions& questions) {
        queue_.push_back(questions);
        goOn();
    }
    void goOn() {
        if (isWaiting_) {
            return;
        }
        isIdle_ = queue_.empty();
        if (!isIdle_) {
            current_ = queue_.front();
            queue_.pop_front();
            isWaiting_ = true;
            timeOutIn_ = 2;
        }
    }
    void hear(int reply) {
        if (!isPluggedIn_) {
            return;
        }
        if (isWaiting_ && reply == current_.awaited) {
            isWaiting_ = reply != current_.last;
            completions += !isWaiting_ && current_.isConnection() ? 1 : 0;
            ++current_.awaited;
            timeOutIn_ = reply == 0 ? 2 : 0;
        } else if (isIdle_ && hasListener_) {
            ++completions;
        }
        goOn();
    }

    bool hasQuit_ = false;
    bool isPluggedIn_ = true;
    int settlesIn_ = 1; ///< seconds; 0 for not at all
    int timeOutIn_ = 0; ///< likewise
    std::deque<Questions> queue_;
    Questions current_;
    bool isWaiting_ = false; ///< for a reply to `current_`
    bool isIdle_ = true;
    bool hasListener_ = false; ///< there was a connection, which hears all that comes while idle
};

std::string nameOf(const std::array<Event, events.size()>& order) {
    constexpr std::array names = {"unplug",     "plug",     "settle",         "answer all",
                                  "answer one", "time out", "change setting", "quit"};
    std::string all;
    for (const Event event : order) {
        all += std::string(all.empty() ? "" : ", ") + names[static_cast<std::size_t>(event)];
    }
    return all;
}

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

TEST_P(LinkOrders, AllOfThemEndAsTheRulesTell) {
    std::array<Event, events.size()> order = events;
    std::sort(order.begin(), order.end());
    int lives = 0;
    int livesWithCompletions = 0;
    do {
        Link link(GetParam());
        Expected expected;
        for (const Event event : order) {
            link.handle(event);
            expected.handle(event);
        }
        ASSERT_EQ(link.completions, expected.completions) << nameOf(order);
        ++lives;
        livesWithCompletions += link.completions > 0 ? 1 : 0;
    } while (std::next_permutation(order.begin(), order.end()));
    EXPECT_EQ(lives, 40320); // 8!
    EXPECT_GT(livesWithCompletions, 0);
    EXPECT_LT(livesWithCompletions, lives);
}

} // namespace
} // namespace deckmate::test
