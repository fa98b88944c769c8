#include "app/NodeviceVC.h"

#include "app/DialogParts.h"
#include "app/ImageView.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace deckmate {

namespace {

constexpr int textWidth = 320;
constexpr int itemWidth = textWidth - 2 * grid;

constexpr auto why = "The recorder's settings can be changed while an ORLO H8 is connected over "
                     "USB. Please check:";
constexpr const char* checks[] = {
    "The cable sits firmly at both ends and carries data, not only power.",
    "The recorder is switched on.",
    "No other program uses it over MIDI.",
};
constexpr auto then = "It is found by itself a moment after it is connected.";

} // namespace

NodeviceVC::NodeviceVC(QWidget* parent) : DialogWindow(parent) {
    setObjectName("NodeviceVC");
    viewDidLoad();
}

void NodeviceVC::viewDidLoad() {
    QPushButton* const button = makeMainButton("OK", "btnOK", this);
    connect(button, &QPushButton::clicked, this, [this] { btnOK_Click(); });

    auto* const list = new QGridLayout;
    list->setHorizontalSpacing(0);
    list->setVerticalSpacing(grid);
    list->setColumnMinimumWidth(0, 2 * grid);
    for (const char* const check : checks) {
        const int row = list->rowCount();
        list->addWidget(makeLabel(QStringLiteral("\u2022"), "", this), row, 0,
                        Qt::AlignLeading | Qt::AlignTop);
        list->addWidget(makeParagraph(check, "", itemWidth, this), row, 1);
    }

    auto* const texts = new QVBoxLayout;
    texts->setSpacing(2 * grid);
    texts->addWidget(makeLabel("No recorder connected", "heading", this));
    texts->addWidget(makeParagraph(why, "", textWidth, this));
    texts->addLayout(list);
    texts->addWidget(makeParagraph(then, "detail", textWidth, this));
    texts->addStretch();

    auto* const content = new QHBoxLayout;
    content->setSpacing(3 * grid);
    content->addWidget(new ImageView("device_panel_off", QSize(48, 178), "ORLO H8", this), 0,
                       Qt::AlignTop);
    content->addLayout(texts);

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(3 * grid, 3 * grid, 3 * grid, 2 * grid);
    column->setSpacing(2 * grid);
    column->addLayout(content);
    column->addLayout(makeButtonRow(nullptr, button));
}

void NodeviceVC::viewWillAppear() {
    DialogWindow::viewWillAppear();
    initWindowUI();
}

void NodeviceVC::initWindowUI() {
    setUpWindow("ORLO H8 Deckmate");
}

void NodeviceVC::btnOK_Click() {
    dismissController();
}

} // namespace deckmate
