#include "app/FileListModel.h"

#include "app/FileListCell.h"

#include <algorithm>
#include <utility>

namespace deckmate {

namespace {

bool looksLike(const FolderHelper* a, const FolderHelper* b) {
    return a != nullptr && b != nullptr &&
           std::ranges::equal(a->files(), b->files(), [](const WavItem& one, const WavItem& other) {
               return one.fileName == other.fileName && one.isFolder == other.isFolder;
           });
}

} // namespace

void FileListModel::reload(std::shared_ptr<const FolderHelper> listing) {
    if (looksLike(listing_.get(), listing.get())) {
        listing_ = std::move(listing);
        return;
    }
    beginResetModel();
    listing_ = std::move(listing);
    endResetModel();
}

double FileListModel::widestName(const QFontMetricsF& metrics) {
    QHash<QString, double> widths;
    double widest = 0;
    for (int row = 0; row < rowCount(); ++row) {
        const QString& name = listing_->files()[static_cast<std::size_t>(row)].fileName;
        const auto known = widths_.constFind(name);
        const double width = known != widths_.constEnd() ? *known : metrics.horizontalAdvance(name);
        widths.insert(name, width);
        widest = std::max(widest, width);
    }
    widths_.swap(widths);
    return widest;
}

int FileListModel::rowCount(const QModelIndex& parent) const {
    return listing_ && !parent.isValid() ? static_cast<int>(listing_->files().size()) : 0;
}

int FileListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 1;
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const WavItem& item = listing_->files()[static_cast<std::size_t>(index.row())];
    switch (role) {
    case FileListCell::lblFileName:
        return item.fileName;
    case FileListCell::imgFileIcon:
        return item.icon;
    case Qt::AccessibleDescriptionRole:
        return item.isFolder ? QStringLiteral("Folder") : QStringLiteral("Recording");
    default:
        return {};
    }
}

} // namespace deckmate
