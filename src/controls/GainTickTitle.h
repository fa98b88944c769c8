// The strip of labels beside a slider or meter.
#pragma once

#include "controls/TickGeometry.h"

#include <vector>

#include <QColor>
#include <QString>
#include <QStringList>
#include <QWidget>

namespace deckmate {

class GainTickTitle;

class GainTickDelegate {
public:
    virtual ~GainTickDelegate() = default;

    /// The user has clicked the label of this text.
    virtual void GainTickTitle(class GainTickTitle& /*strip*/, const QString& /*clickAt*/) {}

protected:
    GainTickDelegate() = default;
    GainTickDelegate(const GainTickDelegate&) = default;
    GainTickDelegate& operator=(const GainTickDelegate&) = default;
    GainTickDelegate(GainTickDelegate&&) = default;
    GainTickDelegate& operator=(GainTickDelegate&&) = default;
};

struct TickTextInfo {
    QString text;
    ViewRect frame; ///< where it was drawn last
};

/// A list of texts from top to bottom, right-aligned and equally spread. Disabled it is dim, but
/// reports clicks all the same. Thread: main.
class GainTickTitle final : public QWidget {
public:
    explicit GainTickTitle(QWidget* parent = nullptr);

    const QStringList& texts() const { return texts_; }
    /// Shown from the next initTick() on.
    void setTexts(const QStringList& texts) { texts_ = texts; }
    void initTick();
    const std::vector<TickTextInfo>& textRectList() const { return textRectList_; }
    bool enable() const { return enable_; }
    void setEnable(bool enable);
    /// Not owned; null for none.
    GainTickDelegate* delegate() const { return delegate_; }
    void setDelegate(GainTickDelegate* delegate) { delegate_ = delegate; }

    void drawRect(QPainter& painter);
    void mouseUp(QPointF place);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void initUI();

    QStringList texts_;
    std::vector<TickTextInfo> textRectList_;
    bool enable_ = false;
    QColor disableTextColor_;
    GainTickDelegate* delegate_ = nullptr;
};

} // namespace deckmate
