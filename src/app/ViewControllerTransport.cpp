#include "app/ElidedLabel.h"
#include "app/ExportVC.h"
#include "app/ViewController.h"
#include "controls/H8Slider.h"
#include "controls/LevelMeter.h"
#include "controls/Resources.h"
#include "device/MIDICommon.h"

#include <chrono>
#include <cmath>
#include <utility>

#include <QLabel>
#include <QMainWindow>
#include <QToolButton>

namespace deckmate {

namespace {

constexpr auto timeInterval = std::chrono::milliseconds(200);
constexpr double meterInterval = 0.033333335F; // seconds
/// The reader's answer for a time in which it has no samples.
constexpr float noSamples = -2.0F;

void setText(QLabel& label, const std::string& text) {
    label.setText(QString::fromStdString(text));
}

/// A click, a key or the wheel is done with at once, a drag when it ends.
bool isDone(ControlEvent event) {
    return event != ControlEvent::LeftMouseDown && event != ControlEvent::LeftMouseDragged;
}

} // namespace

// Play, pause, position

void ViewController::btnPlay_Click() {
    if (!btnPlayPause->isEnabled() || !wavPlayer_) {
        return;
    }
    if (wavPlayer_->play_state() == PLAY_STATE_PAUSE) {
        // What is queued was made with other settings.
        if (settings() != before_pause_) {
            wavPlayer_->setPosition(sliderTime->doubleValue());
        }
    }
    // Stopping the sound of a recording that can't be read any more has closed it.
    if (wavPlayer_) {
        wavPlayer_->play();
    }
}

PlaySettings ViewController::settings() const {
    return {sliderStereo->angle(), static_cast<double>(sliderGain->integerValue())};
}

void ViewController::sliderTimeValueChanged(Slider& slider) {
    if (!wavPlayer_) {
        return;
    }
    if (!isDone(slider.currentEvent())) {
        setText(*lblTimeCurrent, wavPlayer_->getTimeFromPosition(slider.doubleValue()));
        return;
    }
    sliderTime->setIsSeeking(false);
    isSeeking_ = true;
    wavPlayer_->setPosition(slider.doubleValue());
    if (!wavPlayer_) {
        return; // the stop of a recording that can't be read any more has closed it
    }
    if (const std::string time = wavPlayer_->currentTimeString(); !time.empty()) {
        setText(*lblTimeCurrent, time);
    }
}

void ViewController::WavePlayerStateChanged() {
    MIDICommon::runOnUIThread([this] { updatePlayStateUI(); });
}

void ViewController::updatePlayStateUI() {
    if (!wavPlayer_) {
        return;
    }
    const auto stop = [this] {
        setPlayImage(true);
        stopCurrentTimeTimer();
    };
    const auto keepSettings = [this] {
        clearMeters();
        before_pause_ = settings();
    };
    switch (wavPlayer_->play_state()) {
    case PLAY_STATE_PLAY:
        setPlayImage(false);
        refreshUIWhenPlay();
        startCurrentTimeTimer();
        isSeeking_ = false;
        break;
    case PLAY_STATE_PAUSE:
        stop();
        keepSettings();
        break;
    case PLAY_STATE_FINISH:
        stop();
        if (!sliderTime->isSeeking()) {
            sliderTime->setDoubleValue(1.0);
        }
        keepSettings();
        setText(*lblTimeCurrent, WavePlayer::getZeroTimeString());
        sliderTime->setDoubleValue(0.0);
        break;
    default:
        break;
    }
}

void ViewController::setPlayImage(bool showsPlay) {
    btnPlayPause->setIcon(icon(showsPlay ? "play_play" : "play_pause"));
    btnPlayPause->setAccessibleName(showsPlay ? "Play" : "Pause");
    btnPlayPause->setToolTip(btnPlayPause->accessibleName());
}

void ViewController::startCurrentTimeTimer() {
    stopCurrentTimeTimer();
    timerUpdateCurrentTime_ = RunLoop::main().makeTimer();
    timerUpdateCurrentTime_->startRepeating(timeInterval, [this] { sliderTimerUpdate(); });
    timerLevel_ = RunLoop::main().makeTimer();
    timerLevel_->startRepeating(
        std::chrono::duration_cast<Timer::Duration>(std::chrono::duration<double>(meterInterval)),
        [this] { updateLevelMeter(meterInterval); });
}

void ViewController::stopCurrentTimeTimer() {
    timerUpdateCurrentTime_ = nullptr;
    timerLevel_ = nullptr;
}

void ViewController::refreshUIWhenPlay() {
    sliderTimerUpdate();
    updateLevelMeter(meterInterval);
}

void ViewController::sliderTimerUpdate() {
    if (!wavPlayer_ || sliderTime->isSeeking()) {
        return;
    }
    setText(*lblTimeCurrent, wavPlayer_->currentTimeString());
    if (const auto position = positionOf(wavPlayer_->curremtTime(), wavPlayer_->duration())) {
        sliderTime->setDoubleValue(static_cast<double>(*position));
    }
}

// Volume

void ViewController::btnVolume_Click() {
    isMuteVolume_ = !isMuteVolume_;
    double volume = 0;
    if (isMuteVolume_) {
        lastVolume_ = sliderVolume->doubleValue();
        sliderVolume->setDoubleValue(0);
    } else {
        sliderVolume->setDoubleValue(lastVolume_);
        volume = sliderVolume->doubleValue();
        heardVolume_ = volume > 0 ? volume : heardVolume_;
    }
    if (wavPlayer_) {
        wavPlayer_->setVolume(volume);
    }
    updateVolumeIcon(volume);
}

void ViewController::sliderVolValueChanged(Slider& slider) {
    const double volume = slider.doubleValue();
    const ControlEvent event = slider.currentEvent();
    const bool isStep = isDone(event) && event != ControlEvent::LeftMouseUp;
    if (event == ControlEvent::LeftMouseDown) {
        lastVolume_ = volume;
    } else if (isStep) {
        // What sounded last before it was turned off by keys can be brought back, too.
        lastVolume_ = volume > 0 ? volume : heardVolume_;
    }
    if (volume > 0) {
        heardVolume_ = volume;
    }
    isMuteVolume_ = !(volume > 0);
    updateVolumeIcon(volume);
    if (wavPlayer_) {
        wavPlayer_->setVolume(volume);
    }
}

void ViewController::updateVolumeIcon(double volume) {
    const std::string_view name = speakerImage(volume, isMuteVolume_);
    if (name != std::exchange(speakerImage_, name)) { // a drag has many steps
        btnVolume->setIcon(
            icon(QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()))));
    }
    btnVolume->setAccessibleName(isMuteVolume_ ? "Unmute" : "Mute");
    btnVolume->setToolTip(btnVolume->accessibleName());
}

