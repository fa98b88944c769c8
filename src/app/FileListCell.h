// How the file browser's table shows one entry.
#pragma once

#include <QRect>
#include <QString>
#include <QStyledItemDelegate>

namespace deckmate {

/// Draws a row: the entry's icon, then its name on one line, cut in the middle where it doesn't
/// fit. A name that is cut is told in full by a tool tip. A model gives what is drawn under two
/// roles:
///
///     case FileListCell::lblFileName: return item.fileName;
///     case FileListCell::imgFileIcon: return item.icon;
///
/// Thread: main.
class FileListCell : public QStyledItemDelegate {
public:
    static constexpr int lblFileName = Qt::DisplayRole;
    static constexpr int imgFileIcon = Qt::DecorationRole;

    /// Points. A column has to be this much wider than the name for it to be shown whole.
    static constexpr int widthBesideName = 44;
    static constexpr int height = 28;

    /// Where things stand in a cell, mirrored where the language runs from right to left.
    struct Places {
        QRect icon;
        QRect name;
    };

    using QStyledItemDelegate::QStyledItemDelegate;

    /// The cell's identifier among a table's kinds of cells.
    static QString CELL_ID() { return QStringLiteral("fileListCellID"); }
    static Places placesIn(const QRect& cell, Qt::LayoutDirection direction);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
};

} // namespace deckmate
