#include "playback/WavePlayer.h"

#include "support/LogLines.h"
#include "support/ManualRunLoop.h"
#include "support/ManualSound.h"
#include "support/PlayerWindow.h"
#include "support/TemporaryFolder.h"

#include <functional>
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

class WavePlayerTest : public testing::Test {
protected:
    TemporaryFolder folder;
    LogLines log;
    ManualRunLoop loop;
    ManualSound sound;
    PlayerWindow window{folder.file("a.wav", evenRecording(zeros(6 * 48000)))};
    WavePlayer* player = window.player.get();

    WavePlayerTest() = default;
    ~WavePlayerTest() override {
        window.player.reset();
        loop.runPending();
    }
    WavePlayerTest(const WavePlayerTest&) = delete;
    WavePlayerTest& operator=(const WavePlayerTest&) = delete;
    WavePlayerTest(WavePlayerTest&&) = delete;
    WavePlayerTest& operator=(WavePlayerTest&&) = delete;

    void playOut() {
        for (int i = 0; i < 1000 && !sound.pull(2400).empty(); ++i) {
            loop.runPending();
        }
        loop.runPending();
    }
};

TEST_F(WavePlayerTest, StartsInInitWithoutTelling) {
    EXPECT_EQ(player->play_state(), PLAY_STATE_INIT);
    EXPECT_EQ(player->volume(), 1.0);
    EXPECT_EQ(player->setPositionOldVal(), -1.0);
    EXPECT_THAT(window.states, IsEmpty());
}

TEST_F(WavePlayerTest, PlayTogglesPause) {
    player->play();
    player->play();
    player->play();
    EXPECT_THAT(window.states, ElementsAre(PLAY_STATE_PLAY, PLAY_STATE_PAUSE, PLAY_STATE_PLAY));
}

TEST_F(WavePlayerTest, PauseDoesNothingUnlessPlaying) {
    player->pause();
    player->setPosition(1.0);
    window.states.clear();
    player->pause();
    EXPECT_THAT(window.states, IsEmpty());
}

TEST_F(WavePlayerTest, TheEndOfTheFileFinishes) {
    player->play();
    playOut();
    EXPECT_THAT(window.states, ElementsAre(PLAY_STATE_PLAY, PLAY_STATE_FINISH));
    EXPECT_EQ(player->setPositionOldVal(), -1.0);
}

TEST_F(WavePlayerTest, PlayAfterTheEndBeginsAnewAndTellsTwice) {
    player->play();
    playOut();
    window.states.clear();
    player->play();
    EXPECT_THAT(window.states, ElementsAre(PLAY_STATE_PLAY, PLAY_STATE_PLAY));
    EXPECT_EQ(player->setPositionOldVal(), 0.0);
    EXPECT_EQ(sound.pull(10).size(), 20U);
}

TEST_F(WavePlayerTest, TheStopOfASeekIsNoFinish) {
    player->play();
    player->setPosition(0.5);
    loop.runPending();
    EXPECT_THAT(window.states, ElementsAre(PLAY_STATE_PLAY, PLAY_STATE_PLAY));
    EXPECT_FALSE(player->isSeeking());
}

TEST_F(WavePlayerTest, ASeekBeforePlayingTellsNobody) {
    player->setPosition(0.5);
    EXPECT_THAT(window.states, IsEmpty());
    EXPECT_EQ(player->play_state(), PLAY_STATE_INIT);
}

TEST_F(WavePlayerTest, ASeekWhilePausedStaysPaused) {
    player->play();
    player->pause();
    window.states.clear();
    player->setPosition(0.5);
    EXPECT_THAT(window.states, IsEmpty());
    EXPECT_EQ(player->play_state(), PLAY_STATE_PAUSE);
}

TEST_F(WavePlayerTest, ASeekAfterTheEndPauses) {
    player->play();
    playOut();
    window.states.clear();
    player->setPosition(0.5);
    EXPECT_THAT(window.states, ElementsAre(PLAY_STATE_PAUSE));
}

TEST_F(WavePlayerTest, ASeekToTheEndFinishesWithOneNotice) {
    window.hearsEvents = false;
    player->play();
    window.states.clear();
    player->setPosition(1.0);
    EXPECT_THAT(window.states, ElementsAre(PLAY_STATE_FINISH));
    EXPECT_EQ(player->setPositionOldVal(), 1.0);
    player->play();
    EXPECT_EQ(player->setPositionOldVal(), 0.0);
    EXPECT_EQ(player->play_state(), PLAY_STATE_PLAY);
}

