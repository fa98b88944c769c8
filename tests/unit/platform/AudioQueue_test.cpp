#include "platform/AudioQueue.h"

#include "support/ManualRunLoop.h"
#include "support/ManualSound.h"

#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <vector>

namespace deckmate {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t bufferFrames = 4;

/// Mono floats, so that a frame is a number.
StreamDescription monoFloats() {
    StreamDescription format;
    format.sampleRate = 48000;
    format.formatFlags = StreamDescription::floatFlag;
    format.bytesPerPacket = 4;
    format.framesPerPacket = 1;
    format.bytesPerFrame = 4;
    format.channelsPerFrame = 1;
    format.bitsPerChannel = 32;
    return format;
}

class AudioQueueTest : public testing::Test {
protected:
    ManualRunLoop loop;
    ManualSound sound;
    std::vector<AudioQueueBuffer*> needed;
    std::vector<bool> reports;
    std::unique_ptr<AudioQueue> queue = std::make_unique<AudioQueue>(
        monoFloats(), [this](AudioQueueBuffer& buffer) { needed.push_back(&buffer); });
    std::vector<AudioQueueBuffer*> buffers;

    AudioQueueTest() {
        for (int i = 0; i < 3; ++i) {
            buffers.push_back(queue->allocateBuffer(bufferFrames * sizeof(float), 0));
        }
        queue->setIsRunningListener([this] { reports.push_back(queue->isRunning()); });
    }

    ~AudioQueueTest() override {
        queue.reset();
        loop.runPending();
    }
    AudioQueueTest(const AudioQueueTest&) = delete;
    AudioQueueTest& operator=(const AudioQueueTest&) = delete;
    AudioQueueTest(AudioQueueTest&&) = delete;
    AudioQueueTest& operator=(AudioQueueTest&&) = delete;

    AudioStatus give(AudioQueueBuffer& buffer, const std::vector<float>& samples) {
        std::memcpy(buffer.bytes, samples.data(), samples.size() * sizeof(float));
        buffer.byteSize = static_cast<std::uint32_t>(samples.size() * sizeof(float));
        return queue->enqueue(buffer);
    }

