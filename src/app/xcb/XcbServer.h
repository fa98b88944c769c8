// The application's connection to the X server, for what Qt has no words for.
#pragma once

#include <QByteArray>

struct xcb_client_message_event_t;
struct xcb_connection_t;

namespace deckmate {

/// Qt's own connection; null on other window systems. Thread: main.
xcb_connection_t* xcbServer();

/// What a native event filter was handed, if it is a client message of the X server, else null.
const xcb_client_message_event_t* asClientMessage(const QByteArray& kind, const void* message);

} // namespace deckmate
