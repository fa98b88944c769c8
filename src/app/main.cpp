#include "app/AppDelegate.h"
#include "app/Look.h"
#include "app/ViewController.h"
#include "app/WindowController.h"

#include "device/MIDIManager.h"
#include "device/MIDISequenceManager.h"
#include "platform/SoundSystem.h"
#include "platform/StandardStreams.h"
#include "platform/alsa/AlsaMidi.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/QtUserDefaults.h"

#include <cstdlib>
#include <memory>

#include <QApplication>

#include <unistd.h>

namespace {

using namespace deckmate;

/// While the application connects to the display: one line that helps, in place of what is said to
/// its developer, and an exit in place of a crash.
void reportStart(QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*text*/) {
    if (type == QtFatalMsg) {
        writeToStream(STDERR_FILENO, "orlo-h8-deckmate: no display to open a window on\n");
        std::_Exit(EXIT_FAILURE);
    }
}

int runMainWindow() {
    WindowController windowController;
    ViewController controller(windowController.window());
    windowController.showWindow();
    AppDelegate::applicationDidFinishLaunching();
    const int status = QApplication::exec();
    AppDelegate::applicationWillTerminate();
    return status;
}

} // namespace

int main(int count, char** arguments) {
    QtMessageHandler const ordinary = qInstallMessageHandler(reportStart);
    QApplication application(count, arguments);
    qInstallMessageHandler(ordinary);
    QApplication::setApplicationName("orlo-h8-deckmate");
    QApplication::setDesktopFileName("orlo-h8-deckmate");
    QApplication::setQuitOnLastWindowClosed(
        AppDelegate::applicationShouldTerminateAfterLastWindowClosed());

    const QtRunLoop loop;
    const QtUserDefaults defaults;
    const SoundSystem sound;
    const std::unique_ptr<Midi> midi = makeAlsaMidi();
    applyLook(application);
    const int status = runMainWindow();
    MIDIManager::s_midi().reset();
    MIDISequenceManager::s_seq_controller().reset();
    return status;
}
