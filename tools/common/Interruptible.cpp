#include "common/Interruptible.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <utility>

namespace deckmate::tools {

namespace {

std::atomic<Signal*> interruption = nullptr;
std::atomic<bool> hasHappened = false;

void handle(void (*handler)(int number)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

} // namespace

Interruptible::Interruptible(std::unique_ptr<Signal> signal) : signal_(std::move(signal)) {
    interruption = signal_.get();
    handle([](int /*number*/) {
        const int error = errno;
        hasHappened = true;
        if (Signal* const raised = interruption) {
            raised->raise();
        }
        errno = error;
    });
}

Interruptible::~Interruptible() {
    handle(SIG_DFL);
    interruption = nullptr;
}

bool Interruptible::isInterrupted() {
    return hasHappened;
}

} // namespace deckmate::tools
