#include "app/ViewController.h"

#include "app/ClickableArea.h"
#include "app/DevicePanelText.h"
#include "app/DialogParts.h"
#include "app/ElidedLabel.h"
#include "app/FileListCell.h"
#include "app/FileListModel.h"
#include "app/FileListView.h"
#include "app/FolderLister.h"
#include "app/ImageView.h"
#include "app/IntroductionVC.h"
#include "controls/H8Slider.h"
#include "controls/H8SliderCell.h"
#include "controls/LevelMeter.h"
#include "controls/Resources.h"
#include "device/MIDICommon.h"
#include "platform/Bundle.h"
#include "services/EB.h"
#include "services/Utility.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <system_error>
#include <utility>

#include <QComboBox>
#include <QDropEvent>
#include <QFile>
#include <QGuiApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QStandardPaths>
#include <QToolButton>
#include <QUrl>

namespace deckmate {

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto lastFolderKey = "UD_LAST_OPEN_FOLDER";
constexpr auto doNotShowAgainKey = "UD_DO_NOT_SHOW_AGAIN";
constexpr auto playFinish = "EB_PLAY_FINISH";
constexpr auto reloadFileList = "EB_RELOAD_FILE_LIST";

constexpr auto listingInterval = 5s;
constexpr int menuBarHeight = 28;
constexpr int columnMargin = 30;
constexpr double dimmed = 0.5;
constexpr std::int64_t meterTop = 54;
constexpr double mostGain = 36.0;
constexpr double firstVolume = 0.5;

QString versionOfBundle() {
    const auto text = [](const char* key) {
        const auto value = Bundle::objectForInfoDictionaryKey(key);
        return value ? QString::fromUtf8(value->data(), static_cast<qsizetype>(value->size()))
                     : QString();
    };
    return text("CFBundleShortVersionString") + "." + text("CFBundleVersion");
}

bool isThere(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

fs::path desktopFolder() {
    return fs::path(QStandardPaths::writableLocation(QStandardPaths::HomeLocation).toStdString()) /
           "Desktop";
}

/// Without slashes at its end, the root excepted: so its last component is the folder's name.
fs::path withoutTrailingSlash(const fs::path& path) {
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

/// Of the folder, or of the Desktop where there is none. Thread: any.
std::shared_ptr<FolderHelper> listingOf(const fs::path& folder, const FileIcons& icons) {
    return std::make_shared<FolderHelper>(isThere(folder) ? folder : desktopFolder(), icons);
}

void setOpacity(QLabel& label, double opacity) {
    QPalette colours = label.palette();
    QColor text = colour("WHITE");
    text.setAlphaF(static_cast<float>(opacity));
    colours.setColor(QPalette::WindowText, text);
    label.setPalette(colours);
}

} // namespace

ViewController::ViewController(QMainWindow& window)
    : doors(makeToolkitDoors(window)), window_(window) {
    buildMainWindow(*window.centralWidget(), *this);
    viewDidLoad();
}

ViewController::~ViewController() {
    NotificationCenter::defaultCenter().removeObserver(this);
    if (MIDIManager::s_midi() && MIDIManager::get().delegate() == this) {
        MIDIManager::get().setDelegate(nullptr);
    }
    if (wavPlayer_) {
        wavPlayer_->setDelegate(nullptr);
    }
}

// Start-up

void ViewController::viewDidLoad() {
    isSeeking_ = false;
    versionString_ = versionOfBundle();
    const std::optional<std::string> silenced = Utility::getStringValue(doNotShowAgainKey);
    if (!silenced || QString::fromStdString(*silenced) != versionString_) {
        firstIntroDialog_ = true;
    }
    initUI();
    initMIDI();
    EB::initData();
    EB::SUBSCRIBE(this, &ViewController::notify, playFinish);
    EB::SUBSCRIBE(this, &ViewController::notify, reloadFileList);
}

void ViewController::initMIDI() {
    MIDIManager& manager = MIDIManager::get();
    manager.setDelegate(this);
    manager.scanOrloDevice();
}

void ViewController::initUI() {
    buildMenus();
    initPanels();
    initBrowser();
    initScales();
    initVolume();
    initTime();
    initRecording();
    initMeters();
    initGain();
    initAngle();
    initRecorder();
    connectActions();
    MIDIManagerDisconnected();
}

void ViewController::buildMenus() {
    QMenuBar& bar = *window_.menuBar();
    bar.setFixedHeight(menuBarHeight);
    QMenu* const file = bar.addMenu("File");
    connect(file->addAction("Open Folder\u2026", QKeySequence("Ctrl+O")), &QAction::triggered, this,
            [this] { openSoon(&ViewController::txtFolder_Click); });
    exportEntry_ = file->addAction("Export\u2026", QKeySequence("Ctrl+E"));
    connect(exportEntry_, &QAction::triggered, this,
            [this] { openSoon(&ViewController::btnExport_Click); });
    file->addSeparator();
    connect(file->addAction("Quit", QKeySequence("Ctrl+Q")), &QAction::triggered, &window_,
            &QWidget::close);
    QMenu* const playback = bar.addMenu("Playback");
    // Only shown: eventFilter() keeps the key from being a shortcut.
    playEntry_ = playback->addAction("Play/Pause", QKeySequence(Qt::Key_Space));
    connect(playEntry_, &QAction::triggered, this, [this] { btnPlay_Click(); });
    connect(playback->addAction("Mute"), &QAction::triggered, this, [this] { btnVolume_Click(); });
    QMenu* const help = bar.addMenu("Help");
    connect(help->addAction("Online documentation", QKeySequence("F1")), &QAction::triggered, this,
            [this] { showHelp(); });
    connect(help->addAction("Introduction"), &QAction::triggered, this,
            [this] { openSoon(&ViewController::showIntroduction); });
    connect(help->addAction("About"), &QAction::triggered, this,
            [this] { openSoon(&ViewController::btnAbout_Click); });
}

void ViewController::initPanels() {
    window_.setAcceptDrops(true);
    window_.installEventFilter(this);
}

void ViewController::initBrowser() {
    icons_ = FileIcons::ofTheme();
    model_ = std::make_unique<FileListModel>();
    lister_ = std::make_unique<FolderLister>(
        [icons = icons_](const fs::path& folder) { return listingOf(folder, icons); },
        [this](const FolderLister::Listing& listing) { showListing(listing); });
    tableFile->setModel(model_.get());
    tableFile->horizontalHeader()->setStretchLastSection(true);
    tableFile->setFocus();
}

void ViewController::initScales() {
    tickOfGain->setTexts({"+36", "+24", "+12", "0", "-12", "-24", "-36"});
    tickOfGain->setEnable(false);
    tickOfGain->setDelegate(this);
    tickOfGain->initTick();
    tickOfLevel->setTexts({"+6", "0", "-6", "-12", "-18", "-24", "-36", "-48"});
    tickOfLevel->setEnable(true);
    tickOfLevel->initTick();
}

void ViewController::initVolume() {
    sliderVolumeCell_ = std::make_shared<H8SliderCell>();
    sliderVolumeCell_->setSliderEnabled(true);
    sliderVolume->setCell(sliderVolumeCell_);
    sliderVolume->setMinValue(0.0);
    sliderVolume->setMaxValue(1.0);
    sliderVolume->setDoubleValue(firstVolume);
    lastVolume_ = 0;
    heardVolume_ = firstVolume;
    isMuteVolume_ = false;
    sliderVolume->setAction([this](Slider& slider) { sliderVolValueChanged(slider); });
    updateVolumeIcon(sliderVolume->doubleValue());
}

void ViewController::initTime() {
    sliderTimeCell_ = std::make_shared<H8SliderCell>();
    sliderTime->setCell(sliderTimeCell_);
    sliderTime->setMinValue(0.0);
    sliderTime->setMaxValue(100.0);
    sliderTime->setDoubleValue(0.0);
    sliderTime->setEnabled(false);
    sliderTime->setContinuous(true);
    sliderTime->setAction([this](Slider& slider) { sliderTimeValueChanged(slider); });
}

void ViewController::initRecording() {
    lblFileName->setText({});
    lblTimeCurrent->setText(noTime);
    lblTimeTotal->setText(noTime);
    enableActions(false);
}

void ViewController::initMeters() {
    for (LevelMeter* const meter : {lvlLeft, lvlRight}) {
        meter->setMaxValue(meterTop);
    }
    clearMeters();
}

void ViewController::initGain() {
    sliderGainCell_ = std::make_shared<H8SliderCell>();
    sliderGainCell_->setIsVertical(true);
    sliderGain->setCell(sliderGainCell_);
    sliderGain->setMinValue(-mostGain);
    sliderGain->setMaxValue(mostGain);
    sliderGain->setIntegerValue(0);
    sliderGain->setEnabled(false);
    sliderGain->setValueForDoubleClick(0.0);
    sliderGain->setAction([this](Slider&) { sliderGainValueChanged(*sliderGain); });
    sliderGain->setParent(this);
    setOpacity(*lblGain, dimmed);
}

void ViewController::initAngle() {
    sliderStereo->setDelegate(this);
    enableStereo(false);
}

void ViewController::initRecorder() {
    for (ClickableArea* const cover : {listBatteryCover, listAutoPowOffCover}) {
        connect(cover, &QAbstractButton::clicked, this,
                [this] { openSoon(&ViewController::showNoDevice); });
    }
    connect(popupBattery, &QComboBox::activated, this, [this] { popupBattery_SelectionChanged(); });
    connect(popupAutoPow, &QComboBox::activated, this, [this] { popupAutoPow_SelectionChanged(); });
}

void ViewController::connectActions() {
    connect(btnGoUp, &QAbstractButton::clicked, this, [this] { btnGoUp_Click(); });
    connect(lblFolder, &QAbstractButton::clicked, this,
            [this] { openSoon(&ViewController::txtFolder_Click); });
    connect(btnOpenFolder, &QAbstractButton::clicked, this,
            [this] { openSoon(&ViewController::btnOpenFolder_Click); });
    connect(tableFile, &QTableView::doubleClicked, this, [this] {
        if (QGuiApplication::mouseButtons() == Qt::LeftButton) {
            table_cell_double_click();
        }
    });
    tableFile->setOpening([this] { openSoon(&ViewController::table_cell_double_click); });
    connect(btnExport, &QAbstractButton::clicked, this,
            [this] { openSoon(&ViewController::btnExport_Click); });
    connect(btnPlayPause, &QAbstractButton::clicked, this, [this] { btnPlay_Click(); });
    connect(btnVolume, &QAbstractButton::clicked, this, [this] { btnVolume_Click(); });
}

void ViewController::viewDidAppear() {
    const std::optional<std::string> last = Utility::getStringValue(lastFolderKey);
    urlOfFileList_ = last ? fs::path(*last) : desktopFolder();
    openFolder(urlOfFileList_);
    if (firstIntroDialog_) {
        firstIntroDialog_ = false;
        IntroductionVC dialog(&window_);
        dialog.setFromMenu(false);
        dialog.setVersionString(versionString_);
        present(dialog);
    }
}

bool ViewController::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::Show:
        if (watched == &window_ && !std::exchange(hasAppeared_, true)) {
            // Once the window is there: the introduction keeps the caller waiting.
            RunLoop::main().runLater([weak = std::weak_ptr(life_)] {
                if (const auto life = weak.lock()) {
                    (*life)->viewDidAppear();
                }
            });
        }
        break;
    case QEvent::ShortcutOverride:
        // The space bar counts when it is let go, and belongs to a button that has the focus.
        if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space) {
            event->accept();
            return true;
        }
        break;
    case QEvent::KeyPress:
        keyDown(*static_cast<QKeyEvent*>(event));
        break;
    case QEvent::KeyRelease:
        keyUp(*static_cast<QKeyEvent*>(event));
        break;
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        acceptDrop(*static_cast<QDropEvent*>(event));
        return true;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

// Keyboard

void ViewController::keyDown(const QKeyEvent& event) {
    if (event.key() == Qt::Key_Return && !event.isAutoRepeat()) {
        table_cell_double_click();
    }
}

void ViewController::keyUp(const QKeyEvent& event) {
    if (event.key() == Qt::Key_Space && !event.isAutoRepeat()) {
        btnPlay_Click();
    }
}

// File browser

void ViewController::openFolder(const fs::path& folder) {
    if (folder.empty()) {
        return;
    }
    Utility::store(lastFolderKey, folder.native());
    const fs::path named = withoutTrailingSlash(folder);
    nameFolder(displayName((named.has_filename() ? named.filename() : named).native()));
    if (!timerUpdateFolder_) {
        timerUpdateFolder_ = RunLoop::main().makeTimer();
        timerUpdateFolder_->startRepeating(listingInterval,
                                           [this] { lister_->start(urlOfFileList_); });
    }
    updateFileBrowser();
}

void ViewController::nameFolder(const QString& name) {
    lblFolder->setText(name);
    lblFolder->setAccessibleName("Folder " + name);
    lblFolder->setToolTip(asToolTip(name));
}

void ViewController::updateFileBrowser() {
    lister_->forget();
    showListing(listingOf(urlOfFileList_, icons_));
}

void ViewController::showListing(const std::shared_ptr<FolderHelper>& listing) {
    const fs::path& path = listing->folderPath();
    if (path != urlOfFileList_) {
        nameFolder("Desktop");
    }
    const WavItem* const selected = selectedItem();
    const std::optional<QString> selectedName =
        selected != nullptr ? std::optional(selected->fileName) : std::nullopt;

    const bool isSameFolder = folderHelper_ && folderHelper_->folderPath() == path;
    QScrollBar& scroller = *tableFile->verticalScrollBar();
    const int scrolledTo = isSameFolder ? scroller.value() : 0;
    folderHelper_ = listing;
    model_->reload(folderHelper_);
    scroller.setValue(scrolledTo);
    if (selectedName) {
        const auto& files = folderHelper_->files();
        const auto found = std::find_if(files.begin(), files.end(), [&](const WavItem& item) {
            return item.fileName == *selectedName;
        });
        if (found != files.end()) {
            tableFile->selectRow(static_cast<int>(found - files.begin()));
        }
    }
    if (isSameFolder) {
        // The selected row may be one that the user has scrolled away.
        scroller.setValue(scrolledTo);
    }
    autoResizeColumn();
}

void ViewController::autoResizeColumn() {
    const double widest = model_->widestName(QFontMetricsF(tableFile->font()));
    const int narrowest = static_cast<int>(std::ceil(widest)) + columnMargin;
    // Beside the name a cell has its icon, which must fit as well.
    const int least = widest > 0 ? std::max(narrowest, static_cast<int>(std::ceil(widest)) +
                                                           FileListCell::widthBesideName)
                                 : narrowest;
    QHeaderView& columns = *tableFile->horizontalHeader();
    if (columns.minimumSectionSize() == least && columns.sectionSize(0) > narrowest) {
        return; // told again, the list would be painted anew
    }
    columns.setMinimumSectionSize(least);
    columns.resizeSection(0, narrowest + 1);
}

const WavItem* ViewController::selectedItem() const {
    const QModelIndexList rows = tableFile->selectionModel()->selectedRows();
    if (rows.isEmpty() || !folderHelper_) {
        return nullptr;
    }
    const auto row = static_cast<std::size_t>(rows.front().row());
    return row < folderHelper_->files().size() ? &folderHelper_->files()[row] : nullptr;
}

void ViewController::table_cell_double_click() {
    const WavItem* const selected = selectedItem();
    if (selected == nullptr || !isThere(selected->fullPath)) {
        return;
    }
    const WavItem item = *selected; // the listing may be replaced meanwhile
    if (item.isFolder) {
        urlOfFileList_ = item.fullPath;
        openFolder(urlOfFileList_);
    } else {
        openWavFile(item);
    }
}

void ViewController::txtFolder_Click() {
    const fs::path begin = folderHelper_ ? folderHelper_->folderPath() : fs::path();
    const std::optional<fs::path> chosen = doors.chooseFolder(begin);
    if (chosen && !chosen->empty()) {
        urlOfFileList_ = *chosen;
        openFolder(urlOfFileList_);
    }
}

void ViewController::btnGoUp_Click() {
    if (!folderHelper_) {
        return;
    }
    const fs::path parent = withoutTrailingSlash(folderHelper_->folderPath()).parent_path();
    if (parent.empty() || !isThere(parent)) {
        return;
    }
    urlOfFileList_ = parent;
    openFolder(urlOfFileList_);
}

void ViewController::acceptDrop(QDropEvent& event) {
    const QList<QUrl> urls = event.mimeData()->urls();
    if (urls.size() != 1 || !urls.front().isLocalFile()) {
        return;
    }
    // Opening takes nothing away from whoever dragged it: they may delete what they have moved.
    if (!event.possibleActions().testFlag(Qt::CopyAction)) {
        return;
    }
    event.setDropAction(Qt::CopyAction);
    event.accept();
    if (event.type() == QEvent::Drop) {
        dropped_ = QFile::encodeName(urls.front().toLocalFile()).toStdString();
        openSoon(&ViewController::openDropped);
    }
}

void ViewController::openDropped() {
    std::error_code error;
    if (fs::is_directory(dropped_, error)) {
        urlOfFileList_ = dropped_;
        openFolder(urlOfFileList_);
    } else if (isThere(dropped_)) {
        const QString name = displayName(dropped_.filename().native());
        openWavFile({false, name, icons_.recording, dropped_});
    }
}

// Opening a recording

void ViewController::openWavFile(const WavItem& item) {
    stopCurrentTimeTimer();
    closeRecording();
    clearMeters();
    sliderTime->setIsSeeking(false);

    export_ = std::make_shared<Export>(item.fullPath);
    if (!export_->IsFileValid()) {
        enableRecording(false);
        setPlayImage(true);
        export_->cleanUp();
        export_ = nullptr;
        doors.showAlert("File not supported.");
        return;
    }
    wavPlayer_ = std::make_unique<WavePlayer>(item.fullPath);
    lblFileName->setText(item.fileName);
    lblTimeCurrent->setText(QString::fromStdString(wavPlayer_->currentTimeString()));
    lblTimeTotal->setText(QString::fromStdString(wavPlayer_->durationString()));
    enableRecording(true);
    sliderTime->setMinValue(0.0);
    sliderTime->setMaxValue(1.0);
    sliderTime->setDoubleValue(sliderTime->minValue());
    before_pause_.gain = static_cast<double>(sliderGain->integerValue());

    wavPlayer_->setVolume(sliderVolume->doubleValue());
    wavPlayer_->setGain(sliderGain->integerValue());
    wavPlayer_->setAngle(wholeAngle(sliderStereo->angle()));
    wavPlayer_->setReader(export_->reader());
    enableStereo(export_->reader()->isBoMSFormat());
    before_pause_.stereo = sliderStereo->angle();
    wavPlayer_->setDelegate(this);
    wavPlayer_->play();
}

void ViewController::closeRecording() {
    if (const auto player = std::move(wavPlayer_)) {
        player->cleanUp();
    }
    if (const auto recording = std::exchange(export_, nullptr)) {
        recording->cleanUp();
    }
}

void ViewController::enableActions(bool isOpen) {
    btnPlayPause->setEnabled(isOpen);
    playEntry_->setEnabled(isOpen);
    btnExport->setEnabled(isOpen);
    exportEntry_->setEnabled(isOpen);
}

void ViewController::enableRecording(bool isOpen) {
    enableActions(isOpen);
    sliderTime->setEnabled(isOpen);
    sliderGain->setEnabled(isOpen);
    sliderTimeCell_->setSliderEnabled(isOpen);
    sliderGainCell_->setSliderEnabled(isOpen);
    tickOfGain->setEnable(isOpen);
    setOpacity(*lblGain, isOpen ? 1.0 : dimmed);
    if (!isOpen) {
        lblFileName->setText({});
        lblTimeCurrent->setText(noTime);
        lblTimeTotal->setText(noTime);
        sliderTime->setIntegerValue(0);
        enableStereo(false);
    }
}

void ViewController::enableStereo(bool isMidSide) {
    sliderStereo->setEnable(isMidSide);
    imgDevice->setEnabled(isMidSide);
    setOpacity(*lblStereo, isMidSide ? 1.0 : dimmed);
    sliderStereo->update();
}

void ViewController::notify(const Notification& notification) {
    MIDICommon::runOnUIThread([this, name = notification.name] {
        if (name == reloadFileList) {
            updateFileBrowser();
        }
        if (name != playFinish || !wavPlayer_) {
            return;
        }
        wavPlayer_->playFinish();
        if (wavPlayer_->getIsDone() && wavPlayer_->getIsError()) {
            closeRecording();
            enableRecording(false);
        }
    });
}

} // namespace deckmate