    void giveTwo() {
        give(*buffers[0], {1, 2, 3, 4});
        give(*buffers[1], {5, 6, 7, 8});
    }
};

TEST_F(AudioQueueTest, PlaysNothingBeforeItIsStarted) {
    giveTwo();
    EXPECT_THAT(sound.pull(4), IsEmpty());
    EXPECT_FALSE(queue->isRunning());
}

TEST_F(AudioQueueTest, PlaysBuffersInTheirOrderWhateverIsAskedFor) {
    giveTwo();
    queue->start();
    EXPECT_THAT(sound.pull(3), ElementsAre(1, 2, 3));
    EXPECT_THAT(sound.pull(5), ElementsAre(4, 5, 6, 7, 8));
}

TEST_F(AudioQueueTest, StartIsReportedInsideTheCall) {
    giveTwo();
    queue->start();
    EXPECT_THAT(reports, ElementsAre(true));
}

// Its samples are taken out at once, so that a late main thread has as much time as can be.
TEST_F(AudioQueueTest, ABufferIsNeededAgainAsSoonAsItBeginsToPlay) {
    giveTwo();
    queue->start();
    sound.pull(1);
    EXPECT_THAT(needed, IsEmpty()); // not on the thread that plays
    loop.runPending();
    EXPECT_THAT(needed, ElementsAre(buffers[0]));
    give(*buffers[0], {9});
    EXPECT_THAT(sound.pull(8), ElementsAre(2, 3, 4, 5, 6, 7, 8, 9));
}

TEST_F(AudioQueueTest, ALateBufferMakesSilenceThatIsNoTime) {
    give(*buffers[0], {1, 2});
    queue->start();
    EXPECT_THAT(sound.pull(5), ElementsAre(1, 2, 0, 0, 0));
    EXPECT_EQ(queue->underruns(), 1U);
    give(*buffers[1], {3, 4, 5});
    EXPECT_THAT(sound.pull(3), ElementsAre(3, 4, 5));
    EXPECT_EQ(queue->framesHandedOver(), 5U);
    sound.stream()->heardFrames = 6;
    EXPECT_EQ(queue->sampleTime(), 3);
}

TEST_F(AudioQueueTest, OneLongSilenceIsOneUnderrun) {
    give(*buffers[0], {1});
    queue->start();
    sound.pull(2);
    sound.pull(2);
    EXPECT_EQ(queue->underruns(), 1U);
}

TEST_F(AudioQueueTest, DrainsBeforeItStops) {
    giveTwo();
    queue->start();
    queue->stopAfterDraining();
    EXPECT_TRUE(queue->isRunning());
    EXPECT_THAT(sound.pull(10), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_TRUE(queue->isRunning()); // not on the thread that plays
    loop.runPending();
    EXPECT_THAT(reports, ElementsAre(true, false));
}

// A recording shorter than the buffers: its end is known before it begins.
TEST_F(AudioQueueTest, DrainingBeforeTheStartPlaysEverything) {
    giveTwo();
    queue->stopAfterDraining();
    loop.runPending();
    EXPECT_THAT(reports, IsEmpty());
    queue->start();
    EXPECT_THAT(sound.pull(10), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    loop.runPending();
    EXPECT_THAT(reports, ElementsAre(true, false));
}

TEST_F(AudioQueueTest, WithNothingToPlayItIsOverSoonAfterTheStart) {
    queue->stopAfterDraining();
    queue->start();
    EXPECT_THAT(reports, ElementsAre(true));
    loop.runPending();
    EXPECT_THAT(reports, ElementsAre(true, false));
}

TEST_F(AudioQueueTest, WithNothingToPlayAndNotStartedItIsOverToo) {
    queue->stopAfterDraining();
    EXPECT_THAT(reports, IsEmpty());
    loop.runPending();
    EXPECT_THAT(reports, ElementsAre(false));
}

TEST_F(AudioQueueTest, AnImmediateStopIsReportedInsideTheCall) {
    giveTwo();
    queue->start();
    sound.pull(1);
    queue->stopNow();
    EXPECT_THAT(reports, ElementsAre(true, false));
    EXPECT_EQ(sound.open, 0U);
    loop.runPending();
    EXPECT_THAT(needed, IsEmpty());
}

TEST_F(AudioQueueTest, StoppingWhatDoesNotRunReportsNothing) {
    giveTwo();
    queue->stopNow();
    loop.runPending();
    EXPECT_THAT(reports, IsEmpty());
}

TEST_F(AudioQueueTest, NothingArrivesFromADisposedQueue) {
    giveTwo();
    queue->start();
    queue->stopAfterDraining();
    sound.pull(10);
    queue.reset();
    loop.runPending();
    EXPECT_THAT(needed, IsEmpty());
    EXPECT_THAT(reports, ElementsAre(true));
    EXPECT_EQ(sound.open, 0U);
}

TEST_F(AudioQueueTest, MayBeDisposedOfByItsOwnListener) {
    giveTwo();
    queue->setIsRunningListener([this] {
        if (!queue->isRunning()) {
            queue.reset();
        }
    });
    queue->start();
    queue->stopAfterDraining();
    sound.pull(10);
    loop.runPending();
    EXPECT_EQ(queue, nullptr);
}

TEST_F(AudioQueueTest, APauseLosesAndRepeatsNothing) {
    giveTwo();
    queue->start();
    sound.pull(3);
    queue->pause();
    EXPECT_THAT(sound.pull(3), IsEmpty());
    EXPECT_TRUE(queue->isRunning());
    queue->start();
    sound.pull(5);
    EXPECT_THAT(sound.heard, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_THAT(reports, ElementsAre(true));
}

TEST_F(AudioQueueTest, APauseWhileDrainingPlaysTheRestLater) {
    give(*buffers[0], {1, 2, 3, 4});
    queue->start();
    queue->stopAfterDraining();
    sound.pull(1); // the buffer is no longer queued, but not played either
    loop.runPending();
    queue->pause();
    queue->start();
    EXPECT_THAT(sound.pull(10), ElementsAre(2, 3, 4));
    loop.runPending();
    EXPECT_THAT(reports, ElementsAre(true, false));
}

TEST_F(AudioQueueTest, CanBeFilledAndStartedAgain) {
    giveTwo();
    queue->start();
    queue->stopAfterDraining();
    sound.pull(10);
    loop.runPending();
    give(*buffers[2], {9, 10});
    queue->start();
    EXPECT_THAT(sound.pull(2), ElementsAre(9, 10));
    EXPECT_EQ(queue->sampleTime(), 2);
    EXPECT_THAT(reports, ElementsAre(true, false, true));
}

TEST_F(AudioQueueTest, AServerThatGoesAwayEndsTheQueue) {
    giveTwo();
    queue->start();
    sound.pull(1);
    sound.stream()->fail();
    loop.runPending();
    EXPECT_THAT(reports, ElementsAre(true, false));
}

TEST_F(AudioQueueTest, AServerThatWentAwayBeforeTheStartIsConnectedAnew) {
    giveTwo();
    sound.stream()->fail();
    loop.runPending();
    EXPECT_THAT(reports, IsEmpty());
    queue->start();
    EXPECT_EQ(sound.opened, 2U);
    EXPECT_THAT(sound.pull(4), ElementsAre(1, 2, 3, 4));
    loop.runPending();
    EXPECT_THAT(reports, ElementsAre(true));
}

TEST_F(AudioQueueTest, AStartThatFailsEndsTheQueue) {
    sound.canStart = false;
    giveTwo();
    queue->start();
    loop.runPending();
    EXPECT_THAT(reports, ElementsAre(true, false));
}

TEST_F(AudioQueueTest, VolumeIsAFactor) {
    giveTwo();
    queue->setVolume(0.5);
    queue->start();
    EXPECT_THAT(sound.pull(2), ElementsAre(0.5F, 1.0F));
}

TEST_F(AudioQueueTest, OnlyAFiniteFactorReachesTheOutput) {
    giveTwo();
    queue->start();
    queue->setVolume(std::numeric_limits<double>::quiet_NaN());
    EXPECT_THAT(sound.pull(1), ElementsAre(1));
    queue->setVolume(2);
    EXPECT_THAT(sound.pull(1), ElementsAre(2));
    queue->setVolume(-1);
    EXPECT_THAT(sound.pull(1), ElementsAre(0));
}

TEST_F(AudioQueueTest, TimeNeverGoesBackNorBeyondWhatWasHandedOver) {
    giveTwo();
    queue->start();
    sound.pull(6);
    sound.stream()->heardFrames = 5;
    EXPECT_EQ(queue->sampleTime(), 5);
    sound.stream()->heardFrames = 3;
    EXPECT_EQ(queue->sampleTime(), 5);
    sound.stream()->heardFrames = 100; // a frozen server's clock runs on
    EXPECT_EQ(queue->sampleTime(), 6);
    sound.stream()->heardFrames = std::nullopt;
    EXPECT_EQ(queue->sampleTime(), 6);
}

TEST_F(AudioQueueTest, MoreBuffersThanItTakesAreRefused) {
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(give(*queue->allocateBuffer(4, 0), {1}), 0);
    }
    EXPECT_EQ(give(*buffers[0], {1}), audioQueueFull);
}

TEST_F(AudioQueueTest, ABufferThatIsQueuedIsRefusedUntilItIsNeededAgain) {
    EXPECT_EQ(give(*buffers[0], {1, 2, 3, 4}), 0);
    EXPECT_EQ(give(*buffers[0], {1, 2, 3, 4}), audioBufferInUse);
    queue->start();
    sound.pull(1);
    EXPECT_EQ(give(*buffers[0], {1, 2, 3, 4}), audioBufferInUse);
    loop.runPending();
    EXPECT_THAT(needed, ElementsAre(buffers[0]));
    EXPECT_EQ(give(*buffers[0], {1, 2, 3, 4}), 0);
}

TEST_F(AudioQueueTest, ResettingDropsWhatIsQueuedAndReportsNothing) {
    giveTwo();
    queue->stopAfterDraining();
    queue->reset();
    EXPECT_EQ(give(*buffers[0], {9, 10}), 0);
    queue->start();
    EXPECT_THAT(sound.pull(4), ElementsAre(9, 10, 0, 0)); // and is not finishing any more
    queue->reset();
    EXPECT_FALSE(queue->isRunning());
    EXPECT_EQ(give(*buffers[1], {11}), 0);
    queue->start();
    EXPECT_THAT(sound.pull(1), ElementsAre(11));
    EXPECT_THAT(reports, ElementsAre(true, true));
    EXPECT_EQ(sound.open, 1U);
}

TEST_F(AudioQueueTest, TheLastBuffersAreNeededWhenAllHasBeenHeard) {
    giveTwo();
    queue->start();
    queue->stopAfterDraining();
    sound.pull(7);
    loop.runPending();
    EXPECT_THAT(needed, IsEmpty());
    sound.pull(2);
    loop.runPending();
    EXPECT_THAT(needed, ElementsAre(buffers[0], buffers[1]));
    EXPECT_THAT(reports, ElementsAre(true, false));
}

TEST_F(AudioQueueTest, AFormatThatCantBePlayedHasNoClockAndEnds) {
    AudioQueue mute(StreamDescription(), nullptr);
    EXPECT_FALSE(mute.hasClock());
    bool isOver = false;
    mute.setIsRunningListener([&] { isOver = !mute.isRunning(); });
    mute.start();
    mute.stopAfterDraining();
    loop.runPending();
    EXPECT_TRUE(isOver);
}

} // namespace
} // namespace deckmate
