#include "desktop/monkey/WindowRules.h"

#include "controls/AngleViewer.h"
#include "controls/GainTickTitle.h"
#include "controls/H8GainSlider.h"
#include "controls/H8Slider.h"
#include "controls/H8SliderCell.h"
#include "controls/LevelMeter.h"
#include "controls/Resources.h"
#include "device/MIDISequenceManager.h"
#include "playback/AQPlayer.h"

#include <cmath>
#include <stdexcept>
#include <utility>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QLabel>
#include <QMainWindow>
#include <QRegularExpression>
#include <QTableView>
#include <QTimer>
#include <QToolButton>

namespace deckmate::test {

namespace {

using namespace std::chrono_literals;

constexpr int meterInterval = 34; // milliseconds, as both are rounded up
constexpr int timeInterval = 200;
constexpr const char* noTime = "--:--:--";

bool isTime(const QString& text) {
    static const QRegularExpression form(R"(^\d{2,}:[0-5]\d:[0-5]\d$)");
    return form.match(text).hasMatch();
}

int secondsOf(const QString& time) {
    const QStringList parts = time.split(':');
    return parts.at(0).toInt() * 3600 + parts.at(1).toInt() * 60 + parts.at(2).toInt();
}

double opacityOf(const QLabel& label) {
    return static_cast<double>(label.palette().color(QPalette::WindowText).alphaF());
}

bool isNear(double one, double other) {
    return std::abs(one - other) < 0.01;
}

} // namespace

WindowRules::WindowRules(QMainWindow& window) : window_(window) {
    for (const char* const name : {"play_play", "play_pause"}) {
        images_[name] = icon(name).pixmap(view<QToolButton>("btnPlayPause").iconSize()).toImage();
    }
    for (const char* const name : {"speaker_mute", "speaker_1", "speaker_2", "speaker_3"}) {
        images_[name] = icon(name).pixmap(view<QToolButton>("btnVolume").iconSize()).toImage();
    }
    QCoreApplication::instance()->installEventFilter(this);
}

bool WindowRules::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Timer) {
        const auto* const timer = qobject_cast<const QTimer*>(watched);
        if (timer != nullptr && timer->parent() == nullptr &&
            timer->timerType() == Qt::PreciseTimer && timer->interval() <= timeInterval) {
            ++ticks_;
            meterTicks_ += timer->interval() <= meterInterval ? 1 : 0;
        }
    }
    return QObject::eventFilter(watched, event);
}

template <class View>
View& WindowRules::view(const char* name) const {
    auto* const found = window_.findChild<View*>(name);
    if (found == nullptr) {
        throw std::runtime_error(std::string("no view ") + name);
    }
    return *found;
}

QString WindowRules::text(const char* label) const {
    return view<QLabel>(label).text();
}

void WindowRules::expect(bool holds, const std::string& rule) {
    if (!holds) {
        broken_.push_back(rule);
    }
}

bool WindowRules::isPlaying() const {
    return view<QToolButton>("btnPlayPause").accessibleName() == "Pause";
}

bool WindowRules::isOpen() const {
    return text("lblTimeTotal") != noTime;
}

std::vector<std::string> WindowRules::broken() {
    checkRecording();
    checkStereo();
    checkTime();
    checkHands();
    checkPlaying();
    checkVolume();
    checkRecorder();
    checkBrowser();
    ticks_ = 0;
    meterTicks_ = 0;
    wasPlaying_ = isPlaying();
    wasSelected_ = selected();
    then_ = std::chrono::steady_clock::now();
    return std::exchange(broken_, {});
}

std::vector<std::string> WindowRules::brokenSince() {
    const bool isLonger = std::chrono::steady_clock::now() - then_ > 2 * meterInterval * 1ms;
    if (wasPlaying_ && isPlaying() && isLonger) {
        expect(meterTicks_ > 0, "playing, but no timer moves the meters");
    }
    if (!wasPlaying_) {
        expect(!isPlaying(), "playing, which nobody asked for");
        // One may come from a longer timer that woke up early.
        expect(ticks_ < 2, "not playing, but a timer runs");
    }
    if (wasSelected_ && rows().contains(*wasSelected_)) {
        expect(selected() == wasSelected_, "the selection has left " + wasSelected_->toStdString());
    }
    return std::exchange(broken_, {});
}

