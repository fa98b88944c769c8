// The rows of the file browser's table.
#pragma once

#include "app/FolderHelper.h"

#include <memory>

#include <QAbstractTableModel>
#include <QFontMetricsF>
#include <QHash>
#include <QString>

namespace deckmate {

/// One column. Remembers how wide names are, since a folder is listed again and again. Thread:
/// main.
class FileListModel final : public QAbstractTableModel {
public:
    using QAbstractTableModel::QAbstractTableModel;

    /// Shows this listing from now on; null for no rows. Views only hear of it if there is anything
    /// else to see.
    void reload(std::shared_ptr<const FolderHelper> listing);
    /// Points that the widest name takes; 0 without rows.
    double widestName(const QFontMetricsF& metrics);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    std::shared_ptr<const FolderHelper> listing_;
    QHash<QString, double> widths_; ///< of the names that were listed last
};

} // namespace deckmate
