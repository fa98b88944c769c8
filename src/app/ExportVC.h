// The sheet that asks how to export the open recording, and exports it.
#pragma once

#include "app/DialogWindow.h"
#include "export/Export.h"
#include "export/ExportSave.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

class QCheckBox;
class QProgressBar;
class QPushButton;
class QRadioButton;

namespace deckmate {

class ElidedLabel;

/// The export runs inside the action of the button "Save", and no event is handled before its file
/// is complete: closing windows and requests to end the program wait, clicks and keys are dropped.
/// If it takes long, progress is painted in between.
///
///     ExportVC sheet(&window);
///     sheet.setExporter(recording);
///     sheet.setParentFrame(window.geometry());
///     sheet.exec();
///
/// Whatever comes of an export, the sheet goes and "EB_RELOAD_FILE_LIST" is fired; then an alert
/// tells what was wrong. Thread: main.
class ExportVC final : public DialogWindow {
public:
    explicit ExportVC(QWidget* parent = nullptr);

    const std::shared_ptr<Export>& exporter() const { return exporter_; }
    /// Not null; to be set before the sheet is shown.
    void setExporter(std::shared_ptr<Export> exporter);

    void radio_check() {} ///< the two buttons exclude each other by being siblings
    void btnSave_Click();
    void btnCancel_Click();

    /// Asks for the file to write, given the source, the folder to begin in and the window to stand
    /// over; nothing if the user cancels.
    std::function<std::optional<std::filesystem::path>(
        const std::filesystem::path& source, const std::filesystem::path& dirPath, QWidget* parent)>
        chooseTarget;
    /// Shows a text over a window that may be null, and returns when it was read.
    std::function<void(QWidget* parent, const QString& informativeText)> showAlert;
    /// What tells how long an export takes.
    std::function<std::chrono::steady_clock::time_point()> now;

protected:
    void viewWillAppear() override;

private:
    void viewDidLoad();
    void initWindowUI();
    void layOut();
    SaveOutcome save(const std::filesystem::path& target);
    void showProgress(int perMille);

    std::shared_ptr<Export> exporter_;
    bool isAsking_ = false; ///< for a target or busy with it

    ElidedLabel* lblFileName = nullptr;
    QRadioButton* radio32 = nullptr;
    QRadioButton* radio24 = nullptr;
    QCheckBox* checkboxNormalize = nullptr;
    QProgressBar* progress = nullptr;
    QPushButton* btnCancel = nullptr;
    QPushButton* btnSave = nullptr;
};

} // namespace deckmate
