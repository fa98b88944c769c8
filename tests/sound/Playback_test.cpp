// Every sample that leaves for the sound server is the one that the rules give.
#include "sound/SoundTest.h"

#include <random>
#include <string>
#include <tuple>

namespace deckmate::test {
namespace {

/// Bits, raw, rate.
using Kind = std::tuple<std::uint32_t, bool, std::uint32_t>;

class PlaybackTest : public SoundTest, public testing::WithParamInterface<Kind> {
protected:
    PlaybackTest() {
        std::tie(recording.bits, recording.isRaw, recording.rate) = GetParam();
        recording.frames = recording.rate * 9 / 10 + 123;
        recording.fill(1);
    }

    NoiseRecording recording;
};

std::string nameOf(const testing::TestParamInfo<Kind>& info) {
    const auto [bits, isRaw, rate] = info.param;
    return std::to_string(bits) + (isRaw ? "BitRaw" : "BitPlain") + std::to_string(rate);
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlaybackTest,
                         testing::Combine(testing::Values(24U, 32U), testing::Bool(),
                                          testing::Values(44100U, 48000U, 96000U)),
                         nameOf);

TEST_P(PlaybackTest, WidthAndGainTurnedAllTheTimeAreHeardAsComputed) {
    open(recording);
    turn(120, 0);
    player->play();
    std::mt19937 random(2);
    const std::unique_ptr<Timer> hand = loop.makeTimer();
    hand->startRepeating(25ms, [&] {
        turn(static_cast<int>(random() % 151), static_cast<int>(random() % 25) - 12);
    });
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    hand->stop();
    const std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected), "");
    EXPECT_GT(turns.size(), 10U);
    EXPECT_EQ(finishes, 1);
}

class FileTest : public SoundTest {
protected:
    FileTest() { recording.fill(3); }

    NoiseRecording recording = {.samples = {}};
};

TEST_F(FileTest, APauseLosesAndRepeatsNothing) {
    open(recording);
    turn(90, -3);
    for (int i = 0; i < 3; ++i) {
        player->play();
        let(170ms);
        player->pause();
        let(120ms);
    }
    player->play();
    const std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected), "");
    EXPECT_EQ(finishes, 1);
}

TEST_F(FileTest, WhatIsTurnedDuringAPauseComesBehindTheBuffersThatAreQueued) {
    open(recording);
    turn(0, 0);
    player->play();
    let(150ms);
    player->pause();
    turn(150, 6);
    let(50ms);
    player->play();
    const std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected), "");
    EXPECT_EQ(turns.back().packet % 4800, 0);
}

TEST_F(FileTest, ASeekWhilePlayingGoesOnAtExactlyThePlace) {
    open(recording);
    turn(120, 0);
    player->play();
    let(300ms);
    ExpectedSound expected(recording);
    const std::vector<float> before = expected.play(0, aqData().currentPacket, turns);
    player->setPosition(0.6);
    const std::vector<float> after = expected.play(28800, turns);
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    std::vector<float> all = heard(after.size() / 2);

    const std::size_t first = all.size() - after.size();
    EXPECT_EQ(
        differenceOf({all.end() - static_cast<std::ptrdiff_t>(after.size()), all.end()}, after),
        "");
    all.resize(first);
    EXPECT_EQ(commonFrames(all, before), first / 2);
    EXPECT_GT(first, 0U);
    EXPECT_EQ(finishes, 2); // the seek's own stop, which changes nothing, and the end
    EXPECT_EQ(states,
              (std::vector<std::uint32_t>{PLAY_STATE_PLAY, PLAY_STATE_PLAY, PLAY_STATE_FINISH}));
}

TEST_F(FileTest, ASeekWhilePausedIsHeardOnlyOncePlayed) {
    open(recording);
    turn(120, 0);
    player->play();
    let(200ms);
    player->pause();
    ExpectedSound expected(recording);
    expected.play(0, aqData().currentPacket, turns);
    player->setPosition(0.5);
    let(200ms);
    const std::size_t before = capture->heard().size();
    EXPECT_EQ(player->play_state(), PLAY_STATE_PAUSE);
    player->play();
    const std::vector<float> after = expected.play(24000, turns);
    std::vector<float> all = heard((before + after.size()) / 2);
    EXPECT_EQ(differenceOf({all.begin() + static_cast<std::ptrdiff_t>(before), all.end()}, after),
              "");
}

TEST_F(FileTest, ASeekBeforePlayingDoesNotRepeatWhatItMadeReady) {
    open(recording);
    turn(120, 0);
    player->setPosition(0.5);
    player->play();
    ExpectedSound expected(recording);
    expected.play(24000, 24000 + 14400, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected.play(0, turns)), "");
}

TEST_F(FileTest, ASeekToTheEndFinishes) {
    open(recording);
    player->play();
    let(100ms);
    player->setPosition(1.0);
    EXPECT_EQ(player->play_state(), PLAY_STATE_FINISH);
    let(300ms);
    EXPECT_EQ(player->play_state(), PLAY_STATE_FINISH);
    const std::size_t before = capture->heard().size();
    let(200ms);
    EXPECT_EQ(capture->heard().size(), before);
}

