// A label on one line that shows both ends of a text that is too long for it.
#pragma once

#include <QLabel>

namespace deckmate {

/// Plain text, cut in the middle where it doesn't fit; what is cut is told in full by a tool tip.
/// Thread: main.
class ElidedLabel : public QLabel {
public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

} // namespace deckmate
