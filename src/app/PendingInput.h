// Input that came while the application could not listen.
#pragma once

namespace deckmate {

/// Drops what the user has done with pointer, wheel, keys and touch up to now and the application
/// hasn't yet dealt with: it was meant for what is about to leave the screen. Handles no event
/// itself: what waits is dropped as the event loop comes to it, everything else takes its course.
/// Thread: main.
void dropPendingInput();

} // namespace deckmate
