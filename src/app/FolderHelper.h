// Lists one folder for the file browser.
#pragma once

#include "app/WavItem.h"

#include <filesystem>
#include <string_view>
#include <vector>

#include <QIcon>
#include <QString>

namespace deckmate {

/// The name that a person sees for an entry: UTF-8, with U+FFFD for bytes that are none and for
/// characters that would break, hide or turn the line (control characters, line and
/// paragraph separators, embeddings, overrides and isolates of writing directions).
QString displayName(std::string_view name);

/// One icon for each kind of entry, so that a listing looks up two and not one for each file.
struct FileIcons {
    QIcon folder;
    QIcon recording;

    /// Those of the user's icon theme, the program's own where it has none. Thread: main.
    static FileIcons ofTheme();
};

/// The sub-folders and the WAV files directly inside one folder, folders first, then by name.
///
/// Links count as what they lead to, so that a linked folder can be entered. Entries that are gone
/// by the time they are asked, among them links that lead nowhere, are left out. What is no folder
/// counts as a file, pipes and devices too: nothing is opened here, and whoever opens a file tells
/// those apart. An unreadable folder has no entries; each error leaves "eeee" in the log.
///
///     const FolderHelper listing("/home/ann/Takes");
///     for (const WavItem& item : listing.files()) { ... }
///
/// Thread: any one; the constructor without icons: main.
class FolderHelper {
public:
    explicit FolderHelper(std::filesystem::path folderPath);
    FolderHelper(std::filesystem::path folderPath, FileIcons icons);

    const std::filesystem::path& folderPath() const { return folderPath_; }
    void setFolderPath(std::filesystem::path folderPath);
    const std::vector<WavItem>& files() const { return files_; }
    void setFiles(std::vector<WavItem> files);

    /// Reads the folder anew, in the order in which the file system gives its entries.
    void grabWavFiles();
    /// Names compare by code units: upper case before lower case, 10 before 9.
    void sortFileList();

private:
    void add(std::string_view name, bool isFolder);

    std::filesystem::path folderPath_;
    FileIcons icons_;
    std::vector<WavItem> files_;
};

} // namespace deckmate
