#include "app/AboutVC.h"
#include "app/ClickableArea.h"
#include "app/DevicePanelText.h"
#include "app/IntroductionVC.h"
#include "app/NodeviceVC.h"
#include "app/StatusDot.h"
#include "app/ViewController.h"
#include "device/MIDICommon.h"
#include "device/MIDISequenceManager.h"

#include <utility>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMainWindow>

namespace deckmate {

// The link

void ViewController::MIDIManagerFound() {
    MIDIManager::get().connect();
}

void ViewController::MIDIManagerConnected() {
    MIDISequenceManager::get().startConnectSeq([weak = std::weak_ptr(life_)] {
        MIDICommon::runOnUIThread([&weak] {
            if (const auto life = weak.lock()) {
                (*life)->MIDIManagerUpdateInfo(true);
            }
        });
    });
}

void ViewController::MIDIManagerDisconnected() {
    MIDIManagerUpdateInfo(false);
}

void ViewController::MIDIManagerReceivedData(const MIDIEventPacket& packet) {
    MIDISequenceManager::get().receivedMidi(packet);
}

void ViewController::MIDIManagerReceivedData_iOS13(const MIDIPacket& packet, bool isLast) {
    MIDISequenceManager::get().receivedMidi_iOS13(packet, isLast);
}

// The panel

void ViewController::MIDIManagerUpdateInfo(bool isConnected) {
    const auto setText = [](QLabel& label, const std::string& text) {
        label.setText(QString::fromStdString(text));
    };
    statusDot->setEnabled(isConnected);
    lblConnect->setText(isConnected ? "Connected" : "Disconnected");
    for (QComboBox* const popup : {popupBattery, popupAutoPow}) {
        popup->setEnabled(isConnected);
        if (!isConnected) {
            popup->hidePopup();
            popup->setCurrentIndex(-1);
        }
    }
    listBatteryCover->setVisible(!isConnected);
    listAutoPowOffCover->setVisible(!isConnected);
    if (!isConnected) {
        lblVersion->setText({});
        lblUsed->setText(noCardUsed);
        lblRemain->setText(noTime);
        return;
    }
    info_ = &MIDISequenceManager::getDeviceInfo();
    setText(*lblVersion, versionText(*info_));
    setText(*lblUsed, usedText(*info_));
    setText(*lblRemain, remainText(*info_));
    popupBattery->setCurrentIndex(info_->batteryType);
    popupAutoPow->setCurrentIndex(autoPowOffIndex(info_->autoPowOffType));
}

void ViewController::popupBattery_SelectionChanged() {
    const auto type = static_cast<std::uint8_t>(popupBattery->currentIndex());
    if (info_ != nullptr && type != info_->batteryType) {
        info_->batteryType = type;
        MIDISequenceManager::get().startChangeBatteryTypeSeq(type, [] {});
    }
}

void ViewController::popupAutoPow_SelectionChanged() {
    const std::uint8_t code = autoPowOffCode(popupAutoPow->currentIndex());
    if (info_ != nullptr && code != info_->autoPowOffType) {
        info_->autoPowOffType = code;
        MIDISequenceManager::get().startChangeAutoPowOffSeq(code, [] {});
    }
}

// Dialogs

void ViewController::present(DialogWindow& dialog) {
    dialog.setParentFrame(window_.geometry());
    doors.presentModally(dialog);
}

void ViewController::openSoon(void (ViewController::*open)()) {
    if (std::exchange(isOpening_, true)) {
        return;
    }
    RunLoop::main().runLater([weak = std::weak_ptr(life_), open] {
        const auto life = weak.lock();
        if (life == nullptr) {
            return;
        }
        ViewController& self = **life;
        self.isOpening_ = false;
        if (QApplication::activeModalWidget() == nullptr) {
            (self.*open)();
        }
    });
}

void ViewController::showNoDevice() {
    NodeviceVC dialog(&window_);
    present(dialog);
}

void ViewController::showHelp() const {
    doors.openInBrowser(DECKMATE_HELP_ADDRESS);
}

void ViewController::btnAbout_Click() {
    AboutVC dialog(&window_);
    dialog.setVersionString(versionString_);
    present(dialog);
}

void ViewController::showIntroduction() {
    IntroductionVC dialog(&window_);
    dialog.setFromMenu(true);
    present(dialog);
}

} // namespace deckmate