void WindowRules::checkRecording() {
    const bool open = isOpen();
    for (const char* const name : {"btnPlayPause", "btnExport", "sliderTime", "sliderGain"}) {
        expect(view<QWidget>(name).isEnabled() == open, std::string(name) + " enabled or not");
    }
    expect(view<GainTickTitle>("tickOfGain").enable() == open, "tickOfGain enabled or not");
    expect(view<GainTickTitle>("tickOfLevel").enable(), "tickOfLevel enabled");
    for (const char* const name : {"sliderTime", "sliderGain"}) {
        expect(view<Slider>(name).cell()->sliderEnabled() == open,
               std::string(name) + "'s cell enabled or not");
    }
    expect(view<Slider>("sliderVolume").isEnabled(), "sliderVolume enabled");
    expect(text("lblFileName").isEmpty() != open, "lblFileName shown or not");
    expect(isNear(opacityOf(view<QLabel>("lblGain")), open ? 1.0 : 0.5), "lblGain's opacity");
    expect((aqData().queue != nullptr) == open, "a queue with a recording, none without");
    const auto gain = view<Slider>("sliderGain").integerValue();
    expect(gain >= -36 && gain <= 36, "gain within its range");
}

void WindowRules::checkStereo() {
    const QString name = text("lblFileName");
    // What was exported isn't raw any more.
    const bool isRaw = isOpen() && name.contains("raw") && !name.contains("_Decode");
    const auto& dial = view<AngleViewer>("sliderStereo");
    expect(dial.enable() == isRaw, "sliderStereo enabled or not: " + name.toStdString());
    expect(view<QWidget>("imgDevice").isEnabled() == isRaw, "imgDevice enabled or not");
    expect(isNear(opacityOf(view<QLabel>("lblStereo")), isRaw ? 1.0 : 0.5), "lblStereo's opacity");
    expect(dial.angle() >= 0 && dial.angle() <= 150, "angle within its range");
}

void WindowRules::checkTime() {
    const QString current = text("lblTimeCurrent");
    const QString total = text("lblTimeTotal");
    const auto& slider = view<Slider>("sliderTime");
    const double value = slider.doubleValue();
    expect(std::isfinite(value) && value >= slider.minValue() && value <= slider.maxValue(),
           "position within its range");
    if (!isOpen()) {
        expect(current == noTime, "no time without a recording: " + current.toStdString());
        expect(value == 0, "position 0 without a recording");
        return;
    }
    expect(slider.minValue() == 0 && slider.maxValue() == 1, "positions from 0 to 1");
    expect(isTime(total), "a time in total: " + total.toStdString());
    expect(isTime(current), "a time: " + current.toStdString());
    if (isTime(total) && isTime(current)) {
        expect(secondsOf(current) <= secondsOf(total),
               current.toStdString() + " not beyond " + total.toStdString());
    }
}

void WindowRules::checkHands() {
    if (isHeld_) {
        return;
    }
    for (const char* const name : {"sliderTime", "sliderGain", "sliderVolume"}) {
        expect(!view<Slider>(name).isTracking(), std::string(name) + " let go");
    }
    expect(!view<H8Slider>("sliderTime").isSeeking(), "sliderTime follows the sound again");
}

void WindowRules::checkPlaying() {
    const bool isOn = isPlaying();
    expect(shows("btnPlayPause", isOn ? "play_pause" : "play_play"), "btnPlayPause's image");
    expect(isOpen() || !isOn, "nothing plays without a recording");
    expect(!isOn || (aqData().queue && aqData().queue->isRunning()), "playing, the queue runs");
    for (const char* const name : {"lvlLeft", "lvlRight"}) {
        const auto level = view<LevelMeter>(name).level();
        expect(isOn ? level >= 0 && level <= 54 : level == 0,
               std::string(name) + " shows " + std::to_string(level));
    }
}

void WindowRules::checkVolume() {
    const double volume = view<Slider>("sliderVolume").doubleValue();
    const bool isMuted = view<QToolButton>("btnVolume").accessibleName() == "Unmute";
    expect(volume >= 0 && volume <= 1, "volume within its range");
    expect(!isMuted || volume == 0, "muted, the volume is 0");
    const char* image = "speaker_mute";
    if (volume > 0) {
        image = volume * 3 < 1 ? "speaker_1" : volume * 3 < 2 ? "speaker_2" : "speaker_3";
    }
    expect(shows("btnVolume", image), std::string("btnVolume shows ") + image);
}

