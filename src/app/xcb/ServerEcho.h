// When everything that the window system had to say up to now has been dealt with.
#pragma once

#include <cstdint>
#include <functional>

#include <QAbstractNativeEventFilter>
#include <QObject>

struct xcb_connection_t;

namespace deckmate {

/// Sends the X server a message to ourselves. What a server sends comes in order, so nothing that
/// it knew of before is still on its way when the message is back. On other window systems only
/// what has arrived by now counts. Thread: main.
class ServerEcho final : public QObject, public QAbstractNativeEventFilter {
public:
    /// `onHandled` is called from the event loop, once, after the events that were before it. It
    /// may delete this by deleteLater().
    explicit ServerEcho(std::function<void()> onHandled);
    ~ServerEcho() override;
    ServerEcho(const ServerEcho&) = delete;
    ServerEcho& operator=(const ServerEcho&) = delete;
    ServerEcho(ServerEcho&&) = delete;
    ServerEcho& operator=(ServerEcho&&) = delete;

    bool nativeEventFilter(const QByteArray& kind, void* message, qintptr* result) override;

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void send();

    std::function<void()> onHandled_;
    xcb_connection_t* server_ = nullptr;
    std::uint32_t window_ = 0; ///< never shown, receives the message
    int timer_ = 0;
    bool isRoundOver_ = false;
};

} // namespace deckmate
