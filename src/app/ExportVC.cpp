#include "app/ExportVC.h"

#include "app/Alert.h"
#include "app/DialogParts.h"
#include "app/ElidedLabel.h"
#include "app/FolderHelper.h"
#include "app/PendingInput.h"
#include "app/ProgressPace.h"
#include "app/SaveDialog.h"
#include "controls/Resources.h"
#include "platform/Log.h"
#include "platform/TerminationHold.h"
#include "services/EB.h"

#include <string_view>
#include <utility>

#include <QApplication>
#include <QBackingStore>
#include <QBoxLayout>
#include <QCheckBox>
#include <QLabel>
#include <QPalette>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSizePolicy>

namespace deckmate {

namespace {

constexpr int contentWidth = 44 * grid;
constexpr int hintIndent = 3 * grid; ///< where the check box's title begins
constexpr auto hint = "Scales to full scale. The gain is not used.";

/// The box of a choice stays as it is; only its title takes the colour.
void drawTitle(QAbstractButton& button, const QString& title, const QColor& colour) {
    button.setText(title);
    QPalette palette = button.palette();
    palette.setColor(QPalette::Active, QPalette::WindowText, colour);
    palette.setColor(QPalette::Inactive, QPalette::WindowText, colour);
    button.setPalette(palette);
}

} // namespace

ExportVC::ExportVC(QWidget* parent)
    : DialogWindow(parent), chooseTarget(askForTarget), showAlert(deckmate::showAlert),
      now(std::chrono::steady_clock::now), lblFileName(new ElidedLabel(this)),
      radio32(new QRadioButton(this)), radio24(new QRadioButton(this)),
      checkboxNormalize(new QCheckBox("Normalize", this)), progress(new QProgressBar(this)),
      btnCancel(new QPushButton("Cancel", this)), btnSave(makeMainButton("Save", "btnSave", this)) {
    setObjectName("ExportVC");
    viewDidLoad();
}

void ExportVC::viewDidLoad() {
    drawTitle(*radio32, "32-bit Float", colour("WHITE"));
    drawTitle(*radio24, "24-bit Linear", colour("WHITE"));
    radio24->setChecked(true); // what other programs read, and smaller

    lblFileName->setObjectName("lblFileName");
    lblFileName->setProperty("role", "heading");
    radio32->setObjectName("radio32");
    radio24->setObjectName("radio24");
    checkboxNormalize->setObjectName("checkboxNormalize");
    checkboxNormalize->setAccessibleDescription(hint);
    progress->setObjectName("progress");
    progress->setAccessibleName("Export progress");
    btnCancel->setObjectName("btnCancel");
    btnCancel->setAutoDefault(false);
    layOut();

    for (QRadioButton* const radio : {radio32, radio24}) {
        connect(radio, &QRadioButton::clicked, this, [this] { radio_check(); });
    }
    connect(btnSave, &QPushButton::clicked, this, [this] { btnSave_Click(); });
    connect(btnCancel, &QPushButton::clicked, this, [this] { btnCancel_Click(); });
}

void ExportVC::layOut() {
    progress->setRange(0, 1000);
    progress->setTextVisible(false);
    progress->setFixedHeight(grid / 2);
    // Its place is there from the start, so that nothing moves when it appears.
    QSizePolicy policy = progress->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    progress->setSizePolicy(policy);
    progress->hide();

    QLabel* const hintLabel = makeParagraph(hint, "detail", contentWidth - hintIndent, this);
    auto* const hintRow = new QHBoxLayout;
    hintRow->addSpacing(hintIndent);
    hintRow->addWidget(hintLabel);

    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(grid);
    buttons->addStretch();
    buttons->addWidget(btnCancel);
    buttons->addWidget(btnSave);

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(3 * grid, 3 * grid, 3 * grid, 2 * grid);
    column->setSpacing(0);
    lblFileName->setFixedWidth(contentWidth);
    column->addWidget(lblFileName);
    column->addSpacing(2 * grid);
    column->addWidget(radio24, 0, Qt::AlignLeading);
    column->addWidget(radio32, 0, Qt::AlignLeading);
    column->addSpacing(2 * grid);
    column->addWidget(checkboxNormalize, 0, Qt::AlignLeading);
    column->addLayout(hintRow);
    column->addSpacing(2 * grid - grid / 2);
    column->addWidget(progress);
    column->addSpacing(2 * grid);
    column->addLayout(buttons);

    setTabOrder(radio24, radio32);
    setTabOrder(radio32, checkboxNormalize);
    radio24->setFocus();
}

void ExportVC::setExporter(std::shared_ptr<Export> exporter) {
    exporter_ = std::move(exporter);
}

void ExportVC::viewWillAppear() {
    DialogWindow::viewWillAppear();
    lblFileName->setText(displayName(exporter_->getFilePath().filename().native()));
    initWindowUI();
}

void ExportVC::initWindowUI() {
    setUpWindow("Export");
}

void ExportVC::btnSave_Click() {
    // A second click may have waited until the sheet was gone.
    if (!isVisible() || std::exchange(isAsking_, true)) {
        return;
    }
    // Held here, because the sheet may be destroyed while the user chooses.
    const QPointer<ExportVC> self(this);
    const auto choose = chooseTarget;
    const auto recording = exporter_;
    const auto chosen = choose(recording->getFilePath(), recording->getDirPath(), this);
    if (self == nullptr) {
        return; // the program ends
    }
    isAsking_ = false;
    if (!chosen) {
        return;
    }
    const SaveOutcome outcome = save(withWavEnding(*chosen));
    dropPendingInput(); // the sheet, which kept it from the other windows, is about to go
    // Whoever presented the sheet may delete it from here on.
    const auto alert = showAlert;
    QPointer<QWidget> const window(parentWidget());
    done(Accepted);
    EB::FIRE("EB_RELOAD_FILE_LIST");
    const std::string_view text = alertText(outcome);
    if (!text.empty()) {
        alert(window, QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())));
    }
}

SaveOutcome ExportVC::save(const std::filesystem::path& target) {
    const TerminationHold hold;
    ProgressPace pace;
    exporter_->setProgress([this, &pace, start = now()](std::uint64_t isDone, std::uint64_t total) {
        if (const std::optional<int> perMille = pace.after(now() - start, isDone, total)) {
            showProgress(*perMille);
        }
    });
    const SaveChoices choices = {.is24bit = radio24->isChecked(),
                                 .isNormalize = checkboxNormalize->isChecked()};
    const SaveOutcome outcome = saveDecoded(*exporter_, target, choices, Log::write);
    exporter_->setProgress(nullptr);
    return outcome;
}

// Paints without handling events: an event loop in here would let timers, the recorder and the user
// in, while the recording is being read.
void ExportVC::showProgress(int perMille) {
    if (progress->isHidden()) {
        for (QWidget* const control : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
            control->setEnabled(control == progress || control == lblFileName);
        }
        progress->show();
    }
    progress->setValue(perMille);
    repaint();
    // What the other windows show is still known: the save dialog, or another program, may have
    // left holes in them.
    for (const QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->backingStore() != nullptr) {
            window->backingStore()->flush(window->rect());
        }
    }
}

void ExportVC::btnCancel_Click() {
    dismissController();
}

} // namespace deckmate
