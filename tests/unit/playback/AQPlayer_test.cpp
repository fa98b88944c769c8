#include "playback/AQPlayer.h"

#include "services/EB.h"
#include "support/LogLines.h"
#include "support/ManualRunLoop.h"
#include "support/ManualSound.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <vector>

namespace deckmate {
namespace {

using namespace test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// Counts the events.
struct Finishes {
    int count = 0;
    void notify(const Notification& /*notification*/) { ++count; }

    Finishes() {
        EB::initData();
        EB::SUBSCRIBE(this, &Finishes::notify, "EB_PLAY_FINISH");
    }
    ~Finishes() { NotificationCenter::defaultCenter().removeObserver(this); }
    Finishes(const Finishes&) = delete;
    Finishes& operator=(const Finishes&) = delete;
    Finishes(Finishes&&) = delete;
    Finishes& operator=(Finishes&&) = delete;
};

/// Stereo of 24 bits: frame n holds n * 256 on the left and nothing on the right.
Bytes counting(std::size_t frames) {
    Bytes bytes;
    for (std::size_t i = 0; i < frames; ++i) {
        const auto value = static_cast<std::uint8_t>(i);
        bytes.insert(bytes.end(), {0, value, static_cast<std::uint8_t>(i >> 8), 0, 0, 0});
    }
    return bytes;
}

/// The frames of such samples.
std::vector<int> frameNumbers(const std::vector<float>& samples) {
    std::vector<int> numbers;
    for (std::size_t i = 0; i < samples.size(); i += 2) {
        numbers.push_back(static_cast<int>(samples[i] * 32768.0F));
    }
    return numbers;
}

class AQPlayerTest : public testing::Test {
protected:
    TemporaryFolder folder;
    LogLines log;
    ManualRunLoop loop;
    ManualSound sound;
    Finishes finishes;
    std::unique_ptr<AQPlayer> player;

    AQPlayerTest() = default;
    ~AQPlayerTest() override {
        player.reset();
        DisposeQueue();
        loop.runPending();
    }
    AQPlayerTest(const AQPlayerTest&) = delete;
    AQPlayerTest& operator=(const AQPlayerTest&) = delete;
    AQPlayerTest(AQPlayerTest&&) = delete;
    AQPlayerTest& operator=(AQPlayerTest&&) = delete;

    /// Frames of 48 kHz; a second has 48,000.
    void open(std::size_t frames) {
        player = std::make_unique<AQPlayer>(folder.file("a.wav", evenRecording(counting(frames))));
    }

