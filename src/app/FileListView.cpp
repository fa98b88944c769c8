#include "app/FileListView.h"

#include "app/AccessibleFileList.h"
#include "app/FileListCell.h"

#include <QAccessible>
#include <QHeaderView>

namespace deckmate {

namespace {

/// Tells assistive programs what has become of the first of the rows, if any are there.
void announce(FileListView& view, const QModelIndexList& rows, QAccessible::Event what) {
    if (QAccessible::isActive() && !rows.isEmpty() && rows.front().isValid()) {
        QAccessibleEvent event(&view, what);
        event.setChild(rows.front().row());
        QAccessible::updateAccessibility(&event);
    }
}

} // namespace

FileListView::FileListView() {
    QAccessible::installFactory(makeAccessibleFileList);
    setItemDelegate(new FileListCell(this));
    setShowGrid(false);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    horizontalHeader()->hide();
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(FileListCell::height);
}

void FileListView::openRow(int row) {
    const QModelIndex index = model()->index(row, 0);
    if (index.isValid() && open_) {
        setCurrentIndex(index);
        open_();
    }
}

QModelIndex FileListView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const bool isToAnEnd = action == MoveHome || action == MoveEnd;
    return QTableView::moveCursor(action, isToAnEnd ? modifiers | Qt::ControlModifier : modifiers);
}

// Not the table's own: it would announce the places among cells and headers.

void FileListView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    if (hasFocus()) {
        announce(*this, {current}, QAccessible::Focus);
    }
    QAbstractItemView::currentChanged(current, previous); // NOLINT(bugprone-parent-virtual-call)
}

void FileListView::selectionChanged(const QItemSelection& selected,
                                    const QItemSelection& deselected) {
    announce(*this, selected.indexes(), QAccessible::SelectionAdd);
    announce(*this, deselected.indexes(), QAccessible::SelectionRemove);
    // NOLINTNEXTLINE(bugprone-parent-virtual-call)
    QAbstractItemView::selectionChanged(selected, deselected);
}

} // namespace deckmate