void WindowRules::checkRecorder() {
    if (text("lblConnect") != "Connected") {
        checkNoRecorder();
        return;
    }
    expect(isRecorderIn_, "connected, a recorder is plugged in");
    expect(view<QWidget>("statusDot").isEnabled(), "connected, the dot is lit");
    expect(text("lblVersion").startsWith("Ver. "), "version: " + text("lblVersion").toStdString());
    expect(text("lblUsed").endsWith(" Used"), "card: " + text("lblUsed").toStdString());
    static const QRegularExpression remaining(R"(^(\d{2,3}:\d{2,3}:\d{2,3}|--:--:--)$)");
    expect(remaining.match(text("lblRemain")).hasMatch(),
           "time left on the card: " + text("lblRemain").toStdString());
    for (const auto& [popup, cover] : {std::pair("popupBattery", "listBatteryCover"),
                                       std::pair("popupAutoPow", "listAutoPowOffCover")}) {
        expect(view<QComboBox>(popup).isEnabled(), std::string("connected, ") + popup);
        expect(!view<QWidget>(cover).isVisible(), std::string("connected, no ") + cover);
    }
    const ORLODeviceInfo& info = MIDISequenceManager::getDeviceInfo();
    const auto& battery = view<QComboBox>("popupBattery");
    expect(battery.currentIndex() == (info.batteryType < 3 ? info.batteryType : -1),
           "popupBattery tells what is known of the recorder");
    constexpr int power[] = {3, 0, 1, 2}; // items by the recorder's codes
    const int code = info.autoPowOffType;
    expect(view<QComboBox>("popupAutoPow").currentIndex() == (code < 4 ? power[code] : -1),
           "popupAutoPow tells what is known of the recorder");
}

void WindowRules::checkNoRecorder() {
    expect(text("lblConnect") == "Disconnected", "lblConnect: " + text("lblConnect").toStdString());
    expect(!view<QWidget>("statusDot").isEnabled(), "disconnected, the dot is dark");
    expect(text("lblVersion").isEmpty(), "disconnected, no version");
    expect(text("lblUsed") == "-- GB / -- GB Used", "disconnected, no card");
    expect(text("lblRemain") == noTime, "disconnected, no time left");
    for (const auto& [name, cover] : {std::pair("popupBattery", "listBatteryCover"),
                                      std::pair("popupAutoPow", "listAutoPowOffCover")}) {
        const auto& popup = view<QComboBox>(name);
        expect(!popup.isEnabled(), std::string("disconnected, no ") + name);
        expect(popup.currentText().isEmpty(), std::string("disconnected, no text on ") + name);
        expect(!popup.view()->isVisible(), std::string("disconnected, no list of ") + name);
        expect(view<QWidget>(cover).isVisible(), std::string("disconnected, ") + cover);
    }
}

void WindowRules::checkBrowser() {
    const auto& table = view<QTableView>("tableFile");
    const QModelIndexList chosen = table.selectionModel()->selectedRows();
    expect(chosen.size() <= 1, "at most one row selected");
    expect(chosen.isEmpty() || chosen.front().row() < table.model()->rowCount(),
           "a row that is there selected");
    const QString name = view<QAbstractButton>("lblFolder").text();
    expect(name == folder_ || name == "Desktop",
           "folder " + name.toStdString() + " instead of " + folder_.toStdString());
    for (const QString& row : rows()) {
        expect(!row.isEmpty(), "rows with names");
    }
}

bool WindowRules::shows(const char* button, const char* image) {
    const auto& view_ = view<QToolButton>(button);
    // As the reference was drawn: an image for those that can't act may look otherwise.
    const QImage shown = view_.icon().pixmap(view_.iconSize()).toImage();
    return shown == images_.at(image);
}

QStringList WindowRules::rows() const {
    QStringList names;
    const QAbstractItemModel& model = *view<QTableView>("tableFile").model();
    for (int row = 0; row < model.rowCount(); ++row) {
        names << model.index(row, 0).data().toString();
    }
    return names;
}

std::optional<QString> WindowRules::selected() const {
    const QModelIndexList chosen = view<QTableView>("tableFile").selectionModel()->selectedRows();
    return chosen.isEmpty() ? std::nullopt : std::optional(chosen.front().data().toString());
}

} // namespace deckmate::test
