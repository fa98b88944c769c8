#include "Gallery.h"

#include "controls/AngleViewer.h"
#include "controls/GainTickTitle.h"
#include "controls/H8Slider.h"
#include "controls/H8SliderCell.h"
#include "controls/LevelMeter.h"
#include "controls/Resources.h"

#include <QCoreApplication>
#include <QFocusEvent>
#include <QLabel>
#include <QPalette>

namespace deckmate::tools {

namespace {

constexpr int scaleTop = 50;
constexpr int scaleHeight = 300; ///< from the highest label's middle to the lowest one's
constexpr int stripMargin = 30;  ///< of a tick strip beyond the labels' middles
constexpr int knobMargin = 10;   ///< of a slider beyond the knob's middle at either end

QFont sized(QFont font, int pixels) {
    font.setPixelSize(pixels);
    return font;
}

} // namespace

Gallery::Gallery() {
    setWindowTitle(QStringLiteral("ORLO H8 Controls"));
    setFixedSize(1050, 830);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, colour("AppBGLight"));
    colours.setColor(QPalette::WindowText, colour("WHITE"));
    setPalette(colours);
    setAutoFillBackground(true);

    addDial({16, 20, 380, 380}, "Stereo width", 75, true);
    addDial({16, 430, 380, 380}, "Stereo width, disabled", 120, false);
    addGain({440, 0}, "Gain", 6, true);
    addGain({560, 0}, "Gain, disabled", 0, false);
    addMeters({680, 0}, "Level", 38, 34);
    addMeters({820, 0}, "Level, loud", 54, 12);
    addMeters({940, 0}, "Level, beyond", 60, 0);
    int top = 440;
    for (const double value : {0.0, 0.37, 1.0}) {
        addSlider({440, top}, 580, QStringLiteral("Position %1").arg(value), value, true);
        addSlider({440, top + 100}, 280, QStringLiteral("Position %1, disabled").arg(value), value,
                  false);
        addSlider({740, top + 100}, 280, QStringLiteral("Volume %1").arg(value), value, true);
        top += 32;
    }
}

void Gallery::sliderGainValueChanged(H8GainSlider& slider) {
    slider.setToolTip(QStringLiteral("%1 dB").arg(slider.integerValue()));
}

void Gallery::showFocus() {
    for (const char* shown : {"Stereo width", "Gain", "Position 0.37"}) {
        QFocusEvent event(QEvent::FocusIn, Qt::TabFocusReason);
        QCoreApplication::sendEvent(findChild<QWidget*>(shown), &event);
    }
}

void Gallery::name(QWidget& widget, const QString& name) {
    widget.setObjectName(name);
    widget.setAccessibleName(name);
}

void Gallery::addCaption(const QRect& place, const QString& text) {
    auto* const caption = new QLabel(text, this);
    caption->setAlignment(Qt::AlignCenter);
    caption->setGeometry(place);
}

void Gallery::addDial(const QRect& place, const QString& title, double angle, bool isEnabled) {
    auto* const dial = new AngleViewer(this);
    name(*dial, title);
    dial->setGeometry(place);
    dial->layout();
    dial->setNewAngle(angle);
    dial->setEnable(isEnabled);
    addCaption({place.center().x(), place.center().y(), 180, 20}, title);
}

void Gallery::addGain(QPoint place, const QString& title, double gain, bool isEnabled) {
    auto* const ticks = new GainTickTitle(this);
    name(*ticks, title + QStringLiteral(" scale"));
    ticks->setGeometry(place.x(), scaleTop - stripMargin, 44, scaleHeight + 2 * stripMargin);
    ticks->setFont(sized(font(), 12));
    ticks->setTexts({"+36", "+24", "+12", "0", "-12", "-24", "-36"});
    ticks->initTick();
    ticks->setEnable(isEnabled);

    auto* const slider = new H8GainSlider(this);
    name(*slider, title);
    slider->setGeometry(place.x() + 56, scaleTop - knobMargin, 24, scaleHeight + 2 * knobMargin);
    slider->setVertical(true);
    slider->cell()->setIsVertical(true);
    slider->cell()->setSliderEnabled(isEnabled);
    slider->setMinValue(-36);
    slider->setMaxValue(36);
    slider->setStep(1);
    slider->setDoubleValue(gain);
    slider->setEnabled(isEnabled);
    slider->H8GainSlider::setParent(static_cast<H8GainSliderParent*>(this));
    addCaption({place.x(), scaleTop - 46, 120, 20}, title);
}

void Gallery::addMeters(QPoint place, const QString& title, int left, int right) {
    auto* const ticks = new GainTickTitle(this);
    name(*ticks, title + QStringLiteral(" scale"));
    ticks->setGeometry(place.x(), scaleTop - stripMargin, 30, scaleHeight + 2 * stripMargin);
    ticks->setFont(sized(font(), 12));
    ticks->setTexts({"+6", "0", "-6", "-12", "-18", "-24", "-36", "-48"});
    ticks->initTick();
    ticks->setEnable(true);
    int x = place.x() + 42;
    for (const int level : {left, right}) {
        auto* const meter = new LevelMeter(this);
        name(*meter, title + (level == left ? QStringLiteral(" left") : QStringLiteral(" right")));
        meter->setGeometry(x, scaleTop, 18, scaleHeight);
        meter->setLevel(level);
        x += 30;
    }
    addCaption({place.x(), scaleTop - 46, 110, 20}, title);
}

void Gallery::addSlider(QPoint place, int width, const QString& title, double value,
                        bool isEnabled) {
    auto* const slider = new H8Slider(this);
    name(*slider, title);
    slider->setGeometry(place.x(), place.y(), width, 24);
    slider->cell()->setSliderEnabled(isEnabled);
    slider->setDoubleValue(value);
    slider->setEnabled(isEnabled);
}

} // namespace deckmate::tools
