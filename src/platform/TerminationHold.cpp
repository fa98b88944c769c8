#include "platform/TerminationHold.h"

#include <atomic>
#include <cstddef>

namespace deckmate {

namespace {

// By the signal's number, because a handler can reach nothing but what is static.
std::array<std::atomic<bool>, NSIG> hasCome = {};

static_assert(std::atomic<bool>::is_always_lock_free, "used in a signal's handler");

void note(int number) {
    hasCome[static_cast<std::size_t>(number)] = true;
}

} // namespace

TerminationHold::TerminationHold() {
    struct sigaction noting = {};
    noting.sa_handler = note;
    // Calls of other threads go on as if nothing had come.
    noting.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < held.size(); ++i) {
        sigaction(held[i], nullptr, &before_[i]);
        if (before_[i].sa_handler != SIG_IGN) {
            sigaction(held[i], &noting, nullptr);
        }
    }
}

TerminationHold::~TerminationHold() {
    for (std::size_t i = 0; i < held.size(); ++i) {
        sigaction(held[i], &before_[i], nullptr);
    }
    for (const int number : held) {
        if (hasCome[static_cast<std::size_t>(number)].exchange(false)) {
            std::raise(number);
        }
    }
}

} // namespace deckmate
