// The main window's views, and where they stand.
#pragma once

#include <QRect>
#include <QSize>

class QComboBox;
class QFrame;
class QLabel;
class QPushButton;
class QToolButton;
class QWidget;

namespace deckmate {

class AngleViewer;
class ClickableArea;
class ElidedLabel;
class FileListView;
class GainTickTitle;
class H8GainSlider;
class H8Slider;
class ImageView;
class LevelMeter;
class Slider;
class StatusDot;

/// The views by name; the window's content owns them. None is null once it is built.
struct MainWindowView {
    // Path strip and browser
    QFrame* viewLeftBG = nullptr;
    QFrame* viewPathBG = nullptr;
    QToolButton* btnGoUp = nullptr;
    ClickableArea* lblFolder = nullptr;
    QToolButton* btnOpenFolder = nullptr;
    FileListView* tableFile = nullptr;

    // Recording
    QFrame* viewRightBG = nullptr;
    ElidedLabel* lblFileName = nullptr;
    QPushButton* btnExport = nullptr;

    // Stereo width
    AngleViewer* sliderStereo = nullptr;
    ImageView* imgDevice = nullptr;
    QLabel* lblStereo = nullptr;

    // Gain
    QLabel* lblGain = nullptr;
    GainTickTitle* tickOfGain = nullptr;
    H8GainSlider* sliderGain = nullptr;

    // Levels
    GainTickTitle* tickOfLevel = nullptr;
    LevelMeter* lvlLeft = nullptr;
    LevelMeter* lvlRight = nullptr;

    // Transport
    H8Slider* sliderTime = nullptr;
    QLabel* lblTimeCurrent = nullptr;
    QLabel* lblTimeTotal = nullptr;
    QToolButton* btnPlayPause = nullptr;
    QToolButton* btnVolume = nullptr;
    Slider* sliderVolume = nullptr;

    // Recorder
    QFrame* viewDeviceBG = nullptr;
    ImageView* imgH8 = nullptr;
    StatusDot* statusDot = nullptr;
    QLabel* lblConnect = nullptr;
    QLabel* lblVersion = nullptr;
    QLabel* lblUsed = nullptr;
    QLabel* lblRemain = nullptr;
    QComboBox* popupBattery = nullptr;
    QComboBox* popupAutoPow = nullptr;
    ClickableArea* listBatteryCover = nullptr;
    ClickableArea* listAutoPowOffCover = nullptr;
};

/// Points, without the menu bar. The content may become larger, not smaller.
inline constexpr QSize smallestContent{1050, 640};

/// Makes the views inside `content`, names and places them, and moves them when it is resized: the
/// browser takes more height, the time slider more width, the dial stays in the middle. Object
/// names are the names above. Thread: main.
void buildMainWindow(QWidget& content, MainWindowView& view);

} // namespace deckmate
