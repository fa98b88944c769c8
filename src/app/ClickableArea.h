// A part of a window that can be clicked, with or without a text.
#pragma once

#include <QAbstractButton>

namespace deckmate {

/// Shows nothing but its text, on one line and cut in the middle where it doesn't fit, and a frame
/// while it has the focus. Thread: main.
class ClickableArea : public QAbstractButton {
public:
    explicit ClickableArea(QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace deckmate
