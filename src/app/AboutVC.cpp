#include "app/AboutVC.h"

#include "app/DialogParts.h"
#include "app/ImageView.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace deckmate {

namespace {

constexpr int textWidth = 352;

constexpr auto purpose = "Plays and decodes the recordings of the ORLO H8, and shows the "
                         "recorder's state while it is on USB.";
constexpr auto libraries = "Built with Qt, cubeb, libsndfile and ALSA.";
constexpr auto licence = "Free software under the MIT licence, without warranty.";

} // namespace

AboutVC::AboutVC(QWidget* parent) : DialogWindow(parent) {
    setObjectName("AboutVC");
    viewDidLoad();
}

void AboutVC::viewDidLoad() {
    imgORLO = new ImageView("orlo", QSize(152, 40), "ORLO", this);
    imgORLO->setObjectName("imgORLO");
    version = makeLabel("", "", this);
    version->setObjectName("version");
    QPushButton* const button = makeMainButton("Close", "btnClose", this);
    connect(button, &QPushButton::clicked, this, [this] { dismissController(); });

    auto* const versionRow = new QHBoxLayout;
    versionRow->setSpacing(grid / 2);
    versionRow->addWidget(makeLabel("Version", "", this));
    versionRow->addWidget(version);
    versionRow->addStretch();

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(3 * grid, 3 * grid, 3 * grid, 2 * grid);
    column->setSpacing(grid);
    column->addWidget(imgORLO);
    column->addSpacing(grid);
    column->addWidget(makeLabel("ORLO H8 Deckmate", "heading", this));
    column->addLayout(versionRow);
    column->addSpacing(grid);
    column->addWidget(makeParagraph(purpose, "", textWidth, this));
    column->addWidget(makeParagraph(libraries, "detail", textWidth, this));
    column->addWidget(makeParagraph(licence, "detail", textWidth, this));
    column->addSpacing(grid);
    column->addLayout(makeButtonRow(nullptr, button));
}

void AboutVC::viewWillAppear() {
    DialogWindow::viewWillAppear();
    initWindowUI();
}

void AboutVC::initWindowUI() {
    version->setText(versionString_);
    setUpWindow("About");
}

} // namespace deckmate
