// What a sound server does to those who play: it isn't there, goes, comes back, hangs.
#include "sound/SoundTest.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <limits>
#include <thread>

namespace deckmate::test {
namespace {

class ServerTest : public SoundTest {
protected:
    ServerTest() { recording.fill(11); }

    double handedOver() const {
        return aqData().queue ? static_cast<double>(aqData().queue->framesHandedOver()) : 0;
    }
    bool isPlayingAfter(double seconds) {
        return wait([&] { return player->curremtTime() >= seconds || hasFinished(); }) &&
               !hasFinished();
    }

    NoiseRecording recording = {.samples = {}};
};

std::ptrdiff_t entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

TEST_F(ServerTest, WithoutOneARecordingPlaysSilentlyAtItsSpeed) {
    open(folder.file("take.wav", recording.file()));
    player->play();
    EXPECT_TRUE(isPlayingAfter(0.5));
    EXPECT_EQ(player->play_state(), PLAY_STATE_PLAY);
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    EXPECT_EQ(player->curremtTime(), 1.0);
    EXPECT_EQ(finishes, 1);
    EXPECT_FALSE(player->getIsError());
}

TEST_F(ServerTest, OneThatComesLaterIsFoundByTheNextPlay) {
    open(folder.file("take.wav", recording.file()));
    player->play();
    ASSERT_TRUE(wait([&] { return hasFinished(); }));
    startServer(48000);
    turn(0, 0);
    player->play();
    const std::vector<float> all = heard(recording.frames);
    EXPECT_EQ(all.size() / 2, recording.frames);
}

TEST_F(ServerTest, KilledWhilePlayingItFinishesOnce) {
    open(recording);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.2));
    const double before = player->curremtTime();
    server->kill();
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    let(100ms);
    EXPECT_EQ(finishes, 1);
    EXPECT_GE(player->curremtTime(), before);
    EXPECT_LE(player->curremtTime(), 1.0);
    EXPECT_FALSE(player->getIsError());
    EXPECT_TRUE(player->reader()->isBoMSFormat());
}

TEST_F(ServerTest, StartedAgainItIsHeardWithTheNextPlay) {
    open(recording);
    turn(120, 0);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.2));
    ExpectedSound expected(recording);
    server->kill();
    ASSERT_TRUE(wait([&] { return hasFinished(); }));
    expected.play(0, aqData().currentPacket, turns);
    server->start();
    capture = std::make_unique<Capture>(*server);
    player->play();
    EXPECT_EQ(differenceOf(heard(recording.frames), expected.play(0, turns)), "");
}

TEST_F(ServerTest, StartedAgainDuringAPauseItIsHeardFromTheBeginning) {
    open(recording);
    turn(120, 0);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.2));
    player->pause();
    ExpectedSound expected(recording);
    server->kill();
    server->start();
    capture = std::make_unique<Capture>(*server);
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    expected.play(0, aqData().currentPacket, turns);
    player->play();
    EXPECT_EQ(differenceOf(heard(recording.frames), expected.play(0, turns)), "");
}

TEST_F(ServerTest, ASinkThatIsRemovedFinishes) {
    open(recording);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.2));
    ASSERT_TRUE(server->ask({"unload-module", "module-null-sink"}));
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    EXPECT_EQ(finishes, 1);
}

TEST_F(ServerTest, AStreamThatIsMovedToAnotherSinkPlaysOn) {
    recording.frames = 96000;
    recording.fill(12);
    open(recording);
    turn(120, 0);
    ASSERT_TRUE(server->ask({"load-module", "module-null-sink", "sink_name=other", "channels=2",
                             "format=float32le", "rate=48000", "norewinds=1"}));
    ASSERT_TRUE(server->ask({"load-module", "module-rescue-streams"}));
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.3));
    const double before = player->curremtTime();
    ASSERT_TRUE(server->ask({"unload-module", "0"}));
    EXPECT_TRUE(isPlayingAfter(before + 0.3));
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    EXPECT_EQ(player->curremtTime(), 2.0);
    EXPECT_EQ(finishes, 1);
}

