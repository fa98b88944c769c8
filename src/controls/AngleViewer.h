// The dial for the stereo width: an arc, a thumb on it and six labels.
#pragma once

#include "controls/AngleGeometry.h"
#include "controls/Control.h"

#include <array>

#include <QColor>
#include <QPainterPath>
#include <QString>

namespace deckmate {

class AngleViewer;

class AngleViewerDelegate {
public:
    virtual ~AngleViewerDelegate() = default;

    /// The user, or setNewAngle(), is about to change the angle, which is in degrees and seldom
    /// whole; the dial still has the old one.
    virtual void angleViewer(AngleViewer& dial, double angleChanged) = 0;

protected:
    AngleViewerDelegate() = default;
    AngleViewerDelegate(const AngleViewerDelegate&) = default;
    AngleViewerDelegate& operator=(const AngleViewerDelegate&) = default;
    AngleViewerDelegate(AngleViewerDelegate&&) = default;
    AngleViewerDelegate& operator=(AngleViewerDelegate&&) = default;
};

/// One label of the dial.
struct AngleInfo {
    QString text;
    double angle = 0.0; ///< degrees
    ViewPoint offset;   ///< moves the label, y downward
    ViewRect frame;     ///< where it was drawn last
};

/// Dragging the thumb, one click on the left half, and a press on a label change the angle. All
/// points have their origin in the lower left corner. Disabled until setEnable(). Thread: main.
class AngleViewer final : public Control {
public:
    explicit AngleViewer(QWidget* parent = nullptr);

    /// What cannot be operated, and the part of a track beyond its value.
    static const QColor& GrayBackgroundColor();

    double angle() const { return angle_; }
    /// Neither tells the delegate nor draws.
    void setAngle(double angle) { angle_ = angle; }
    bool enable() const { return enable_; }
    /// Doesn't draw: call update().
    void setEnable(bool enable);
    /// Not owned; null for none.
    AngleViewerDelegate* delegate() const { return delegate_; }
    void setDelegate(AngleViewerDelegate* delegate) { delegate_ = delegate; }

    void setNewAngle(double angle);
    /// Tells the delegate before it stores, and does neither for the angle that it has.
    void updateAngle(double angle);
    void resetTo0();
    /// From the point's direction; beyond the ends goes to the end, or nowhere if `preventOutSide`.
    void moveTheThumb(ViewPoint point, bool preventOutSide);
    /// What a single click does.
    void detectClick(ViewPoint point);
    void detectClickTitle(ViewPoint point);

    /// For a new size, draws as if the angle were 0; the angle stays.
    void layout();
    void rebuildArc();
    void drawRect(QPainter& painter);
    void drawText(QPainter& painter);

    void mouseDown(QPointF place) override;
    void mouseDragged(QPointF place) override;
    void mouseUp(QPointF place) override;

    const AngleGeometry& geometry() const { return geometry_; }
    ViewPoint thumbPosition() const { return thumbPosition_; }
    const std::array<AngleInfo, 6>& angleTextList() const { return angleTextList_; }
    QSize sizeHint() const override { return {380, 380}; }

    QAccessible::Role role() const override { return QAccessible::Slider; }
    double shownValue() const override { return angle_; }
    double lowestValue() const override { return AngleGeometry::lowest; }
    double highestValue() const override { return AngleGeometry::highest; }
    double valueStep() const override { return 1.0; }
    bool isOperable() const override { return enable_; }
    void chooseValue(double value, ControlEvent event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void initUI();
    /// From the arc's upper end over so many degrees.
    QPainterPath arc(double degrees) const;
    void showEnd(double angle, const QPainterPath& path, ViewPoint thumb);

    AngleGeometry geometry_; ///< of the size at the last layout
    QPainterPath benBG_;     ///< the whole arc
    QPainterPath benMove_;   ///< the part up to the thumb
    QPainterPath ben0_;
    QPainterPath ben150_;
    QPainterPath benThumb_; ///< with its corner at the origin
    QColor grayCircleColor_;
    QColor disableColor_;
    QColor disableTextColor_;
    ViewPoint thumbPosition_;
    bool allow2Drag_ = false;
    bool userDidDrag_ = false;
    bool didTouchAngleTitle_ = false;
    std::array<AngleInfo, 6> angleTextList_;
    [[maybe_unused]] ViewRect monoFrame_; ///< of no use
    bool enable_ = false;
    double angle_ = 0.0;
    AngleViewerDelegate* delegate_ = nullptr;
};

} // namespace deckmate