    /// Lets the sound play to its end.
    void playOut() {
        for (int i = 0; i < 1000 && !sound.pull(2400).empty(); ++i) {
            loop.runPending();
        }
        loop.runPending();
    }
};

TEST_F(AQPlayerTest, BuffersHoldATenthOfASecond) {
    open(10000);
    EXPECT_EQ(aqData().bufferByteSize, 28800U);
    EXPECT_EQ(aqData().packetsPerRead, 4800U);
    EXPECT_EQ(aqData().packetCount, 10000U);
    EXPECT_TRUE(aqData().isPrepared);
}

TEST_F(AQPlayerTest, SmallBuffersAreMadeLarger) {
    AQPlayer mono(
        folder.file("m.wav", evenRecording(zeros(100), {.channels = 1, .rate = 8000, .bits = 16})));
    EXPECT_EQ(aqData().bufferByteSize, 16384U);
    EXPECT_EQ(aqData().packetsPerRead, 8192U);
}

TEST_F(AQPlayerTest, LargeBuffersAreMadeSmaller) {
    AQPlayer fast(folder.file(
        "f.wav", evenRecording(zeros(800), {.tag = 3, .channels = 2, .rate = 192000, .bits = 32})));
    EXPECT_EQ(aqData().bufferByteSize, 65536U);
    EXPECT_EQ(aqData().packetsPerRead, 8192U);
}

TEST_F(AQPlayerTest, PlaysTheWholeFileAndThenFinishesOnce) {
    open(20000);
    player->play(false);
    playOut();
    const std::vector<int> numbers = frameNumbers(sound.heard);
    ASSERT_EQ(numbers.size(), 20000U);
    for (int i = 0; i < 20000; ++i) {
        ASSERT_EQ(numbers[static_cast<std::size_t>(i)], i);
    }
    EXPECT_EQ(finishes.count, 1);
    EXPECT_TRUE(player->getIsDone());
    EXPECT_FALSE(player->getIsError());
    EXPECT_THAT(log.lines(), Contains("result = 0, state = 1"));
    EXPECT_THAT(log.lines(), Contains("result = 0, state = 0"));
}

TEST_F(AQPlayerTest, AFileShorterThanTheBuffersIsPlayedToo) {
    open(10);
    player->play(false);
    playOut();
    EXPECT_EQ(frameNumbers(sound.heard).size(), 10U);
    EXPECT_EQ(finishes.count, 1);
}

TEST_F(AQPlayerTest, TheHookSeesEachBufferWithItsPacketIndex) {
    open(10000);
    std::vector<std::int64_t> indices;
    std::vector<std::uint32_t> counts;
    player->setDataCB(
        [&](AudioQueueBuffer& buffer, const StreamDescription& info, std::int64_t index) {
            EXPECT_EQ(info.bitsPerChannel, 24U);
            indices.push_back(index);
            counts.push_back(buffer.packetDescriptionCount);
        });
    player->play(false);
    EXPECT_THAT(indices, ElementsAre(0, 4800, 9600));
    EXPECT_THAT(counts, ElementsAre(4800, 4800, 400));
}

TEST_F(AQPlayerTest, ASeekReportsTheStopInsideTheCall) {
    open(48000);
    player->play(false);
    sound.pull(1000);
    player->setPosition(0.5, true);
    EXPECT_EQ(finishes.count, 1);
    sound.heard.clear();
    EXPECT_EQ(frameNumbers(sound.pull(1)), (std::vector<int>{24000}));
    EXPECT_EQ(sound.open, 1U);
}

TEST_F(AQPlayerTest, ASeekWithoutPlayingStandsReady) {
    open(48000);
    player->setPosition(0.25, false);
    EXPECT_EQ(finishes.count, 0);
    EXPECT_THAT(sound.pull(1), IsEmpty());
    player->play(true);
    EXPECT_EQ(frameNumbers(sound.pull(1)), (std::vector<int>{12000}));
}

TEST_F(AQPlayerTest, TimeStartsWhereASeekWent) {
    open(48000);
    player->setPosition(0.5, true);
    EXPECT_EQ(player->currentTime(), 500);
    sound.pull(4800);
    EXPECT_EQ(player->currentTime(), 600);
}

// The offset of the seek stays: it has always been so.
TEST_F(AQPlayerTest, PlayingFromTheBeginningAfterASeekKeepsItsOffset) {
    open(48000);
    player->setPosition(0.5, false);
    player->play(false);
    EXPECT_EQ(aqData().currentPacket, 14400);
    EXPECT_EQ(player->currentTime(), 500);
}

TEST_F(AQPlayerTest, PlayingFromTheBeginningAfterASeekPlaysEachFrameOnce) {
    open(30000);
    player->setPosition(0.99, false);
    player->play(false);
    playOut();
    std::vector<int> all(30000);
    std::iota(all.begin(), all.end(), 0);
    EXPECT_EQ(frameNumbers(sound.heard), all);
    EXPECT_EQ(finishes.count, 1);
}

TEST_F(AQPlayerTest, PlayingFromTheBeginningWhilePlayingBeginsAnew) {
    open(30000);
    player->play(false);
    sound.pull(7000);
    loop.runPending();
    sound.heard.clear();
    player->play(false);
    playOut();
    std::vector<int> all(30000);
    std::iota(all.begin(), all.end(), 0);
    EXPECT_EQ(frameNumbers(sound.heard), all);
    EXPECT_EQ(finishes.count, 1);
}

TEST_F(AQPlayerTest, APauseInTheLastBuffersStillEndsDone) {
    open(20000);
    player->play(false);
    while (!player->getIsDone()) {
        sound.pull(1200);
        loop.runPending();
    }
    player->pause();
    player->play(true);
    EXPECT_FALSE(player->getIsDone());
    playOut();
    EXPECT_EQ(frameNumbers(sound.heard).size(), 20000U);
    EXPECT_TRUE(player->getIsDone());
    EXPECT_EQ(finishes.count, 1);
}

TEST_F(AQPlayerTest, TheVolumeIsThatOfAllQueuesToCome) {
    open(48000);
    player->setVolume(0.5);
    player->setVolume(std::numeric_limits<double>::quiet_NaN());
    player->setPosition(0.5, true);
    EXPECT_EQ(sound.pull(1)[0], static_cast<float>(24000 * 256) / 8388608.0F / 2);
}

TEST_F(AQPlayerTest, ASeekToTheEndFinishes) {
    open(48000);
    player->setPosition(1.0, true);
    EXPECT_EQ(aqData().currentPacket, 48000);
    EXPECT_TRUE(player->getIsDone());
    EXPECT_EQ(finishes.count, 0);
    loop.runPending();
    EXPECT_EQ(finishes.count, 1);
}

TEST_F(AQPlayerTest, PositionsOutsideTheFileAreHarmless) {
    open(4800);
    for (const double position : {-1.0, 2.0, std::numeric_limits<double>::quiet_NaN(),
                                  std::numeric_limits<double>::infinity()}) {
        player->setPosition(position, true);
        sound.pull(10);
        loop.runPending();
    }
    player->setPosition(0, true);
    EXPECT_EQ(frameNumbers(sound.pull(1)), (std::vector<int>{0}));
}

TEST_F(AQPlayerTest, UnitsAreSecondsAndMilliseconds) {
    open(96000);
    EXPECT_EQ(player->duration(), 2.0);
    EXPECT_EQ(player->timeFromPosition(0.25), 500.0);
}

TEST_F(AQPlayerTest, AFileThatCantBeOpenedShowsByAReadError) {
    player = std::make_unique<AQPlayer>(folder / "missing.wav");
    EXPECT_THAT(log.lines(), ElementsAre("Open File Failed", "errrr timeline"));
    EXPECT_FALSE(player->getIsError());
    testing::internal::CaptureStdout();
    player->play(false);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "AudioFileReadPackets failed: -1\n");
    loop.runPending();
    EXPECT_TRUE(player->getIsError());
    EXPECT_TRUE(player->getIsDone());
    EXPECT_EQ(finishes.count, 1);
}

/// Fails with an input/output error from a packet on.
class FailingFile final : public AudioFile {
public:
    FailingFile(std::unique_ptr<AudioFile> file, std::int64_t good)
        : file_(std::move(file)), good_(good) {}
    StreamDescription dataFormat() const override { return file_->dataFormat(); }
    std::uint64_t packetCount() const override { return file_->packetCount(); }
    double estimatedDuration() const override { return file_->estimatedDuration(); }
    std::uint32_t packetSizeUpperBound() const override { return file_->packetSizeUpperBound(); }
    std::vector<std::uint8_t> magicCookie() const override { return {}; }
    std::vector<std::uint8_t> channelLayout() const override { return {}; }
    Packets readPackets(std::int64_t first, std::uint32_t count,
                        std::span<std::uint8_t> room) override {
        return first < good_ ? file_->readPackets(first, count, room) : Packets{5, 0, 0};
    }

private:
    std::unique_ptr<AudioFile> file_;
    std::int64_t good_;
};

TEST_F(AQPlayerTest, AReadErrorLetsTheQueuedSoundPlayOut) {
    AudioFile::setOpener([](const std::filesystem::path& path, std::unique_ptr<AudioFile>& file) {
        AudioFile::setOpener(nullptr);
        std::unique_ptr<AudioFile> real;
        const AudioStatus status = AudioFile::open(path, real);
        file = std::make_unique<FailingFile>(std::move(real), 14400);
        return status;
    });
    open(48000);
    player->play(false);
    testing::internal::CaptureStdout();
    playOut();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "AudioFileReadPackets failed: 5\n");
    EXPECT_EQ(frameNumbers(sound.heard).size(), 14400U);
    EXPECT_TRUE(player->getIsError());
    EXPECT_EQ(finishes.count, 1);
}