TEST_F(ServerTest, ASuspendedSinkOnlyHoldsUpTheSound) {
    open(recording);
    turn(120, 0);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.2));
    ASSERT_TRUE(server->ask({"suspend-sink", "h8", "1"}));
    let(300ms);
    const double before = player->curremtTime();
    let(700ms);
    EXPECT_NEAR(player->curremtTime(), before, 0.05);
    EXPECT_EQ(player->play_state(), PLAY_STATE_PLAY);
    ASSERT_TRUE(server->ask({"suspend-sink", "h8", "0"}));
    ASSERT_TRUE(wait([&] { return hasFinished(); }));
    let(300ms);
    // The sink's monitor is suspended a little before the sink and misses what plays in between.
    std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    std::vector<float> all = capture->heard();
    const std::size_t atFirst = commonFrames(all, expected);
    std::reverse(all.begin(), all.end());
    std::reverse(expected.begin(), expected.end());
    EXPECT_EQ(atFirst + commonFrames(all, expected), all.size() / 2);
    EXPECT_GT(all.size() / 2, recording.frames - 4800);
    EXPECT_EQ(finishes, 1);
}

TEST_F(ServerTest, WhileItIsFrozenTheTimeWaitsForTheFramesHandedOver) {
    recording.frames = 96000;
    recording.fill(13);
    open(recording);
    turn(120, 0);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.3));
    server->freeze();
    double last = 0;
    for (int i = 0; i < 150; ++i) {
        let(10ms);
        const double now = player->curremtTime();
        EXPECT_GE(now, last);
        EXPECT_LE(std::round(now * 48000), handedOver());
        last = now;
    }
    EXPECT_EQ(player->play_state(), PLAY_STATE_PLAY);
    server->thaw();
    const std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected), "");
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    EXPECT_EQ(finishes, 1);
}

TEST_F(ServerTest, WhileItIsFrozenEverythingGoesOnWithoutIt) {
    open(recording);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.2));
    server->freeze();
    const auto hasAnswered = std::make_shared<std::atomic<bool>>(false);
    player->setVolume(0.3);
    player->pause();
    player->play();
    player->setPosition(0.1);
    player->setPosition(0.7);
    EXPECT_EQ(player->play_state(), PLAY_STATE_PLAY);
    player->pause();
    open(folder.file("other.wav", recording.file()));
    player->play();
    sound.run([hasAnswered] { *hasAnswered = true; });
    let(50ms);
    EXPECT_EQ(player->play_state(), PLAY_STATE_PLAY);
    EXPECT_FALSE(*hasAnswered) << "the library's calls should hang behind all this";
    server->thaw();
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    EXPECT_TRUE(*hasAnswered);
    EXPECT_EQ(player->curremtTime(), 1.0);
}

TEST_F(ServerTest, KilledWhileAStartWaitsForItItFinishes) {
    open(recording);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.2));
    player->pause();
    const auto isPaused = std::make_shared<std::atomic<bool>>(false);
    sound.run([isPaused] { *isPaused = true; });
    ASSERT_TRUE(wait([&] { return isPaused->load(); }));
    server->freeze();
    player->play();
    let(50ms);
    server->kill();
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    const auto hasAnswered = std::make_shared<std::atomic<bool>>(false);
    sound.run([hasAnswered] { *hasAnswered = true; });
    EXPECT_TRUE(wait([&] { return hasAnswered->load(); }));
    EXPECT_EQ(finishes, 1);
}

TEST_F(ServerTest, WhileItIsFrozenTheProgramCanEnd) {
    open(recording);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.2));
    server->freeze();
    // What is left is done at the end of the test, before the server is killed.
    const auto other = std::make_shared<bool>();
    player->setPosition(0.5);
    sound.run([other] {});
    player.reset();
    EXPECT_GT(other.use_count(), 1) << "the library's calls should hang behind all this";
}

