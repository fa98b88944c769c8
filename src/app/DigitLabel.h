// A label whose text doesn't move when its figures change.
#pragma once

#include <QLabel>
#include <QString>

namespace deckmate {

/// Gives every figure the width of the widest one, whatever the font does. Assistive programs are
/// told what the text is of, and then the text. Thread: main.
class DigitLabel : public QLabel {
public:
    /// `subject` may be empty, where a label beside it is read before it.
    explicit DigitLabel(QString subject);

    const QString& subject() const { return subject_; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// Points that a character takes.
    int advance(QChar character) const;
    int textWidth() const;

    QString subject_;
};

} // namespace deckmate
