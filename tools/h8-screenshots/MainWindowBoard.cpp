#include "MainWindowBoard.h"

#include "app/ClickableArea.h"
#include "app/ElidedLabel.h"
#include "app/FileListCell.h"
#include "app/FileListView.h"
#include "app/FolderHelper.h"
#include "app/MainWindowView.h"
#include "app/StatusDot.h"
#include "controls/AngleViewer.h"
#include "controls/GainTickTitle.h"
#include "controls/H8GainSlider.h"
#include "controls/H8Slider.h"
#include "controls/H8SliderCell.h"
#include "controls/LevelMeter.h"
#include "controls/Resources.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QPainter>
#include <QPalette>
#include <QPushButton>
#include <QStandardItemModel>
#include <QToolButton>

namespace deckmate {

namespace {

void fillBrowser(const MainWindowView& view) {
    const FileIcons icons = FileIcons::ofTheme();
    auto* const model = new QStandardItemModel(view.tableFile);
    for (const char* const name : {"2026-11 Harbour", "Rehearsals"}) {
        model->appendRow(new QStandardItem(icons.folder, name));
    }
    for (const char* const name :
         {"H8_0001.WAV", "H8_0002.WAV", "H8_0003.WAV", "H8_0003_Decode.WAV", "H8_0004.WAV"}) {
        model->appendRow(new QStandardItem(icons.recording, name));
    }
    view.lblFolder->setText("Recordings");
    view.tableFile->setModel(model);
    view.tableFile->horizontalHeader()->setStretchLastSection(true);
    view.tableFile->setCurrentIndex(model->index(3, 0));
}

void fillRecorder(const MainWindowView& view) {
    view.lblConnect->setText("Connected");
    view.lblVersion->setText("Ver. 1.23");
    view.lblUsed->setText("7.50 GB / 29.8 GB Used");
    view.lblRemain->setText("02:13:45");
    // Only there while no recorder is.
    view.listBatteryCover->hide();
    view.listAutoPowOffCover->hide();
}

void enable(Slider& slider, double value) {
    slider.cell()->setSliderEnabled(true);
    slider.cell()->setIsVertical(slider.isVertical());
    slider.setDoubleValue(value);
}

void fillTicks(class GainTickTitle& strip, const QStringList& texts) {
    strip.setTexts(texts);
    strip.initTick();
    strip.setEnable(true);
}

void fillRecording(const MainWindowView& view) {
    view.lblFileName->setText("H8_0002.WAV");
    view.sliderStereo->setEnable(true);
    view.sliderStereo->layout();
    view.sliderStereo->setNewAngle(75);
    fillTicks(*view.tickOfGain, {"+36", "+24", "+12", "0", "-12", "-24", "-36"});
    fillTicks(*view.tickOfLevel, {"+6", "0", "-6", "-12", "-18", "-24", "-36", "-48"});
    view.sliderGain->setMinValue(-36);
    view.sliderGain->setMaxValue(36);
    enable(*view.sliderGain, 6);
    view.lvlLeft->setLevel(38);
    view.lvlRight->setLevel(34);
    enable(*view.sliderTime, 0.37);
    enable(*view.sliderVolume, 0.5);
    view.lblTimeCurrent->setText("00:01:24");
    view.lblTimeTotal->setText("00:03:47");
    view.btnPlayPause->setIcon(icon("play_pause"));
}

} // namespace

std::unique_ptr<QWidget> makeMainWindowBoard() {
    auto board = std::make_unique<QWidget>();
    QPalette colours = board->palette();
    colours.setColor(QPalette::Window, colour("AppBG"));
    board->setPalette(colours);
    board->setFixedSize(smallestContent);
    MainWindowView view;
    buildMainWindow(*board, view);
    board->setFocusPolicy(Qt::StrongFocus);
    board->setFocus(); // so that none of the views has the keyboard
    fillBrowser(view);
    fillRecorder(view);
    fillRecording(view);
    return board;
}

QPixmap focusedEverywhere(QWidget& board) {
    board.setAttribute(Qt::WA_KeyboardFocusChange); // as after the tabulator key
    QPixmap all = board.grab();
    QPainter painter(&all);
    for (QWidget* const view : board.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (view->isVisible() && view->focusPolicy() != Qt::NoFocus) {
            view->setFocus(Qt::TabFocusReason);
            QCoreApplication::processEvents();
            painter.drawPixmap(view->pos(), board.grab(view->geometry()));
        }
    }
    return all;
}

} // namespace deckmate
