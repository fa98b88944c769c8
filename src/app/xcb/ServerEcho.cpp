#include "app/xcb/ServerEcho.h"

#include "app/xcb/XcbServer.h"

#include <utility>

#include <QCoreApplication>

#include <xcb/xproto.h>

namespace deckmate {

ServerEcho::ServerEcho(std::function<void()> onHandled)
    : onHandled_(std::move(onHandled)), server_(xcbServer()) {
    if (server_ != nullptr) {
        send();
    } else {
        timer_ = startTimer(0);
    }
}

ServerEcho::~ServerEcho() {
    if (server_ != nullptr) {
        xcb_destroy_window(server_, window_);
    }
}

void ServerEcho::send() {
    QCoreApplication::instance()->installNativeEventFilter(this);
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(server_)).data;
    window_ = xcb_generate_id(server_);
    xcb_create_window(server_, 0, window_, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      screen->root_visual, 0, nullptr);
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window_;
    message.type = XCB_ATOM_NOTICE;
    // Without an event mask it goes to whoever made the window.
    xcb_send_event(server_, 0, window_, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(server_);
}

bool ServerEcho::nativeEventFilter(const QByteArray& kind, void* message, qintptr* /*result*/) {
    const auto* const received = asClientMessage(kind, message);
    if (received == nullptr || received->window != window_) {
        return false;
    }
    timer_ = startTimer(0);
    return true;
}

// The first time may come before the toolkit's queue in the same round of the event loop; by the
// second time, that round is over.
void ServerEcho::timerEvent(QTimerEvent* /*event*/) {
    if (!std::exchange(isRoundOver_, true)) {
        return;
    }
    killTimer(timer_);
    if (onHandled_) {
        std::exchange(onHandled_, nullptr)();
    }
}

} // namespace deckmate