class BusyTest : public ServerTest,
                 public testing::WithParamInterface<std::chrono::milliseconds> {};

INSTANTIATE_TEST_SUITE_P(Times, BusyTest, testing::Values(250ms, 450ms, 2000ms));

TEST_P(BusyTest, ABusyMainThreadLosesNothing) {
    recording.frames = 72000;
    recording.fill(14);
    open(recording);
    turn(120, 0);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.2));
    std::this_thread::sleep_for(GetParam());
    const std::uint64_t underruns = aqData().queue->underruns();
    // Between the two it depends on how full the server was.
    EXPECT_LE(underruns, GetParam() <= 250ms ? 0U : 1U);
    EXPECT_GE(underruns, GetParam() >= 2000ms ? 1U : 0U);
    EXPECT_LE(std::round(player->curremtTime() * 48000), handedOver());
    const std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected), "");
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    EXPECT_EQ(player->curremtTime(), 1.5);
    EXPECT_EQ(finishes, 1);
}

TEST_F(ServerTest, TheTimeNeverGoesBackNorBeyondTheEnd) {
    open(recording);
    player->play();
    double last = 0;
    EXPECT_TRUE(wait([&] {
        const double now = player->curremtTime();
        EXPECT_GE(now, last);
        EXPECT_LE(now, 1.0);
        last = now;
        return hasFinished();
    }));
    EXPECT_EQ(last, 1.0);
}

TEST_F(ServerTest, HundredsOfSeeksLeaveNothingBehind) {
    open(recording);
    turn(120, 0);
    player->play();
    const auto seekAll = [&] {
        for (int i = 0; i < 125; ++i) {
            const double position = i % 25 == 0 ? 1.0 : (i * 37 % 100) / 100.0;
            player->setPosition(position);
            if (i % 5 == 0) {
                let(20ms);
            }
            if (position < 1.0) {
                EXPECT_GE(player->curremtTime(), position - 0.001);
                EXPECT_LE(player->curremtTime(), position + 0.5);
                EXPECT_NE(player->play_state(), PLAY_STATE_FINISH);
            }
            if (player->play_state() != PLAY_STATE_PLAY) {
                player->play();
            }
        }
        let(300ms);
    };
    seekAll();
    const std::ptrdiff_t threads = entriesOf("/proc/self/task");
    const std::ptrdiff_t descriptors = entriesOf("/proc/self/fd");
    seekAll();
    seekAll();
    seekAll();
    EXPECT_LE(entriesOf("/proc/self/task"), threads);
    EXPECT_LE(entriesOf("/proc/self/fd"), descriptors);

    player->setPosition(0.5);
    if (player->play_state() != PLAY_STATE_PLAY) {
        player->play();
    }
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    EXPECT_EQ(player->curremtTime(), 1.0);
}

TEST_F(ServerTest, AFileCutShortWhilePlayingEndsThereWithoutAnError) {
    recording.frames = 96000;
    recording.fill(15);
    open(recording);
    turn(120, 0);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.1));
    const std::filesystem::path file = folder / "take.wav";
    const auto headerBytes = std::filesystem::file_size(file) - 96000 * 6;
    std::filesystem::resize_file(file, headerBytes + 60000 * 6);
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    EXPECT_TRUE(player->getIsDone());
    EXPECT_FALSE(player->getIsError());
    std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    expected.resize(60000 * 2);
    // Where the file is read in pieces of 4800 frames, the cut is a border of one.
    EXPECT_EQ(differenceOf(heard(60000), expected), "");
}

TEST_F(ServerTest, AFileDeletedWhilePlayingPlaysToItsEnd) {
    open(recording);
    turn(120, 0);
    player->play();
    ASSERT_TRUE(isPlayingAfter(0.1));
    std::filesystem::remove(folder / "take.wav");
    const std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected), "");
    EXPECT_FALSE(player->getIsError());
}

} // namespace
} // namespace deckmate::test
