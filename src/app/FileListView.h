// The file browser's table.
#pragma once

#include <functional>
#include <utility>

#include <QTableView>

namespace deckmate {

/// Rows of one column, of which one at most is selected. Home and End lead to the first and the
/// last row, not along the row. Assistive programs find a table without headers, whose cells can be
/// opened. Thread: main.
class FileListView final : public QTableView {
public:
    FileListView();

    /// What openRow() calls.
    void setOpening(std::function<void()> open) { open_ = std::move(open); }
    /// Does what a double click does: selects the row and has it opened. Nothing without that row.
    void openRow(int row);

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;

private:
    std::function<void()> open_;
};

} // namespace deckmate
