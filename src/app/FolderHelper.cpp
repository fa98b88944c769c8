#include "app/FolderHelper.h"

#include "controls/Resources.h"
#include "platform/Log.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <QChar>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace deckmate {

namespace {

/// An error of the folder or of one entry; listing goes on.
void handleError() {
    Log::write("eeee");
}

/// What follows the last point, in lower case. ASCII only, because no other letter's lower case is
/// one of those that the listing asks for.
std::string lowerCaseExtension(std::string_view name) {
    const auto point = name.rfind('.');
    std::string extension(point == std::string_view::npos ? "" : name.substr(point + 1));
    for (char& letter : extension) {
        if (letter >= 'A' && letter <= 'Z') {
            letter = static_cast<char>(letter - 'A' + 'a');
        }
    }
    return extension;
}

/// Nothing if the entry is gone or can't be asked.
std::optional<bool> isDirectory(DIR* folder, const dirent& entry) {
    // Most file systems tell the kind of an entry with its name, which saves a call for each.
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) {
        return entry.d_type == DT_DIR;
    }
    struct stat status {};
    if (fstatat(dirfd(folder), entry.d_name, &status, AT_NO_AUTOMOUNT) == 0) {
        return S_ISDIR(status.st_mode);
    }
    if (errno != ENOENT) {
        handleError();
    }
    return std::nullopt;
}

/// Embeddings, overrides and isolates: they could show "gpj.wav" as "vaw.jpg", and reach into the
/// text around the name.
bool turnsText(QChar character) {
    const char16_t code = character.unicode();
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

bool isUnfitToShow(QChar character) {
    return character.category() == QChar::Other_Control ||
           character.category() == QChar::Separator_Line ||
           character.category() == QChar::Separator_Paragraph || turnsText(character);
}

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

} // namespace

QString displayName(std::string_view name) {
    QString text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    std::replace_if(text.begin(), text.end(), isUnfitToShow, QChar(QChar::ReplacementCharacter));
    return text;
}

FileIcons FileIcons::ofTheme() {
    // Where no theme is chosen, the one that programs put their own images in stands for it:
    // reading it takes long and hardly ever finds these.
    if (QIcon::themeName() == QLatin1String("hicolor")) {
        return {icon("folder"), icon("recording")};
    }
    return {QIcon::fromTheme("folder", icon("folder")),
            QIcon::fromTheme("audio-x-wav", icon("recording"))};
}

FolderHelper::FolderHelper(std::filesystem::path folderPath)
    : FolderHelper(std::move(folderPath), FileIcons::ofTheme()) {}

FolderHelper::FolderHelper(std::filesystem::path folderPath, FileIcons icons)
    : folderPath_(std::move(folderPath)), icons_(std::move(icons)) {
    grabWavFiles();
    sortFileList();
}

void FolderHelper::setFolderPath(std::filesystem::path folderPath) {
    folderPath_ = std::move(folderPath);
}

void FolderHelper::setFiles(std::vector<WavItem> files) {
    files_ = std::move(files);
}

void FolderHelper::grabWavFiles() {
    files_.clear();
    const std::unique_ptr<DIR, FolderCloser> folder(opendir(folderPath_.c_str()));
    if (folder == nullptr) {
        handleError();
        return;
    }
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(folder.get());
        if (entry == nullptr) {
            if (errno != 0) {
                handleError();
            }
            return;
        }
        const std::string_view name = entry->d_name;
        if (name.starts_with('.')) {
            continue;
        }
        const std::string extension = lowerCaseExtension(name);
        const bool isNamedLikeFile = extension == "wav";
        // A file of another name needn't be asked what it is.
        if (entry->d_type == DT_REG && !isNamedLikeFile) {
            continue;
        }
        const std::optional<bool> isFolder = isDirectory(folder.get(), *entry);
        if (!isFolder || (!*isFolder && !isNamedLikeFile) || extension == "app") {
            continue;
        }
        add(name, *isFolder);
    }
}

void FolderHelper::add(std::string_view name, bool isFolder) {
    files_.push_back({.isFolder = isFolder,
                      .fileName = displayName(name),
                      .icon = isFolder ? icons_.folder : icons_.recording,
                      .fullPath = folderPath_ / name});
}

void FolderHelper::sortFileList() {
    std::sort(files_.begin(), files_.end(), [](const WavItem& a, const WavItem& b) {
        if (a.isFolder != b.isFolder) {
            return a.isFolder;
        }
        // Different names can look the same: they must not change places from listing to listing.
        const int order = a.fileName.compare(b.fileName);
        return order != 0 ? order < 0 : a.fullPath.native() < b.fullPath.native();
    });
}

} // namespace deckmate
