// Playing, volume, gain, stereo width and meters in the main window.
#include "desktop/app/LookEnvironment.h"
#include "desktop/app/MainWindowTest.h"

#include "controls/AngleViewer.h"
#include "controls/GainTickTitle.h"
#include "controls/H8Slider.h"
#include "controls/LevelMeter.h"
#include "controls/Slider.h"
#include "playback/AQPlayer.h"

#include <algorithm>

#include <QApplication>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace deckmate::test {
namespace {

using testing::ElementsAre;

constexpr std::size_t tenSeconds = 480'000;

class Transport : public MainWindowTest {
protected:
    void open(std::size_t frames = tenSeconds) {
        addTake("take.wav", frames);
        start();
        doubleClickRow("take.wav");
        EXPECT_TRUE(isPlaying());
    }
    bool isPlaying() { return view<QWidget>("btnPlayPause").accessibleName() == "Pause"; }
    /// Plays on until nothing more can be read; what is queued by then still sounds.
    void loseTheFile() {
        aqData().audioFile = nullptr;
        EXPECT_TRUE(Desktop::waitFor([this] {
            sound.pull(1'000);
            return aqData().isError;
        }));
    }
    void clickPlay() { desktop.click(view<QWidget>("btnPlayPause"), {28, 28}); }
    Slider& slider(const char* name) { return view<Slider>(name); }
    /// Where the knob's middle is.
    QPointF knob(const char* name) {
        const Slider& control = slider(name);
        const ViewRect place = control.geometry().knobRect(control.fraction());
        return {place.x + place.width / 2, place.y + place.height / 2 - 2};
    }
    /// In the strip, of the label's middle.
    QPointF label(const QString& wanted) {
        const auto& strip = view<GainTickTitle>("tickOfGain");
        for (const TickTextInfo& entry : strip.textRectList()) {
            if (entry.text == wanted) {
                return {entry.frame.x + entry.frame.width / 2,
                        strip.height() - entry.frame.y - entry.frame.height / 2};
            }
        }
        ADD_FAILURE() << "no label " << wanted.toStdString();
        return {};
    }
    float loudness() {
        const std::vector<float> heard = sound.pull(2'000); // beyond the ramp to a new gain
        return heard.empty() ? 0 : heard.back();
    }
};

/// How often a key has gone down, repeated by the X server or not.
class PressCounter : public QObject {
public:
    PressCounter() { qApp->installEventFilter(this); }
    int presses = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        presses += event->type() == QEvent::KeyPress && watched->isWindowType() ? 1 : 0;
        return false;
    }
};

TEST_F(Transport, AHeldSpaceBarCountsOnceWhenItIsLetGo) {
    open();
    const PressCounter counter;
    desktop.keyDown("space");
    EXPECT_TRUE(Desktop::waitFor([&] { return counter.presses > 20; }));
    EXPECT_TRUE(isPlaying());
    desktop.keyUp("space");
    waitForReleases();
    EXPECT_FALSE(isPlaying());
}

TEST_F(Transport, TwoTapsOfTheSpaceBarCountTwice) {
    open();
    desktop.tap("space");
    // No finger does both within one of the server's milliseconds, which a repetition does.
    QElapsedTimer clock;
    clock.start();
    EXPECT_TRUE(Desktop::waitFor([&] { return clock.hasExpired(2); }));
    desktop.tap("space");
    waitForReleases();
    EXPECT_TRUE(isPlaying());
}

TEST_F(Transport, ButtonAndSpaceBarPauseAndPlay) {
    open();
    clickPlay();
    EXPECT_FALSE(isPlaying());
    EXPECT_EQ(view<LevelMeter>("lvlLeft").level(), 0);
    desktop.tap("space");
    waitForReleases();
    EXPECT_TRUE(isPlaying());
}

TEST_F(Transport, TheSpaceBarWithoutARecordingDoesNothing) {
    start();
    desktop.tap("space");
    waitForReleases();
    EXPECT_FALSE(isPlaying());
    EXPECT_EQ(sound.opened, 0U);
}

TEST_F(Transport, InAnOpenMenuTheSpaceBarIsTheMenus) {
    open();
    QMenu& menu = *windows->window().menuBar()->actions().at(1)->menu();
    menu.popup({});
    EXPECT_TRUE(Desktop::waitFor([&] { return menu.isVisible(); }));
    desktop.tap("space");
    waitForReleases();
    EXPECT_TRUE(isPlaying());
    menu.close();
}

TEST_F(Transport, TheMetersShowTheRecordingsPeaks) {
    open();
    EXPECT_TRUE(Desktop::waitFor([this] { return view<LevelMeter>("lvlLeft").level() != 0; }));
    EXPECT_EQ(view<LevelMeter>("lvlLeft").level(), 42); // half of full scale
    EXPECT_EQ(view<LevelMeter>("lvlRight").level(), 42);
}

TEST_F(Transport, TimeAndPositionFollowTheSound) {
    open();
    sound.pull(48'000);
    EXPECT_TRUE(Desktop::waitFor([this] {
        sound.pull(1'000);
        return text("lblTimeCurrent") == "00:00:03";
    }));
    EXPECT_GE(slider("sliderTime").doubleValue(), 0.3);
    EXPECT_LT(slider("sliderTime").doubleValue(), 0.4);
}

TEST_F(Transport, WhileTheUserDragsOnlyTheTimeFollowsAndTheReleaseSeeks) {
    open();
    const QPointF from = knob("sliderTime");
    auto& control = view<H8Slider>("sliderTime");
    desktop.moveTo(control, from);
    desktop.press();
    desktop.moveTo(control, {from.x() + 327, from.y()});
    EXPECT_TRUE(control.isSeeking());
    EXPECT_EQ(text("lblTimeCurrent"), "00:00:05");
    const std::size_t streams = sound.opened;
    desktop.release();
    EXPECT_FALSE(control.isSeeking());
    EXPECT_EQ(text("lblTimeCurrent"), "00:00:05");
    EXPECT_GE(sound.opened, streams);
    EXPECT_NEAR(control.doubleValue(), 0.5, 0.01);
}

TEST_F(Transport, TheEndShowsTheBeginning) {
    open(9'600);
    EXPECT_TRUE(Desktop::waitFor([this] {
        sound.pull(2'000);
        return !isPlaying();
    }));
    EXPECT_EQ(slider("sliderTime").doubleValue(), 0.0);
    EXPECT_EQ(text("lblTimeCurrent"), "00:00:00");
    EXPECT_EQ(text("lblFileName"), "take.wav");
    clickPlay();
    EXPECT_TRUE(isPlaying());
}

TEST_F(Transport, ASeekInARecordingThatCanNoLongerBeReadClosesIt) {
    open();
    loseTheFile();
    slider("sliderTime").chooseValue(0.5, ControlEvent::KeyDown);
    EXPECT_EQ(text("lblFileName"), "");
    EXPECT_EQ(text("lblTimeCurrent"), "--:--:--");
    EXPECT_FALSE(slider("sliderTime").isEnabled());
}

TEST_F(Transport, GoingOnWithAnotherGainInARecordingThatCanNoLongerBeReadClosesIt) {
    open();
    loseTheFile();
    controller->btnPlay_Click();
    ASSERT_FALSE(isPlaying());
    desktop.click(view<QWidget>("tickOfGain"), label("+12"));
    controller->btnPlay_Click();
    EXPECT_EQ(text("lblFileName"), "");
    EXPECT_FALSE(view<QWidget>("btnPlayPause").isEnabled());
}

TEST_F(Transport, MuteBringsTheVolumeBack) {
    open();
    slider("sliderVolume").setDoubleValue(0.8);
    slider("sliderVolume").chooseValue(0.8, ControlEvent::Assistance);
    desktop.click(view<QWidget>("btnVolume"), {20, 16});
    EXPECT_EQ(slider("sliderVolume").doubleValue(), 0.0);
    EXPECT_EQ(view<QWidget>("btnVolume").accessibleName(), "Unmute");
    EXPECT_EQ(loudness(), 0.0F);
    desktop.click(view<QWidget>("btnVolume"), {20, 16});
    EXPECT_EQ(slider("sliderVolume").doubleValue(), 0.8);
}

TEST_F(Transport, KeysToSilenceCanBeUndoneByTheMuteButton) {
    open();
    slider("sliderVolume").setFocus();
    desktop.tap("Home");
    EXPECT_EQ(slider("sliderVolume").doubleValue(), 0);
    desktop.click(view<QWidget>("btnVolume"), {10, 10});
    EXPECT_EQ(slider("sliderVolume").doubleValue(), 0.5);
    EXPECT_EQ(view<QWidget>("btnVolume").accessibleName(), "Mute");
}

TEST_F(Transport, ADragToSilenceCanBeUndoneByTheMuteButton) {
    start();
    const QPointF from = knob("sliderVolume");
    desktop.drag(slider("sliderVolume"), from, {from.x() - 130, from.y()});
    EXPECT_EQ(slider("sliderVolume").doubleValue(), 0.0);
    EXPECT_EQ(view<QWidget>("btnVolume").accessibleName(), "Unmute");
    desktop.click(view<QWidget>("btnVolume"), {20, 16});
    EXPECT_EQ(slider("sliderVolume").doubleValue(), 0.5);
}

TEST_F(Transport, AGainLabelSetsTheGain) {
    open();
    desktop.click(view<QWidget>("tickOfGain"), label("+12"));
    EXPECT_EQ(slider("sliderGain").doubleValue(), 12.0);
    desktop.doubleClick(slider("sliderGain"), knob("sliderGain"));
    EXPECT_EQ(slider("sliderGain").doubleValue(), 0.0);
}

TEST_F(Transport, WithoutARecordingAGainLabelDoesNothing) {
    start();
    desktop.click(view<QWidget>("tickOfGain"), label("+12"));
    EXPECT_EQ(slider("sliderGain").doubleValue(), 0.0);
}

TEST_F(Transport, TheGainIsHeard) {
    open();
    desktop.click(view<QWidget>("tickOfGain"), label("-12"));
    for (int i = 0; i < 30; ++i) {
        sound.pull(1'000);
        desktop.settle();
    }
    // Half of full scale, 12 dB down, at the volume 0.5; to the last of 24 bits.
    EXPECT_NEAR(loudness(), 0.5 * 0.2511886 * 0.5, 1e-6);
}

TEST_F(Transport, SettingsCarryOverToTheNextRecording) {
    addTake("next.wav");
    open();
    desktop.click(view<QWidget>("tickOfGain"), label("-12"));
    view<AngleViewer>("sliderStereo").setNewAngle(60);
    doubleClickRow("next.wav");
    EXPECT_EQ(slider("sliderGain").doubleValue(), -12.0);
    EXPECT_EQ(view<AngleViewer>("sliderStereo").angle(), 60);
    EXPECT_NEAR(loudness(), 0.5 * 0.2511886 * 0.5, 1e-6);
}

TEST_F(Transport, ExportTakesTheDialAndTheFolder) {
    open();
    desktop.click(view<QWidget>("btnExport"), {50, 18});
    EXPECT_THAT(presented, ElementsAre("ExportVC"));
}

} // namespace
} // namespace deckmate::test
