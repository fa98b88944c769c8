// h8-screenshots FOLDER: draws each window of the application into a PNG file of its name.
#include "StyleBoard.h"

#include "app/AboutVC.h"
#include "app/IntroductionVC.h"
#include "app/Look.h"
#include "app/NodeviceVC.h"

#include <cstdlib>
#include <iostream>

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QWidget>

namespace {

using namespace deckmate;

bool save(QWidget& window, const QDir& folder, const char* name) {
    window.show();
    QCoreApplication::processEvents();
    const QString path = folder.filePath(QString(name) + ".png");
    if (!window.grab().save(path)) {
        std::cerr << "h8-screenshots: can't write " << path.toStdString() << '\n';
        return false;
    }
    return true;
}

bool saveAll(const QDir& folder) {
    AboutVC about;
    about.setVersionString("1.0.12");
    IntroductionVC introduction;
    IntroductionVC introductionFromMenu;
    introductionFromMenu.setFromMenu(true);
    NodeviceVC noDevice;
    const auto style = makeStyleBoard();
    return save(about, folder, "about") && save(introduction, folder, "introduction") &&
           save(introductionFromMenu, folder, "introduction-from-menu") &&
           save(noDevice, folder, "no-device") && save(*style, folder, "style");
}

} // namespace

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    if (count != 2) {
        std::cerr << "usage: h8-screenshots FOLDER\n";
        return EXIT_FAILURE;
    }
    applyLook(application);
    return saveAll(QDir(arguments[1])) ? EXIT_SUCCESS : EXIT_FAILURE;
}
