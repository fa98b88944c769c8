// A vertical level meter, filled from the bottom up.
#pragma once

#include "controls/Control.h"
#include "controls/LevelGeometry.h"
#include "controls/ViewGeometry.h"

#include <cstdint>

#include <QPixmap>
#include <QSize>
#include <QString>

namespace deckmate {

/// Levels 0 to 54 stand for -48 to +6 dB. All meters share the height of a level's step, which the
/// first one laid out has measured for good. Thread: main.
class LevelMeter final : public QWidget, public ShownValue {
public:
    explicit LevelMeter(QWidget* parent = nullptr);

    std::int64_t level() const { return level_; }
    /// What is above the maximum becomes the maximum, what is below the minimum the minimum.
    void setLevel(std::int64_t level);
    std::int64_t maxValue() const { return maxValue_; }
    std::int64_t minValue() const { return minValue_; }
    /// For the levels from now on; the one that is there stays.
    void setMaxValue(std::int64_t value) { maxValue_ = value; }
    void setMinValue(std::int64_t value) { minValue_ = value; }

    void layout();
    void updateFrame();
    void drawRect(QPainter& painter);
    QSize sizeHint() const override { return {18, 300}; }

    QAccessible::Role role() const override { return QAccessible::ProgressBar; }
    double shownValue() const override { return static_cast<double>(level_); }
    double lowestValue() const override { return static_cast<double>(minValue_); }
    double highestValue() const override { return static_cast<double>(maxValue_); }
    double valueStep() const override { return 1.0; }
    bool isOperable() const override { return false; }
    void chooseValue(double /*value*/, ControlEvent /*event*/) override {}

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// An image in the size and the pixels it is shown in, drawn anew when either has changed.
    struct Layer {
        QString image;
        QPixmap pixels;

        void draw(QPainter& painter, QSize size, qreal devicePixelRatio);
    };

    void initUI();

    Layer layerRainBow_;
    Layer layerGray_;
    ViewRect layerMaskOfRainBow_; ///< where the coloured layer is seen
    QSize cacheSize_{0, 0};       ///< at the last layout
    std::int64_t maxValue_ = 100;
    std::int64_t minValue_ = 0;
    std::int64_t level_ = 0;
};

} // namespace deckmate
