// Streams to the sound server by way of cubeb.
#pragma once

#include "platform/OutputStream.h"

#include <memory>

namespace deckmate {

/// Connects to the server when the first stream is opened, and anew when opening one fails. Frames
/// reach the server about a tenth of a second before they are heard.
std::unique_ptr<OutputBackend> makeCubebBackend();

} // namespace deckmate
