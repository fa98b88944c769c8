// A label whose text doesn't move when its figures change.
#pragma once

#include <QLabel>

namespace deckmate {

/// Gives every figure the width of the widest one, whatever the font does. Thread: main.
class DigitLabel : public QLabel {
public:
    using QLabel::QLabel;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// Points that a character takes.
    int advance(QChar character) const;
    int textWidth() const;
};

} // namespace deckmate
