// Notices what a thread must not do while it makes sound.
#pragma once

namespace deckmate::test {

/// While one exists on a thread, every allocation, release, lock and wait of that thread counts as
/// a breach. The program that links this has its allocator and locks replaced by ones that look.
class RealtimeGuard {
public:
    RealtimeGuard();
    ~RealtimeGuard();
    RealtimeGuard(const RealtimeGuard&) = delete;
    RealtimeGuard& operator=(const RealtimeGuard&) = delete;
    RealtimeGuard(RealtimeGuard&&) = delete;
    RealtimeGuard& operator=(RealtimeGuard&&) = delete;

    /// The name of the first function that was called under a guard on any thread since the last
    /// question; empty for none.
    static const char* breach();
};

} // namespace deckmate::test
