// The dot that tells at a glance whether a recorder is connected.
#pragma once

#include <QWidget>

namespace deckmate {

/// Green while enabled, grey else. Decoration: what it tells is written beside it. Thread: main.
class StatusDot : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace deckmate
