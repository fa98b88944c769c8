#include "app/xcb/XcbServer.h"

#include <QGuiApplication>

#include <xcb/xproto.h>

namespace deckmate {

xcb_connection_t* xcbServer() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

const xcb_client_message_event_t* asClientMessage(const QByteArray& kind, const void* message) {
    if (kind != "xcb_generic_event_t") {
        return nullptr;
    }
    constexpr std::uint8_t sentByAClient = 0x80;
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    const bool isOne = (event.response_type & ~sentByAClient) == XCB_CLIENT_MESSAGE;
    return isOne ? static_cast<const xcb_client_message_event_t*>(message) : nullptr;
}

} // namespace deckmate
