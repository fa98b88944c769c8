// Tells how far the application has got with what the X server sends.
#pragma once

#include <cstdint>

#include <QAbstractNativeEventFilter>

#include <xcb/xproto.h>

namespace deckmate::test {

/// Notes the newest ping that the application has got from the server; to be installed in it.
class PingFilter final : public QAbstractNativeEventFilter {
public:
    explicit PingFilter(std::uint32_t type) : type_(type) {}

    bool nativeEventFilter(const QByteArray& /*kind*/, void* message,
                           qintptr* /*result*/) override {
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        if ((event->response_type & 0x7F) != XCB_CLIENT_MESSAGE) {
            return false;
        }
        const auto* received = static_cast<const xcb_client_message_event_t*>(message);
        if (received->type != type_) {
            return false;
        }
        newest = received->data.data32[0];
        return true;
    }

    std::uint32_t newest = 0;

private:
    std::uint32_t type_;
};

} // namespace deckmate::test