TEST_F(FileTest, PlayAfterTheEndPlaysAllOfItAgain) {
    open(recording);
    turn(120, 0);
    player->play();
    ASSERT_TRUE(wait([&] { return hasFinished(); }));
    player->play();
    ASSERT_TRUE(wait([&] { return hasFinished() && finishes >= 2; }));
    ExpectedSound expected(recording);
    std::vector<float> twice = expected.play(0, turns);
    const std::vector<float> again = expected.play(0, turns);
    twice.insert(twice.end(), again.begin(), again.end());
    EXPECT_EQ(differenceOf(heard(twice.size() / 2), twice), "");
}

TEST_F(FileTest, NothingArrivesOfAPlayerThatIsGone) {
    open(recording);
    player->play();
    let(200ms);
    player.reset();
    let(150ms);
    const std::size_t before = capture->heard().size();
    let(1s);
    EXPECT_EQ(capture->heard().size(), before);
    EXPECT_EQ(finishes, 0);
}

TEST_F(FileTest, APlayerMayBeDestroyedByWhoHearsOfItsEnd) {
    open(recording);
    onChange = [this] {
        if (hasFinished()) {
            player.reset();
        }
    };
    turn(120, 0);
    player->play();
    EXPECT_TRUE(wait([&] { return player == nullptr; }));
    const std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected), "");
    EXPECT_EQ(finishes, 1);
}

TEST_F(FileTest, HalfTheVolumeIsHalfOfEachSample) {
    open(recording);
    turn(120, 0);
    player->setVolume(0.5);
    player->play();
    std::vector<float> half = ExpectedSound(recording).play(0, turns);
    for (float& sample : half) {
        sample /= 2;
    }
    EXPECT_EQ(differenceOf(heard(recording.frames), half), "");
}

TEST_F(FileTest, VolumesThatAreNoneLeaveTheSoundAsItIs) {
    open(recording);
    turn(120, 0);
    player->setVolume(-0.1);
    player->setVolume(1.5);
    player->setVolume(std::numeric_limits<double>::quiet_NaN());
    player->play();
    const std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected), "");
}

TEST_F(FileTest, SixteenBitsArePlayedAsTheyAre) {
    recording.bits = 16;
    recording.fill(4);
    open(recording);
    turn(150, 12);
    player->play();
    EXPECT_EQ(differenceOf(heard(recording.frames), recording.samples), "");
}

TEST_F(FileTest, MonoIsPlayedAsItIsOnBothSides) {
    recording.channels = 1;
    recording.isRaw = false;
    recording.fill(5);
    open(recording);
    turn(150, 12);
    player->play();
    const std::vector<float> expected = ExpectedSound(recording).play(0, turns);
    EXPECT_EQ(differenceOf(heard(recording.frames), expected), "");
}

TEST_F(FileTest, TheRightSideIsNotClippedButWraps) {
    recording.isRaw = false;
    recording.samples.assign(recording.frames * 2, 0.75F);
    open(recording);
    turn(120, 6);
    player->play();
    const std::vector<float> all = heard(recording.frames);
    // 0.75 raised by 6 dB is 1.496...: clipped on the left, 2 less on the right.
    EXPECT_EQ(all[2 * 4800], 8388607.0F / 8388608.0F);
    EXPECT_NEAR(all[2 * 4800 + 1], 1.4964F - 2.0F, 0.0001F);
}

class OtherRateTest : public SoundTest, public testing::WithParamInterface<std::uint32_t> {};

INSTANTIATE_TEST_SUITE_P(Rates, OtherRateTest, testing::Values(22050U, 192000U));

TEST_P(OtherRateTest, IsResampledByTheServer) {
    startServer(48000);
    NoiseRecording recording = {.rate = GetParam(), .isRaw = false, .samples = {}};
    recording.frames = recording.rate;
    // 441 periods a second of a square wave at half of full scale.
    for (std::size_t i = 0; i < recording.frames; ++i) {
        const bool isUp = i * 882 / recording.rate % 2 == 0;
        recording.samples.insert(recording.samples.end(), 2, isUp ? 0.5F : -0.5F);
    }
    open(recording);
    player->play();
    EXPECT_TRUE(wait([&] { return hasFinished(); }));
    EXPECT_NEAR(player->curremtTime(), 1.0, 0.001);
    const std::vector<float> all = heard(47900);
    EXPECT_NEAR(static_cast<double>(all.size()) / 2, 48000.0, 200.0);
    int rises = 0;
    for (std::size_t i = 2; i < all.size(); i += 2) {
        rises += all[i - 2] < 0 && all[i] >= 0 ? 1 : 0;
    }
    EXPECT_NEAR(rises, 440, 2);
}

} // namespace
} // namespace deckmate::test