TEST_F(AQPlayerTest, CleaningUpIsSilentAndFinal) {
    open(48000);
    player->play(false);
    player->cleanUp();
    loop.runPending();
    EXPECT_EQ(finishes.count, 0);
    EXPECT_EQ(sound.open, 0U);
    EXPECT_FALSE(aqData().isPrepared);
    player->play(false);
    player->setVolume(1);
    player->pause();
    player->setPosition(0.5, true);
    loop.runPending();
    EXPECT_EQ(finishes.count, 0);
    EXPECT_THAT(sound.pull(1), IsEmpty());
}

TEST_F(AQPlayerTest, CleaningUpDropsTheHook) {
    open(48000);
    int calls = 0;
    player->setDataCB([&](AudioQueueBuffer&, const StreamDescription&, std::int64_t) { ++calls; });
    player->cleanUp();
    open(48000);
    player->play(false);
    EXPECT_EQ(calls, 0);
}

TEST_F(AQPlayerTest, ANewPlayerBeginsWithoutDoneAndError) {
    open(10);
    player->play(false);
    playOut();
    aqData().isError = true;
    EXPECT_TRUE(player->getIsDone());
    open(10);
    EXPECT_FALSE(player->getIsDone());
    EXPECT_FALSE(player->getIsError());
    EXPECT_EQ(player->currentTime(), 0);
}

TEST_F(AQPlayerTest, AnotherPlayerTakesOver) {
    open(48000);
    player->play(false);
    AQPlayer other(folder.file("b.wav", evenRecording(counting(10))));
    player->setPosition(0.5, true); // leaves the other one alone
    player->cleanUp();
    player.reset();
    EXPECT_EQ(aqData().packetCount, 10U);
    other.play(false);
    EXPECT_EQ(frameNumbers(sound.pull(2)), (std::vector<int>{0, 1}));
}

} // namespace
} // namespace deckmate
