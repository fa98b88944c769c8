#include "controls/LevelMeter.h"

#include "controls/Resources.h"
#include "controls/ViewDrawing.h"

#include <algorithm>

#include <QPainter>

namespace deckmate {

namespace {

LevelZones& sharedZones() {
    static LevelZones zones;
    return zones;
}

} // namespace

LevelMeter::LevelMeter(QWidget* parent) : QWidget(parent) {
    announceShownValues();
    initUI();
}

void LevelMeter::initUI() {
    layerGray_.image = QStringLiteral("levelmeter2");
    layerRainBow_.image = QStringLiteral("levelmeter");
    cacheSize_ = QSize(0, 0);
    maxValue_ = 100;
    minValue_ = 0;
    level_ = 0;
}

void LevelMeter::layout() {
    if (size() == cacheSize_) {
        return;
    }
    cacheSize_ = size();
    sharedZones().measureOnce(height());
    updateFrame();
}

void LevelMeter::updateFrame() {
    // The mask is as high as the meter: whatever rises above it leaves as much uncovered below.
    const ViewRect mask = {0, sharedZones().fillHeight(level_, height()) - height(),
                           static_cast<double>(width()), static_cast<double>(height())};
    if (mask != layerMaskOfRainBow_) {
        layerMaskOfRainBow_ = mask;
        update();
    }
}

void LevelMeter::setLevel(std::int64_t level) {
    level_ = std::max(std::min(level, maxValue_), minValue_);
    if (cacheSize_ == QSize(0, 0)) {
        return;
    }
    updateFrame();
}

void LevelMeter::Layer::draw(QPainter& painter, QSize size, qreal devicePixelRatio) {
    const QSizeF wanted = QSizeF(size) * devicePixelRatio;
    if (pixels.size() != wanted.toSize() || pixels.devicePixelRatio() != devicePixelRatio) {
        pixels = ::deckmate::image(image, size, devicePixelRatio);
    }
    painter.drawPixmap(0, 0, pixels);
}

void LevelMeter::drawRect(QPainter& painter) {
    layerGray_.draw(painter, size(), devicePixelRatioF());
    painter.setClipRect(fromView(layerMaskOfRainBow_, height()));
    layerRainBow_.draw(painter, size(), devicePixelRatioF());
}

void LevelMeter::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    drawRect(painter);
}

void LevelMeter::resizeEvent(QResizeEvent* /*event*/) {
    layout();
}

} // namespace deckmate
