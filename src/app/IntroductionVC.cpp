#include "app/IntroductionVC.h"

#include "app/DialogParts.h"
#include "app/ImageView.h"
#include "services/Utility.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>

namespace deckmate {

namespace {

constexpr QSize pictureSize{160, 104};

struct Step {
    const char* picture;
    const char* title;
    const char* text;
};

constexpr Step steps[] = {
    {"introduction_1", "1  Open a folder",
     "Choose where your recordings are. A recorder on USB shows its state below the list."},
    {"introduction_2", "2  Open a recording",
     "Double-click it, or press Return. It starts to play at once."},
    {"introduction_3", "3  Turn the width",
     "Drag the dial while a raw recording plays, from mono to wide."},
    {"introduction_4", "4  Export",
     "Save what you hear as a new file. The recording stays as it is."},
};

QFrame* makeCard(const Step& step, QWidget* parent) {
    auto* const card = new QFrame(parent);
    card->setProperty("role", "panel");
    auto* const column = new QVBoxLayout(card);
    column->setContentsMargins(grid, grid, grid, 2 * grid);
    column->setSpacing(grid);
    column->addWidget(new ImageView(step.picture, pictureSize, {}, card));
    column->addWidget(makeLabel(step.title, "subheading", card));
    column->addWidget(makeParagraph(step.text, "detail", pictureSize.width(), card));
    column->addStretch();
    return card;
}

} // namespace

IntroductionVC::IntroductionVC(QWidget* parent) : DialogWindow(parent) {
    setObjectName("IntroductionVC");
    viewDidLoad();
}

void IntroductionVC::viewDidLoad() {
    auto* const cards = new QHBoxLayout;
    cards->setSpacing(2 * grid);
    for (const Step& step : steps) {
        cards->addWidget(makeCard(step, this));
    }

    toggleShow = new QCheckBox("Don't show this again", this);
    toggleShow->setObjectName("toggleShow");
    QPushButton* const button = makeMainButton("OK", "btnOK", this);
    connect(button, &QPushButton::clicked, this, [this] { btnOK_Click(); });

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(3 * grid, 3 * grid, 3 * grid, 2 * grid);
    column->setSpacing(2 * grid);
    column->addWidget(makeLabel("From a recording to a finished file", "heading", this));
    column->addLayout(cards);
    column->addLayout(makeButtonRow(toggleShow, button));
    // The box comes first for the tabulator key, but what Return presses has the focus.
    button->setFocus();
}

void IntroductionVC::viewWillAppear() {
    DialogWindow::viewWillAppear();
    initWindowUI();
}

void IntroductionVC::initWindowUI() {
    toggleShow->setVisible(!fromMenu_);
    setUpWindow("Introduction");
}

void IntroductionVC::btnOK_Click() {
    if (!toggleShow->isHidden() && toggleShow->isChecked()) {
        Utility::store("UD_DO_NOT_SHOW_AGAIN", versionString_.toStdString());
    }
    dismissController();
}

} // namespace deckmate
