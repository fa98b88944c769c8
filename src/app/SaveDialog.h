// Asks where to save a decoded recording.
#pragma once

#include <filesystem>
#include <optional>

#include <QFileDialog>
#include <QString>

class QLineEdit;

namespace deckmate {

/// The toolkit's dialog, the same on every desktop. What is asked about overwriting concerns the
/// file that will be written: the chosen one with ".WAV" appended where that is missing.
///
/// File names are bytes, the dialog's are text. A folder whose name is no text can't be shown; the
/// nearest one around it is shown in its place. Of a proposed name that is no text, the bytes are
/// taken if the user leaves it as it stands.
///
/// Thread: main.
class SaveDialog final : public QFileDialog {
public:
    /// Proposes a name after the source's in the folder `dirPath`.
    SaveDialog(const std::filesystem::path& source, const std::filesystem::path& dirPath,
               QWidget* parent);

    /// As chosen, perhaps without its ending; empty until the dialog was accepted.
    const std::filesystem::path& chosenPath() const { return chosenPath_; }

    void accept() override;

private:
    void propose();
    void enter(const QString& folder);
    std::filesystem::path pathOf(QString typed) const;
    bool isInTheWay(const std::filesystem::path& target) const;
    /// The dialog may be destroyed before they return.
    bool askToReplace(const std::filesystem::path& target);
    void askAndTake(const std::filesystem::path& path);
    void take(const std::filesystem::path& path);

    std::filesystem::path source_;
    std::filesystem::path proposedName_;
    QString shownName_;
    QLineEdit* fileName_ = nullptr;
    std::filesystem::path chosenPath_;
    bool isAsking_ = false; ///< about a file in the way, or about to
};

/// Nothing if the user cancels.
std::optional<std::filesystem::path> askForTarget(const std::filesystem::path& source,
                                                  const std::filesystem::path& dirPath,
                                                  QWidget* parent);

} // namespace deckmate
