// A sound library whose calls fail now and then leaves a player that can be used.
#include "platform/SoundSystem.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/silent/SilentBackend.h"
#include "support/LogLines.h"
#include "support/PlayerWindow.h"
#include "support/TemporaryFolder.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <tuple>

namespace deckmate::test {
namespace {

using namespace std::chrono_literals;

enum class Call { open, start, stop };

/// Silent streams, of which one call fails: the nth of its kind.
class FailingBackend final : public OutputBackend {
public:
    FailingBackend(Call call, int nth) : call_(call), nth_(nth) {}

    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) override {
        return fails(Call::open) ? nullptr : std::make_unique<Stream>(*this, format, source);
    }

    bool hasFailed() const { return count_ >= nth_; }

private:
    class Stream final : public OutputStream {
    public:
        Stream(FailingBackend& backend, const OutputFormat& format, OutputSource& source)
            : backend_(backend), stream_(makeSilentBackend()->open(format, source)) {}

        bool start() override { return !backend_.fails(Call::start) && stream_->start(); }
        bool stop() override { return !backend_.fails(Call::stop) && stream_->stop(); }
        std::optional<std::uint64_t> position() override { return stream_->position(); }

    private:
        FailingBackend& backend_;
        std::unique_ptr<OutputStream> stream_;
    };

    bool fails(Call call) { return call == call_ && ++count_ == nth_; }

    const Call call_;
    const int nth_;
    std::atomic<int> count_ = 0;
};

class FailingCallsTest : public testing::TestWithParam<std::tuple<Call, int>> {
protected:
    bool finishes() {
        return loop.runUntil([this] { return player.play_state() == PLAY_STATE_FINISH; }, 30s);
    }
    void let(std::chrono::milliseconds pass) {
        loop.runUntil([] { return false; }, pass);
    }

    TemporaryFolder folder;
    LogLines log;
    QtRunLoop loop;
    FailingBackend* backend = new FailingBackend(std::get<0>(GetParam()), std::get<1>(GetParam()));
    SoundSystem sound{std::unique_ptr<OutputBackend>(backend),
                      [](const std::function<void()>& task) { task(); }};
    PlayerWindow window{folder.file("take.wav", evenRecording(zeros(std::size_t{6} * 9600)))};
    WavePlayer& player = *window.player;
};

INSTANTIATE_TEST_SUITE_P(All, FailingCallsTest,
                         testing::Combine(testing::Values(Call::open, Call::start, Call::stop),
                                          testing::Range(1, 4)));

TEST_P(FailingCallsTest, TheNextPlayPlaysAll) {
    for (int i = 0; i < 3; ++i) {
        player.play();
        let(10ms);
        player.pause();
        player.play();
        let(10ms);
        player.setPosition(0.1);
        let(10ms);
    }
    EXPECT_TRUE(backend->hasFailed());
    if (player.play_state() == PLAY_STATE_PLAY) {
        EXPECT_TRUE(finishes());
    }
    player.play();
    ASSERT_EQ(player.play_state(), PLAY_STATE_PLAY);
    ASSERT_TRUE(finishes());
    EXPECT_EQ(player.curremtTime(), 0.2);
    EXPECT_FALSE(player.getIsError());
}

} // namespace
} // namespace deckmate::test
