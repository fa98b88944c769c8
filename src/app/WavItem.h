// One row of the file browser.
#pragma once

#include <filesystem>

#include <QIcon>
#include <QString>

namespace deckmate {

struct WavItem {
    bool isFolder = false;
    QString fileName; ///< for display only, on one line; see displayName()
    QIcon icon;
    std::filesystem::path fullPath; ///< the bytes that the file system knows, whatever they mean
};

} // namespace deckmate
