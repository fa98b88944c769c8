// Helpers that many parts share.
#pragma once

#include <functional>

namespace deckmate {

class MIDICommon {
public:
    /// Calls `block` on another thread, at the same time as others, and returns at once. Thread:
    /// any.
    static void runBackground(std::function<void()> block);
    /// Calls `block` on the main thread and returns when it has run: at once if this is the main
    /// thread. Must not be used by a thread that the main thread waits for. Thread: any.
    static void runOnUIThread(std::function<void()> block);
};

} // namespace deckmate
