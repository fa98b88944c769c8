#include "app/FileListCell.h"

#include "app/DialogParts.h"
#include "controls/Resources.h"

#include <QAbstractItemView>
#include <QEvent>
#include <QHelpEvent>
#include <QIcon>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace deckmate {

namespace {

constexpr int margin = 12; ///< left of the icon
constexpr int iconSize = 16;
constexpr int gap = 10; ///< between icon and name
constexpr int marginBehind = FileListCell::widthBesideName - margin - iconSize - gap;
constexpr qreal radius = 4;
constexpr qreal plainOpacity = 0.88;

/// For what can be chosen but isn't in front: the icon stays in its colours.
QIcon::Mode iconMode(const QStyleOptionViewItem& option) {
    return (option.state & QStyle::State_Enabled) != 0 ? QIcon::Normal : QIcon::Disabled;
}

void drawBackground(QPainter& painter, const QStyleOptionViewItem& option) {
    const QRectF row(option.rect);
    if ((option.state & QStyle::State_Selected) != 0) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(option.palette.brush(QPalette::Highlight));
        painter.drawRoundedRect(row, radius, radius);
    }
    if ((option.state & QStyle::State_HasFocus) != 0 &&
        (option.state & QStyle::State_KeyboardFocusChange) != 0) {
        painter.setPen(QPen(colour("Focus"), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(row.adjusted(1, 1, -1, -1), radius, radius);
    }
}

} // namespace

FileListCell::Places FileListCell::placesIn(const QRect& cell, Qt::LayoutDirection direction) {
    const QRect icon(cell.left() + margin, cell.top() + (cell.height() - iconSize) / 2, iconSize,
                     iconSize);
    const int nameLeft = icon.left() + iconSize + gap;
    const int nameWidth = qMax(0, cell.left() + cell.width() - marginBehind - nameLeft);
    const QRect name(nameLeft, cell.top(), nameWidth, cell.height());
    return {.icon = QStyle::visualRect(direction, cell, icon),
            .name = QStyle::visualRect(direction, cell, name)};
}

void FileListCell::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    const Places places = placesIn(option.rect, option.direction);
    const bool isSelected = (option.state & QStyle::State_Selected) != 0;
    const QFontMetrics metrics(option.font);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    drawBackground(*painter, option);
    index.data(imgFileIcon)
        .value<QIcon>()
        .paint(painter, places.icon, Qt::AlignCenter, iconMode(option));
    painter->setFont(option.font);
    painter->setPen(option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text));
    painter->setOpacity(isSelected ? 1 : plainOpacity);
    // A name stands on the side where the window's language begins, whatever its own direction.
    painter->drawText(places.name,
                      static_cast<int>(QStyle::visualAlignment(option.direction, Qt::AlignLeft) |
                                       Qt::AlignVCenter) |
                          Qt::TextSingleLine,
                      metrics.elidedText(index.data(lblFileName).toString(), Qt::ElideMiddle,
                                         places.name.width()));
    painter->restore();
}

QSize FileListCell::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const QFontMetrics metrics(option.font);
    return {metrics.horizontalAdvance(index.data(lblFileName).toString()) + widthBesideName,
            height};
}

bool FileListCell::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                             const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    const QString name = index.data(lblFileName).toString();
    const int place = placesIn(option.rect, option.direction).name.width();
    const bool isCut = QFontMetrics(view->font()).horizontalAdvance(name) > place;
    QToolTip::showText(event->globalPos(), isCut ? asToolTip(name) : QString(), view, option.rect);
    return true;
}

} // namespace deckmate
