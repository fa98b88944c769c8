#include "app/SaveDialog.h"

#include "app/DialogParts.h"
#include "app/FolderHelper.h"
#include "export/ExportSave.h"

#include <string>
#include <system_error>

#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>

namespace deckmate {

namespace {

constexpr auto message = "Please select a path where to save decoded wav.";
constexpr int nameWidth = 400; ///< of a name inside a question, in points
constexpr QSize usualSize(90 * grid, 60 * grid);

QString textOf(const std::filesystem::path& path) {
    return QString::fromStdString(path.native());
}

std::filesystem::path bytesOf(const QString& text) {
    return text.toStdString();
}

/// The folder, or the nearest one around it, that exists and whose name is text.
QString showableFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::path shown = std::filesystem::absolute(folder, error);
    while (shown.has_relative_path() &&
           (bytesOf(textOf(shown)) != shown || !std::filesystem::is_directory(shown, error))) {
        shown = shown.parent_path();
    }
    return textOf(shown);
}

} // namespace

SaveDialog::SaveDialog(const std::filesystem::path& source, const std::filesystem::path& dirPath,
                       QWidget* parent)
    : QFileDialog(parent), source_(source), proposedName_(proposedName(source)),
      shownName_(textOf(proposedName_)) {
    setObjectName("saveDialog");
    setOptions(DontUseNativeDialog | DontUseCustomDirectoryIcons);
    setAcceptMode(AcceptSave);
    setFileMode(AnyFile);
    setNameFilter("WAV (*.wav)");
    setWindowTitle("Saving checkboard...");
    setDirectory(showableFolder(dirPath));

    auto* const label = new QLabel(message, this);
    label->setObjectName("message");
    label->setContentsMargins(2 * grid, 2 * grid, 2 * grid, 0);
    layout()->setMenuBar(label); // the place above everything else
    layout()->setContentsMargins(2 * grid, grid, 2 * grid, 2 * grid);
    layout()->setSpacing(grid);
    setSizeGripEnabled(false);
    if (auto* const details = findChild<QTreeView*>("treeView")) {
        details->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    }
    resize(usualSize);

    fileName_ = findChild<QLineEdit*>("fileNameEdit");
    propose();
}

void SaveDialog::propose() {
    fileName_->setText(shownName_);
    fileName_->setFocus();
    // So that typing replaces the name and leaves the ending.
    fileName_->setSelection(0, static_cast<int>(textOf(proposedName_.stem()).size()));
}

void SaveDialog::accept() {
    const QString typed = fileName_->text();
    if (typed.isEmpty() || isAsking_) {
        return;
    }
    const std::filesystem::path path = pathOf(typed);
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        enter(textOf(path));
    } else if (isInTheWay(withWavEnding(path))) {
        isAsking_ = true;
        // Later: a part of the dialog, such as the field for the name, called this and still works.
        // It must not find itself destroyed when an answer is there.
        auto* const later = new QTimer(this);
        later->setSingleShot(true);
        connect(later, &QTimer::timeout, this, [this, later, path] {
            later->deleteLater();
            askAndTake(path);
        });
        later->start(0);
    } else {
        take(path);
    }
}

void SaveDialog::take(const std::filesystem::path& path) {
    chosenPath_ = path;
    done(Accepted);
}

void SaveDialog::askAndTake(const std::filesystem::path& path) {
    const QPointer<SaveDialog> self(this);
    const bool isToBeReplaced = askToReplace(withWavEnding(path));
    if (self == nullptr) {
        return;
    }
    isAsking_ = false;
    if (isToBeReplaced) {
        take(path);
    }
}

void SaveDialog::enter(const QString& folder) {
    setDirectory(folder);
    propose();
}

// Read here rather than asked of the base class, which takes quotation marks in a name for those
// around several names.
std::filesystem::path SaveDialog::pathOf(QString typed) const {
    typed.remove(QChar(QChar::Null)); // pasted, it would end the name early
    if (typed.startsWith("~/")) {
        return bytesOf(QDir::homePath() + typed.mid(1));
    }
    return bytesOf(directory().absolutePath()) /
           (typed == shownName_ ? proposedName_ : bytesOf(typed));
}

bool SaveDialog::isInTheWay(const std::filesystem::path& target) const {
    std::error_code error;
    // The recording's own file won't be overwritten, whatever the answer.
    return std::filesystem::is_regular_file(target, error) && !isSameFile(target, source_);
}

bool SaveDialog::askToReplace(const std::filesystem::path& target) {
    const QString name = displayName(target.filename().native());
    // Not on the stack: this dialog may be destroyed, with the question, while the question is up.
    const QPointer<QMessageBox> question(new QMessageBox(this));
    question->setObjectName("overwrite");
    question->setIcon(QMessageBox::NoIcon);
    question->setWindowTitle(windowTitle());
    question->setTextFormat(Qt::PlainText);
    question->setText(
        QStringLiteral("%1 already exists.\nDo you want to replace it?")
            .arg(question->fontMetrics().elidedText(name, Qt::ElideMiddle, nameWidth)));
    QPushButton* const replace = question->addButton("Replace", QMessageBox::AcceptRole);
    replace->setObjectName("btnReplace");
    QPushButton* const keep = question->addButton("Cancel", QMessageBox::RejectRole);
    keep->setObjectName("btnKeep");
    question->setDefaultButton(keep);
    // On two lines: the toolkit would break them anew for a box as narrow as its buttons.
    layOutMessage(*question, question->fontMetrics().size(0, question->text()).width() + grid);
    question->exec();
    const bool isToBeReplaced = question != nullptr && question->clickedButton() == replace;
    delete question;
    return isToBeReplaced;
}

std::optional<std::filesystem::path> askForTarget(const std::filesystem::path& source,
                                                  const std::filesystem::path& dirPath,
                                                  QWidget* parent) {
    // Not on the stack, as the question above.
    const QPointer<SaveDialog> dialog(new SaveDialog(source, dirPath, parent));
    std::optional<std::filesystem::path> chosen;
    if (dialog->exec() == QDialog::Accepted && dialog != nullptr) {
        chosen = dialog->chosenPath();
    }
    delete dialog;
    return chosen;
}

} // namespace deckmate