// Gain and angle

void ViewController::sliderGainValueChanged(H8GainSlider& slider) {
    if (wavPlayer_) {
        wavPlayer_->setGain(slider.integerValue());
    }
}

void ViewController::GainTickTitle(class GainTickTitle& strip, const QString& clickAt) {
    if (&strip != tickOfGain || !sliderGain->isEnabled()) {
        return;
    }
    if (const std::optional<int> gain = gainOfTick(clickAt.toStdString())) {
        sliderGain->setIntegerValue(*gain);
        sliderGainValueChanged(*sliderGain);
    }
}

void ViewController::angleViewer(AngleViewer& /*dial*/, double angleChanged) {
    if (wavPlayer_) {
        wavPlayer_->setAngle(wholeAngle(angleChanged));
    }
}

// Meters

void ViewController::updateLevelMeter(double interval) {
    if (!wavPlayer_ || !export_) {
        return;
    }
    const double from = wavPlayer_->curremtTime();
    float left = 0;
    float right = 0;
    export_->reader()->getSampleLevelMeterFrom(from, from + interval, &left, &right,
                                               static_cast<double>(-sliderGain->integerValue()),
                                               static_cast<double>(wavPlayer_->angle()));
    if (left == noSamples) {
        return;
    }
    lvlLeft->setLevel(meterLevel(left));
    lvlRight->setLevel(meterLevel(right));
}

void ViewController::clearMeters() {
    lvlLeft->setLevel(0);
    lvlRight->setLevel(0);
}

void ViewController::WavePlayerLevelChanged(double left, double right) {
    MIDICommon::runOnUIThread([this, left, right] {
        lvlLeft->setLevel(decibelsFromFullScale(left));
        lvlRight->setLevel(decibelsFromFullScale(right));
    });
}

// Export

void ViewController::btnExport_Click() {
    if (!export_) {
        return;
    }
    export_->setGain(static_cast<double>(sliderGain->integerValue()));
    export_->setAngle(sliderStereo->angle());
    if (folderHelper_) {
        export_->setDirPath(folderHelper_->folderPath());
    }
    ExportVC sheet(&window_);
    sheet.setExporter(export_);
    present(sheet);
}

} // namespace deckmate