TEST_F(WavePlayerTest, ASeekToTheEndEndsInFinishWhateverIsHeardOfIt) {
    player->play();
    player->setPosition(1.0);
    loop.runPending();
    EXPECT_EQ(player->play_state(), PLAY_STATE_FINISH);
}

TEST_F(WavePlayerTest, VolumesOutOfRangeAreIgnored) {
    player->setVolume(0.5);
    player->setVolume(1.5);
    player->setVolume(-0.1);
    EXPECT_EQ(player->volume(), 0.5);
    player->setVolume(0.0);
    EXPECT_EQ(player->volume(), 0.0);
    player->setVolume(1.0);
    EXPECT_EQ(player->volume(), 1.0);
}

TEST_F(WavePlayerTest, NoNumberIsAVolumeThatNobodyHears) {
    player->setVolume(std::numeric_limits<double>::quiet_NaN());
    EXPECT_NE(player->volume(), player->volume());
}

TEST_F(WavePlayerTest, TheVolumeOutlivesASeek) {
    AudioFile::setOpener(nullptr);
    window.player = std::make_unique<WavePlayer>(
        folder.file("b.wav", evenRecording(floats({1, 1, 1, 1}), {.tag = 3, .bits = 32})));
    window.player->setVolume(0.25);
    window.player->play();
    window.player->setPosition(0.5);
    EXPECT_THAT(sound.pull(1), ElementsAre(0.25F, 0.25F));
}

TEST_F(WavePlayerTest, MayBeDestroyedInsideItsOwnNotice) {
    window.onChange = [this] { window.player.reset(); };
    player->play();
    EXPECT_EQ(sound.open, 0U);
}

TEST_F(WavePlayerTest, MayBeDestroyedInsideTheNoticeOfASeek) {
    player->play();
    window.onChange = [this] { window.player.reset(); };
    player->setPosition(1.0); // the stop is noticed in the middle of it
    loop.runPending();
    EXPECT_EQ(sound.open, 0U);
}

TEST_F(WavePlayerTest, TimesAreShownInHoursMinutesAndSeconds) {
    EXPECT_EQ(WavePlayer::second2String(3725), "01:02:05");
    EXPECT_EQ(WavePlayer::second2String(0), "00:00:00");
    EXPECT_EQ(WavePlayer::second2String(360000), "100:00:00");
    EXPECT_EQ(WavePlayer::getZeroTimeString(), "00:00:00");
}

TEST_F(WavePlayerTest, TellsDurationAndTimes) {
    EXPECT_EQ(player->duration(), 1.0);
    EXPECT_EQ(player->durationString(), "00:00:01");
    EXPECT_EQ(player->getTimeFromPosition(0.99), "00:00:00");
    EXPECT_EQ(player->getTimeFromPosition(1.0), "00:00:01");
}

TEST_F(WavePlayerTest, InInitTheTimeIsZeroWhateverTheClockSays) {
    player->setPosition(1.0);
    EXPECT_EQ(player->currentTimeString(), "00:00:01");
    player->changeState(PLAY_STATE_INIT);
    EXPECT_EQ(player->currentTimeString(), "00:00:00");
    EXPECT_EQ(player->curremtTime(), 1.0);
}

TEST_F(WavePlayerTest, ATimeBeforeTheBeginningIsEmpty) {
    player->setPosition(-1.0);
    player->changeState(PLAY_STATE_PAUSE);
    EXPECT_EQ(player->currentTimeString(), "");
}

// There is no rate, so nothing can be divided by it.
TEST_F(WavePlayerTest, TimesOfAFileThatIsNotThereAreFinite) {
    window.player = std::make_unique<WavePlayer>(folder / "missing.wav");
    window.player->changeState(PLAY_STATE_PAUSE);
    EXPECT_EQ(window.player->curremtTime(), 0.0);
    EXPECT_EQ(window.player->duration(), 0.0);
    EXPECT_EQ(window.player->currentTimeString(), "00:00:00");
    EXPECT_EQ(window.player->getTimeFromPosition(0.5), "00:00:00");
}

TEST(WavePlayerStates, HaveNames) {
    EXPECT_EQ(WavePlayer::state2Str(0), "PLAY_STATE_INIT");
    EXPECT_EQ(WavePlayer::state2Str(1), "PLAY_STATE_PLAY");
    EXPECT_EQ(WavePlayer::state2Str(2), "PLAY_STATE_PAUSE");
    EXPECT_EQ(WavePlayer::state2Str(3), "PLAY_STATE_FINISH");
    EXPECT_EQ(WavePlayer::state2Str(4), "STATE NOT FOUND");
}

} // namespace
} // namespace deckmate
