#include "app/DigitLabel.h"

#include <algorithm>
#include <utility>

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPainter>

namespace deckmate {

namespace {

class AccessibleDigits final : public QAccessibleWidget {
public:
    explicit AccessibleDigits(DigitLabel& label)
        : QAccessibleWidget(&label, QAccessible::StaticText), label_(label) {}

    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Name) {
            return QAccessibleWidget::text(kind);
        }
        return QString(label_.subject() + " " + label_.text()).trimmed();
    }

private:
    DigitLabel& label_;
};

QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
    auto* const label = dynamic_cast<DigitLabel*>(object);
    return label == nullptr ? nullptr : new AccessibleDigits(*label);
}

} // namespace

DigitLabel::DigitLabel(QString subject) : subject_(std::move(subject)) {
    QAccessible::installFactory(makeAccessible);
}

int DigitLabel::advance(QChar character) const {
    const QFontMetrics metrics = fontMetrics();
    if (!character.isDigit()) {
        return metrics.horizontalAdvance(character);
    }
    int widest = 0;
    for (char digit = '0'; digit <= '9'; ++digit) {
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(digit)));
    }
    return widest;
}

int DigitLabel::textWidth() const {
    int width = 0;
    for (const QChar character : text()) {
        width += advance(character);
    }
    return width;
}

QSize DigitLabel::sizeHint() const {
    return {textWidth(), fontMetrics().height()};
}

void DigitLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    int left = alignment().testFlag(Qt::AlignRight) ? width() - textWidth() : 0;
    for (const QChar character : text()) {
        const int cell = advance(character);
        painter.drawText(QRect(left, 0, cell, height()), Qt::AlignCenter, character);
        left += cell;
    }
}

} // namespace deckmate
