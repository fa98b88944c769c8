#include "StyleBoard.h"

#include "app/DialogParts.h"
#include "app/FileListCell.h"
#include "app/FolderHelper.h"
#include "app/ImageView.h"
#include "controls/Resources.h"

#include <initializer_list>

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QToolButton>

namespace deckmate {

namespace {

constexpr int tableWidth = 288;

QVBoxLayout* addPanel(QHBoxLayout& board) {
    auto* const panel = new QFrame;
    panel->setProperty("role", "panel");
    board.addWidget(panel);
    auto* const column = new QVBoxLayout(panel);
    column->setContentsMargins(2 * grid, 2 * grid, 2 * grid, 2 * grid);
    column->setSpacing(grid);
    return column;
}

/// The same control able and unable to act.
template <class Control>
void addBoth(QVBoxLayout& column, Control* able, Control* unable) {
    unable->setEnabled(false);
    auto* const row = new QHBoxLayout;
    row->setSpacing(grid);
    row->addWidget(able);
    row->addWidget(unable);
    column.addLayout(row);
}

void addCheckable(QVBoxLayout& column, QAbstractButton* able, QAbstractButton* unable) {
    able->setChecked(true);
    unable->setChecked(true);
    addBoth(column, able, unable);
}

QComboBox* makeComboBox() {
    auto* const box = new QComboBox;
    box->addItems({"Alkaline", "Ni-MH", "Lithium"});
    return box;
}

QToolButton* makeImageButton(const QString& name, const QSize& size) {
    auto* const button = new QToolButton;
    button->setIcon(icon(name));
    button->setIconSize(size);
    return button;
}

void addImageButtons(QVBoxLayout& column, std::initializer_list<const char*> names,
                     const QSize& size, bool isAble) {
    auto* const row = new QHBoxLayout;
    for (const char* const name : names) {
        QToolButton* const button = makeImageButton(name, size);
        button->setEnabled(isAble);
        row->addWidget(button);
    }
    column.addLayout(row);
}

QTableView* makeTable(QWidget* owner) {
    const FileIcons icons = FileIcons::ofTheme();
    auto* const model = new QStandardItemModel(owner);
    for (const char* const name :
         {"2026-11 Harbour", "Rehearsals", "H8_0001.WAV", "H8_0002.WAV",
          "Interview with the organist in the loft, second part, before the concert.WAV"}) {
        const bool isFolder = !QString(name).endsWith(".WAV");
        model->appendRow(new QStandardItem(isFolder ? icons.folder : icons.recording, name));
    }
    auto* const table = new QTableView(owner);
    table->setModel(model);
    table->setItemDelegate(new FileListCell(table));
    table->setShowGrid(false);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->horizontalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(FileListCell::height);
    table->setFixedWidth(tableWidth);
    table->selectRow(3);
    return table;
}

QLineEdit* makeLineEdit() {
    auto* const edit = new QLineEdit("H8_0002");
    edit->setCursorPosition(0); // else its end would be shown, with a glyph cut at its beginning
    return edit;
}

/// Radio buttons of one parent exclude each other: able and unable ones have each their own.
QWidget* makeFormats() {
    auto* const formats = new QWidget;
    auto* const column = new QVBoxLayout(formats);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(grid);
    auto* const chosen = new QRadioButton("24-bit Linear");
    chosen->setChecked(true);
    column->addWidget(chosen);
    column->addWidget(new QRadioButton("32-bit Float"));
    return formats;
}

void addButtons(QVBoxLayout& column) {
    addBoth(column, new QPushButton("Export\u2026"), new QPushButton("Export\u2026"));
    auto* const main = new QPushButton("Save");
    main->setDefault(true);
    column.addWidget(main);
    addCheckable(column, new QCheckBox("Normalize"), new QCheckBox("Normalize"));
    addBoth(column, new QCheckBox("Normalize"), new QCheckBox("Normalize"));
    addBoth(column, makeFormats(), makeFormats());
    addBoth(column, makeComboBox(), makeComboBox());
    addBoth(column, makeLineEdit(), makeLineEdit());
    auto* const progress = new QProgressBar;
    progress->setValue(40);
    column.addWidget(progress);
    column.addStretch();
}

void addImages(QVBoxLayout& column) {
    for (const char* const name : {"play_play", "play_pause"}) {
        addBoth(column, makeImageButton(name, {24, 24}), makeImageButton(name, {24, 24}));
    }
    for (const bool isAble : {true, false}) {
        addImageButtons(column, {"speaker_mute", "speaker_1", "speaker_2", "speaker_3"}, {38, 24},
                        isAble);
        addImageButtons(column, {"go_up", "folder", "recording", "open_folder"}, {16, 16}, isAble);
    }
    auto* const devices = new QHBoxLayout;
    devices->addWidget(new ImageView("device_panel", {48, 178}));
    devices->addWidget(new ImageView("device_panel_off", {48, 178}));
    devices->addWidget(new ImageView("device", {140, 206}));
    auto* const unable = new ImageView("device", {140, 206});
    unable->setEnabled(false);
    devices->addWidget(unable);
    column.addLayout(devices);
    column.addWidget(new ImageView("orlo-h8-deckmate", {128, 128}));
}

} // namespace

std::unique_ptr<QWidget> makeStyleBoard() {
    auto board = std::make_unique<QWidget>();
    auto* const row = new QHBoxLayout(board.get());
    row->setContentsMargins(grid, grid, grid, grid);
    row->setSpacing(grid);
    addPanel(*row)->addWidget(makeTable(board.get()));
    addButtons(*addPanel(*row));
    addImages(*addPanel(*row));
    return board;
}

} // namespace deckmate
