// The main window's controller: what the user does, what plays, and what the recorder tells.
#pragma once

#include "app/FolderHelper.h"
#include "app/HeldKey.h"
#include "app/MainWindowView.h"
#include "app/ToolkitDoors.h"
#include "app/TransportRules.h"
#include "controls/AngleViewer.h"
#include "controls/GainTickTitle.h"
#include "controls/H8GainSlider.h"
#include "device/MIDIManager.h"
#include "device/ORLODeviceInfo.h"
#include "export/Export.h"
#include "platform/NotificationCenter.h"
#include "platform/RunLoop.h"
#include "playback/WavePlayer.h"

#include <filesystem>
#include <memory>

#include <QObject>
#include <QString>

class QAction;
class QDropEvent;
class QKeyEvent;
class QMainWindow;

namespace deckmate {

class FileListModel;
class FolderLister;
class H8SliderCell;

/// One class in three sources, in the order of its three sections. Everything runs on the main
/// thread; what may be called from elsewhere hops there first.
///
///     ViewController controller(window);   // builds the window's content
///     window.show();                       // lists the last folder
///
/// Needs RunLoop, UserDefaults, SoundSystem and Midi, which must outlive it. Thread: main.
class ViewController final : public QObject,
                             private MainWindowView,
                             public WavePlayerDelegate,
                             public AngleViewerDelegate,
                             public GainTickDelegate,
                             public H8GainSliderParent,
                             public MIDIManagerCB {
public:
    explicit ViewController(QMainWindow& window);
    ~ViewController() override;
    ViewController(const ViewController&) = delete;
    ViewController& operator=(const ViewController&) = delete;
    ViewController(ViewController&&) = delete;
    ViewController& operator=(ViewController&&) = delete;

    ToolkitDoors doors;

    // ==== Start-up, file browser, opening a recording: ViewController.cpp

    void viewDidLoad();
    void viewDidAppear();
    void initUI();
    void initMIDI();
    /// Events of the event bus. Thread: any.
    void notify(const Notification& notification);

    void table_cell_double_click();
    void txtFolder_Click();
    void btnOpenFolder_Click() { txtFolder_Click(); }
    void btnGoUp_Click();
    /// Remembers the folder for the next start, and lists it every five seconds from now on.
    void openFolder(const std::filesystem::path& folder);
    /// Lists the folder anew, at once, and keeps the selection by name.
    void updateFileBrowser();
    void autoResizeColumn();
    /// Closes the open recording, and opens and plays this one.
    void openWavFile(const WavItem& item);
    void keyDown(const QKeyEvent& event);
    void keyUp(const QKeyEvent& event);

    // ==== Transport, volume, gain, angle, meters: ViewControllerTransport.cpp

    void btnPlay_Click();
    void btnVolume_Click();
    void sliderVolValueChanged(Slider& slider);
    void sliderTimeValueChanged(Slider& slider);
    void sliderGainValueChanged(H8GainSlider& slider) override;
    void btnExport_Click();
    void startCurrentTimeTimer();
    void stopCurrentTimeTimer();
    void refreshUIWhenPlay();
    void sliderTimerUpdate();
    void updateLevelMeter(double interval);
    void updatePlayStateUI();
    void updateVolumeIcon(double volume);
    void WavePlayerStateChanged() override;
    void WavePlayerLevelChanged(double left, double right) override;
    void angleViewer(AngleViewer& dial, double angleChanged) override;
    void GainTickTitle(class GainTickTitle& strip, const QString& clickAt) override;

    // ==== Recorder and dialogs: ViewControllerDevice.cpp

    void MIDIManagerFound() override;
    void MIDIManagerConnected() override;
    void MIDIManagerDisconnected() override;
    void MIDIManagerReceivedData(const MIDIEventPacket& packet) override;
    void MIDIManagerReceivedData_iOS13(const MIDIPacket& packet, bool isLast) override;
    void MIDIManagerUpdateInfo(bool isConnected);
    void popupBattery_SelectionChanged();
    void popupAutoPow_SelectionChanged();
    void showNoDevice();
    void showHelp() const;
    void btnAbout_Click();
    void showIntroduction();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // ==== Start-up, file browser, opening a recording

    void buildMenus();
    void connectActions();
    // The steps of initUI(), in their order.
    void initPanels();
    void initBrowser();
    void initScales();
    void initVolume();
    void initTime();
    void initRecording();
    void initMeters();
    void initGain();
    void initAngle();
    void initRecorder();

    const WavItem* selectedItem() const;
    void nameFolder(const QString& name);
    /// The last step of every way in which a recording is closed for good.
    void closeRecording();
    void showListing(const std::shared_ptr<FolderHelper>& listing);
    /// The controls that only a recording needs, and the captions beside them.
    void enableRecording(bool isOpen);
    /// Those of them that play and export, on the window and in its menus.
    void enableActions(bool isOpen);
    /// Those of mid/side recordings.
    void enableStereo(bool isMidSide);
    void setPlayImage(bool showsPlay);
    void acceptDrop(QDropEvent& event);
    void openDropped();

    QMainWindow& window_;
    std::unique_ptr<FileListModel> model_;
    FileIcons icons_;
    std::shared_ptr<FolderHelper> folderHelper_;
    std::unique_ptr<FolderLister> lister_;
    std::shared_ptr<Export> export_;
    std::unique_ptr<Timer> timerUpdateFolder_;
    std::filesystem::path urlOfFileList_;
    QString versionString_;
    QAction* exportEntry_ = nullptr; ///< of the menus, which own them
    QAction* playEntry_ = nullptr;
    bool firstIntroDialog_ = false;
    bool hasAppeared_ = false;
    std::filesystem::path dropped_; ///< the newest folder or recording that was dropped here
    HeldKey space_{Qt::Key_Space};

    // ==== Transport, volume, gain, angle, meters

    std::unique_ptr<WavePlayer> wavPlayer_;
    std::unique_ptr<Timer> timerUpdateCurrentTime_;
    std::unique_ptr<Timer> timerLevel_;
    std::shared_ptr<H8SliderCell> sliderVolumeCell_;
    std::shared_ptr<H8SliderCell> sliderTimeCell_;
    std::shared_ptr<H8SliderCell> sliderGainCell_;
    double lastVolume_ = 0;
    double heardVolume_ = 0; ///< the slider's last one above 0
    bool isMuteVolume_ = false;
    std::string_view speakerImage_; ///< the one that is shown; a literal
    bool isSeeking_ = false;
    PlaySettings settings() const;
    void clearMeters();

    PlaySettings before_pause_; ///< stereo_before_pause and gain_before_pause

    // ==== Recorder and dialogs

    void present(DialogWindow& dialog);
    /// Calls it once the event at hand is answered. Who presses a control over the accessibility
    /// bus, or drops a file, waits for that answer, and a dialog would keep them waiting for the
    /// user.
    void openSoon(void (ViewController::*open)());

    bool isOpening_ = false;         ///< a second click doesn't open a second dialog
    ORLODeviceInfo* info_ = nullptr; ///< the sequences', once there was a recorder
    /// Gone when this is gone, for what is posted or completes later.
    std::shared_ptr<ViewController*> life_ = std::make_shared<ViewController*>(this);
};

} // namespace deckmate
