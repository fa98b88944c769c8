// What the sound library's thread runs of this program neither waits nor allocates.
#include "platform/AudioQueue.h"
#include "platform/BufferFeed.h"
#include "platform/SoundSystem.h"
#include "platform/qt/QtRunLoop.h"
#include "realtime/RealtimeGuard.h"
#include "support/Bytes.h"
#include "support/LogLines.h"
#include "support/PlayerWindow.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace deckmate::test {
namespace {

using namespace std::chrono_literals;

TEST(RealtimeGuard, NoticesAllocations) {
    {
        const RealtimeGuard guard;
        const std::unique_ptr<int> number(new int(1));
        EXPECT_EQ(*number, 1);
    }
    EXPECT_STREQ(RealtimeGuard::breach(), "malloc");
}

TEST(RealtimeGuard, NoticesLocks) {
    std::mutex mutex;
    {
        const RealtimeGuard guard;
        const std::lock_guard lock(mutex);
    }
    EXPECT_STREQ(RealtimeGuard::breach(), "pthread_mutex_lock");
}

TEST(RealtimeGuard, NoticesWaits) {
    {
        const RealtimeGuard guard;
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_STRNE(RealtimeGuard::breach(), "");
}

TEST(RealtimeGuard, LeavesOthersAlone) {
    const std::unique_ptr<int> number(new int(1));
    EXPECT_EQ(*number, 1);
    EXPECT_STREQ(RealtimeGuard::breach(), "");
}

class BufferFeedRealtime : public testing::Test {
protected:
    static StreamDescription format() {
        StreamDescription format;
        format.sampleRate = 48000;
        format.bytesPerPacket = format.bytesPerFrame = 6;
        format.framesPerPacket = 1;
        format.channelsPerFrame = 2;
        format.bitsPerChannel = 24;
        format.formatFlags = StreamDescription::signedIntegerFlag;
        return format;
    }

    void give(AudioQueueBuffer& buffer) {
        buffer.capacity = buffer.byteSize = static_cast<std::uint32_t>(bytes.size());
        buffer.bytes = bytes.data();
        ASSERT_TRUE(feed.give(buffer));
    }

    std::size_t fillGuarded(std::size_t frames) {
        const RealtimeGuard guard;
        return feed.fill(out.data(), frames);
    }

    QtRunLoop loop;
    BufferFeed feed{format(), 6000, loop.makeSignal([] {})};
    std::array<AudioQueueBuffer, 2> buffers;
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(6000);
    std::vector<float> out = std::vector<float>(2 * 4096);
};

TEST_F(BufferFeedRealtime, OverTheBordersOfBuffers) {
    give(buffers[0]);
    give(buffers[1]);
    EXPECT_EQ(fillGuarded(700), 700U);
    EXPECT_EQ(fillGuarded(700), 700U);
    EXPECT_STREQ(RealtimeGuard::breach(), "");
}

TEST_F(BufferFeedRealtime, WhereABufferIsLate) {
    give(buffers[0]);
    EXPECT_EQ(fillGuarded(1500), 1500U);
    give(buffers[1]);
    EXPECT_EQ(fillGuarded(500), 500U);
    EXPECT_STREQ(RealtimeGuard::breach(), "");
}

TEST_F(BufferFeedRealtime, AtTheEnd) {
    give(buffers[0]);
    feed.finish();
    EXPECT_EQ(fillGuarded(1500), 1000U);
    {
        const RealtimeGuard guard;
        feed.drained();
        feed.failed();
    }
    EXPECT_STREQ(RealtimeGuard::breach(), "");
}

TEST_F(BufferFeedRealtime, Detached) {
    give(buffers[0]);
    feed.detach();
    EXPECT_EQ(fillGuarded(500), 500U);
    EXPECT_STREQ(RealtimeGuard::breach(), "");
}

/// Takes the frames of its one stream on a thread of its own, under a guard.
class GuardedBackend final : public OutputBackend {
public:
    explicit GuardedBackend(std::atomic<std::uint64_t>& taken) : taken_(taken) {}

    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) override {
        return std::make_unique<Stream>(format, source, taken_);
    }

private:
    class Stream final : public OutputStream {
    public:
        Stream(const OutputFormat& format, OutputSource& source, std::atomic<std::uint64_t>& taken)
            : source_(source), taken_(taken), out_(std::size_t{480} * format.channels) {}
        ~Stream() override { end(); }
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;
        Stream(Stream&&) = delete;
        Stream& operator=(Stream&&) = delete;

        bool start() override {
            end();
            isPlaying_ = true;
            thread_ = std::thread([this] { play(); });
            return true;
        }
        bool stop() override {
            end();
            return true;
        }
        std::optional<std::uint64_t> position() override { return taken_; }

    private:
        void play() {
            while (isPlaying_) {
                bool isEnd = false;
                {
                    const RealtimeGuard guard;
                    const std::size_t count = source_.fill(out_.data(), 480);
                    taken_ += count;
                    isEnd = count < 480;
                    if (isEnd) {
                        source_.drained();
                    }
                }
                if (isEnd) {
                    break;
                }
                std::this_thread::sleep_for(1ms);
            }
        }
        void end() {
            isPlaying_ = false;
            if (thread_.joinable()) {
                thread_.join();
            }
        }

        OutputSource& source_;
        std::atomic<std::uint64_t>& taken_;
        std::vector<float> out_;
        std::atomic<bool> isPlaying_ = false;
        std::thread thread_;
    };

    std::atomic<std::uint64_t>& taken_;
};

TEST(PlayerRealtime, AWholeRecordingWithEverythingThatIsDoneToIt) {
    std::atomic<std::uint64_t> taken = 0;
    const TemporaryFolder folder;
    const LogLines log;
    QtRunLoop loop;
    SoundSystem sound(std::make_unique<GuardedBackend>(taken),
                      [](const std::function<void()>& task) { task(); });
    PlayerWindow window(folder.file("take.wav", evenRecording(zeros(std::size_t{6} * 48000))));
    WavePlayer& player = *window.player;
    player.play();
    int turns = 0;
    const std::unique_ptr<Timer> hand = loop.makeTimer();
    hand->startRepeating(2ms, [&] {
        ++turns;
        player.setAngle(turns % 151);
        player.setVolume(turns % 2 == 0 ? 1.0 : 0.5);
        // Where this thread hardly runs, the recording is over before the last turn.
        const auto state = player.play_state();
        if (turns == 10) {
            player.setPosition(0.2);
        } else if (turns == 15 || turns == 20 ||
                   (turns < 20 ? state == PLAY_STATE_FINISH : state == PLAY_STATE_PAUSE)) {
            player.play(); // pauses, resumes, or plays again
        }
    });
    EXPECT_TRUE(
        loop.runUntil([&] { return turns > 20 && player.play_state() == PLAY_STATE_FINISH; }, 60s));
    hand->stop();
    EXPECT_GT(taken, 38400U);
    EXPECT_STREQ(RealtimeGuard::breach(), "");
}

} // namespace
} // namespace deckmate::test
