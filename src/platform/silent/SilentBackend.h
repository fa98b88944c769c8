// Streams that nobody hears, for machines without a sound server.
#pragma once

#include "platform/OutputStream.h"

#include <memory>

namespace deckmate {

/// Its streams take frames at the speed of the monotonic clock, in steps of about 10 ms. Null when
/// the system has no thread left.
std::unique_ptr<OutputBackend> makeSilentBackend();

} // namespace deckmate
