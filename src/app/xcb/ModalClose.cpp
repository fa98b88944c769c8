#include "app/xcb/ModalClose.h"

#include "app/xcb/XcbServer.h"

#include <cstdlib>
#include <memory>
#include <string_view>

#include <QApplication>
#include <QWidget>

#include <xcb/xproto.h>

namespace deckmate {

namespace {

std::uint32_t atom(xcb_connection_t* server, std::string_view name) {
    struct Free {
        void operator()(void* reply) const { std::free(reply); }
    };
    const xcb_intern_atom_cookie_t asked =
        xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(
        xcb_intern_atom_reply(server, asked, nullptr));
    return reply ? reply->atom : std::uint32_t(XCB_ATOM_NONE);
}

} // namespace

ModalClose::ModalClose(QWidget& window) : window_(window) {
    closing_.setSingleShot(true);
    QObject::connect(&closing_, &QTimer::timeout, &closing_, [this] { closeAll(); });
    if (xcb_connection_t* const server = xcbServer()) {
        protocols_ = atom(server, "WM_PROTOCOLS");
        deleteWindow_ = atom(server, "WM_DELETE_WINDOW");
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
}

bool ModalClose::nativeEventFilter(const QByteArray& kind, void* message, qintptr* /*result*/) {
    const auto* const received = asClientMessage(kind, message);
    if (received == nullptr || received->type != protocols_ ||
        received->data.data32[0] != deleteWindow_ || received->window != window_.effectiveWinId() ||
        QApplication::activeModalWidget() == nullptr) {
        return false;
    }
    closing_.start(0);
    return true;
}

void ModalClose::closeAll() {
    while (QWidget* const dialog = QApplication::activeModalWidget()) {
        if (!dialog->close()) {
            return; // it has its reason
        }
    }
    window_.close();
}

} // namespace deckmate
