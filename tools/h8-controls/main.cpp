// h8-controls: shows every control of the main window in every state, on the screen or as a
// picture.
#include "Gallery.h"
#include "common/CommandLine.h"
#include "common/Process.h"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include <QApplication>
#include <QFont>
#include <QPixmap>

namespace {

using namespace deckmate::tools;

int showControls(int argc, char** argv) {
    std::string picture;
    std::string scale;
    CommandLine line("h8-controls", "Shows every control of the main window in every state.");
    line.footer("Examples:\n"
                "  h8-controls\n"
                "  h8-controls --png controls.png --scale 2");
    line.add_option("--png", picture,
                    "Write a picture instead of opening a window; needs no display")
        ->type_name("FILE");
    line.add_option_function<std::string>(
            "--scale",
            [&](const std::string& text) {
                numberWithin("--scale", text, 1, 8);
                scale = text;
            },
            "Pixels a point, 1 to 8 (default 1)")
        ->type_name("N");
    if (const std::optional<int> status = line.run(argc, argv)) {
        return *status;
    }
    picture = CommandLine::asGiven(picture);

    if (!scale.empty()) {
        setenv("QT_SCALE_FACTOR", scale.c_str(), 1);
    }
    if (!picture.empty()) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    int count = 1;
    QApplication application(count, argv);
    QFont font;
    font.setFamilies({"Inter", "Noto Sans", "DejaVu Sans"});
    font.setPixelSize(13);
    QApplication::setFont(font);
    Gallery gallery;
    if (picture.empty()) {
        gallery.show();
        return QApplication::exec();
    }
    gallery.showFocus();
    if (!gallery.grab().save(QString::fromStdString(picture), "PNG")) {
        std::fprintf(stderr, "%s: Fail to save.\n", picture.c_str());
        return someFailed;
    }
    return allDone;
}

} // namespace

int main(int argc, char** argv) {
    return runProgram("h8-controls", argc, argv, showControls);
}
