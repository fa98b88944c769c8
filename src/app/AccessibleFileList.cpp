#include "app/AccessibleFileList.h"

#include "app/FileListCell.h"
#include "app/FileListView.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QItemSelectionModel>

namespace deckmate {

namespace {

using Interfaces = QList<QAccessibleInterface*>;

class AccessibleCell final : public QAccessibleInterface,
                             public QAccessibleTableCellInterface,
                             public QAccessibleActionInterface {
public:
    AccessibleCell(FileListView& view, int row) : view_(view), row_(row) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        switch (type) {
        case QAccessible::TableCellInterface:
            return static_cast<QAccessibleTableCellInterface*>(this);
        case QAccessible::ActionInterface:
            return static_cast<QAccessibleActionInterface*>(this);
        default:
            return nullptr;
        }
    }

    bool isValid() const override { return index().isValid(); }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override { return table(); }
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }

    QAccessible::Role role() const override { return QAccessible::Cell; }
    QString text(QAccessible::Text kind) const override {
        switch (kind) {
        case QAccessible::Name:
            return index().data(FileListCell::lblFileName).toString();
        case QAccessible::Description:
            return index().data(Qt::AccessibleDescriptionRole).toString();
        default:
            return {};
        }
    }
    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}
    QRect rect() const override {
        const QRect place = view_.visualRect(index());
        return {view_.viewport()->mapToGlobal(place.topLeft()), place.size()};
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.selectable = true;
        state.focusable = true;
        state.selected = isSelected();
        state.focused = view_.hasFocus() && view_.currentIndex() == index();
        state.invisible =
            !view_.isVisible() || !view_.visualRect(index()).intersects(view_.viewport()->rect());
        return state;
    }

    // The cell
    bool isSelected() const override {
        return view_.selectionModel() != nullptr && view_.selectionModel()->isSelected(index());
    }
    Interfaces columnHeaderCells() const override { return {}; }
    Interfaces rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return 0; }
    int rowIndex() const override { return row_; }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface* table() const override {
        return QAccessible::queryAccessibleInterface(&view_);
    }

    // The actions
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& name) override {
        if (name == pressAction()) {
            view_.openRow(row_);
        } else if (name == setFocusAction()) {
            view_.setFocus();
            view_.setCurrentIndex(index());
        }
    }
    QStringList keyBindingsForAction(const QString& name) const override {
        return name == pressAction() ? QStringList("Return") : QStringList();
    }

private:
    QModelIndex index() const {
        return view_.model() != nullptr ? view_.model()->index(row_, 0) : QModelIndex();
    }

    FileListView& view_;
    int row_;
};

class AccessibleFileList final : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit AccessibleFileList(FileListView& view)
        : QAccessibleWidget(&view, QAccessible::Table), view_(view) {}
    ~AccessibleFileList() override { forgetCells(); }
    AccessibleFileList(const AccessibleFileList&) = delete;
    AccessibleFileList& operator=(const AccessibleFileList&) = delete;
    AccessibleFileList(AccessibleFileList&&) = delete;
    AccessibleFileList& operator=(AccessibleFileList&&) = delete;

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    int childCount() const override { return rowCount(); }
    QAccessibleInterface* child(int row) const override {
        if (row < 0 || row >= rowCount()) {
            return nullptr;
        }
        const auto known = cells_.constFind(row);
        if (known != cells_.constEnd()) {
            return QAccessible::accessibleInterface(*known);
        }
        auto* const cell = new AccessibleCell(view_, row);
        cells_.insert(row, QAccessible::registerAccessibleInterface(cell));
        return cell;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* const cell = dynamic_cast<const AccessibleCell*>(child);
        return cell == nullptr ? -1 : cell->rowIndex();
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        return child(view_.indexAt(view_.viewport()->mapFromGlobal(QPoint(x, y))).row());
    }
    QAccessibleInterface* focusChild() const override { return child(view_.currentIndex().row()); }

    // The table
    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override {
        return column == 0 ? child(row) : nullptr;
    }
    int selectedCellCount() const override { return selectedRowCount(); }
    Interfaces selectedCells() const override {
        Interfaces cells;
        for (const int row : selectedRows()) {
            cells.append(child(row));
        }
        return cells;
    }
    QString columnDescription(int /*column*/) const override { return {}; }
    QString rowDescription(int /*row*/) const override { return {}; }
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override { return static_cast<int>(selectedRows().size()); }
    int columnCount() const override { return 1; }
    int rowCount() const override { return view_.model() ? view_.model()->rowCount() : 0; }
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override {
        QList<int> rows;
        if (view_.selectionModel() != nullptr) {
            for (const QModelIndex& index : view_.selectionModel()->selectedRows()) {
                rows.append(index.row());
            }
        }
        return rows;
    }
    bool isColumnSelected(int /*column*/) const override { return false; }
    bool isRowSelected(int row) const override { return selectedRows().contains(row); }
    bool selectRow(int row) override {
        view_.selectRow(row);
        return isRowSelected(row);
    }
    bool selectColumn(int /*column*/) override { return false; }
    bool unselectRow(int /*row*/) override { return false; }
    bool unselectColumn(int /*column*/) override { return false; }

    void modelChange(QAccessibleTableModelChangeEvent* /*event*/) override { forgetCells(); }

private:
    void forgetCells() {
        for (const QAccessible::Id cell : qAsConst(cells_)) {
            QAccessible::deleteAccessibleInterface(cell);
        }
        cells_.clear();
    }

    FileListView& view_;
    mutable QHash<int, QAccessible::Id> cells_; ///< by row, of those that were asked for
};

} // namespace

QAccessibleInterface* makeAccessibleFileList(const QString& /*className*/, QObject* object) {
    auto* const view = dynamic_cast<FileListView*>(object);
    return view == nullptr ? nullptr : new AccessibleFileList(*view);
}

} // namespace deckmate
