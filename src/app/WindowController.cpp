#include "app/WindowController.h"

#include "app/WindowPlaces.h"
#include "app/xcb/ModalClose.h"
#include "controls/Resources.h"

#include <QMainWindow>
#include <QPalette>
#include <QScreen>

namespace deckmate {

WindowController::WindowController() : window_(std::make_unique<QMainWindow>()) {
    window_->setObjectName("mainWindow");
    window_->setWindowTitle("ORLO H8 Deckmate");
    auto* const content = new QWidget(window_.get());
    content->setObjectName("content");
    window_->setCentralWidget(content);
    windowDidLoad();
    modalClose_ = std::make_unique<ModalClose>(*window_);
}

WindowController::~WindowController() = default;

void WindowController::windowDidLoad() {
    QPalette colours = window_->palette();
    colours.setColor(QPalette::Window, colour("AppBG"));
    window_->setPalette(colours);

    const QScreen* const screen = window_->screen();
    const QRect visibleFrame = screen != nullptr ? screen->availableGeometry() : QRect();
    window_->setGeometry(mainWindowPlace(visibleFrame));
}

void WindowController::showWindow() {
    window_->show();
}

} // namespace deckmate
