#include "desktop/app/ExportSheet.h"

#include "desktop/app/LookEnvironment.h"
#include "services/EB.h"

#include <algorithm>
#include <chrono>

#include <QApplication>
#include <QRadioButton>

namespace deckmate::test {

namespace {

/// Lasts as long as the program, because nobody can unsubscribe.
class Listener {
public:
    void notify(const Notification& /*event*/) {
        ++events.count;
        events.wasSheetUp = false;
        for (const QWidget* window : QApplication::topLevelWidgets()) {
            events.wasSheetUp =
                events.wasSheetUp || (window->objectName() == "ExportVC" && window->isVisible());
        }
    }

    ReloadEvents events;
};

Listener listener;

} // namespace

void ExportSheet::SetUpTestSuite() {
    if (EB::gl_event == nullptr) {
        EB::initData();
        EB::SUBSCRIBE(&listener, &Listener::notify, "EB_RELOAD_FILE_LIST");
    }
}

ExportSheet::ExportSheet(const std::filesystem::path& name)
    : source(folder / name), eventsBefore_(listener.events.count) {
    window.setWindowTitle("ORLO H8 Deckmate");
    window.setGeometry(200, 150, 1050, 668);
    sheet = std::make_unique<ExportVC>(&window);
    open(quietSamples());
}

void ExportSheet::open(Bytes samples) {
    original = recording(samples, {}, {.history = plainHistory});
    folder.file(source.filename(), original);
    recording_ = std::make_shared<Export>(source);
    sheet->setExporter(recording_);
}

void ExportSheet::show() {
    desktop.show(window);
    sheet->setParentFrame(window.geometry());
    desktop.show(*sheet);
}

ReloadEvents& ExportSheet::events() {
    return listener.events;
}

void ExportSheet::noteAlerts() {
    sheet->showAlert = [this](QWidget* /*parent*/, const QString& text) {
        alerts.push_back(text.toStdString());
    };
}

void ExportSheet::clickOn(QAbstractButton* button) const {
    desktop.click(*button, {12, button->height() / 2.0});
}

QAbstractButton* ExportSheet::buttonOf(QWidget& window, const QString& text) {
    for (QAbstractButton* const button : window.findChildren<QAbstractButton*>()) {
        if (button->text().remove('&') == text) {
            return button;
        }
    }
    return nullptr;
}

void ExportSheet::tapIn(QWidget& dialog, const char* key) {
    const auto hasKeyboard = [&] { return dialog.isActiveWindow(); };
    // A window manager under load may forget whom the keyboard belongs to when a window goes as
    // quickly as it came.
    if (!Desktop::waitFor(hasKeyboard, std::chrono::seconds(2))) {
        dialog.activateWindow();
    }
    ASSERT_TRUE(Desktop::waitFor(hasKeyboard));
    Desktop::get().tap(key);
}

void ExportSheet::answer(QWidget& dialog, const QString& name) {
    // Not by keys, which have no letters for most of the names here.
    nameOf(dialog)->setText(name);
    tapIn(dialog, "Return");
}

Bytes ExportSheet::samplesOf(const std::filesystem::path& path) const {
    const Bytes bytes = contentsOf(path);
    return bytes.size() < headSize ? Bytes() : Bytes(bytes.begin() + headSize, bytes.end());
}

unsigned ExportSheet::bitsOf(const std::filesystem::path& path) {
    const Bytes bytes = contentsOf(path);
    constexpr std::size_t place = headSize - 8 - 18 + 14; // before the `data` header, in `fmt `
    return bytes.size() < headSize ? 0U : bytes[place] + 256U * bytes[place + 1];
}

std::vector<std::string> ExportSheet::choicesLogged() const {
    std::vector<std::string> lines = log.lines();
    std::erase(lines, ">>>>>EVENT BUS EB_RELOAD_FILE_LIST<<<<<");
    return lines;
}

} // namespace deckmate::test
