// Ending a program that runs until it is told to end.
#pragma once

#include "platform/RunLoop.h"

#include <memory>

namespace deckmate::tools {

/// While one exists, SIGINT and SIGTERM raise a signal of the main loop instead of ending the
/// program, and calls that wait, like a write to a full pipe, are interrupted. One at a time.
class Interruptible {
public:
    explicit Interruptible(std::unique_ptr<Signal> signal);
    ~Interruptible();
    Interruptible(const Interruptible&) = delete;
    Interruptible& operator=(const Interruptible&) = delete;
    Interruptible(Interruptible&&) = delete;
    Interruptible& operator=(Interruptible&&) = delete;

    /// Whether it happened.
    static bool isInterrupted();

private:
    std::unique_ptr<Signal> signal_;
};

} // namespace deckmate::tools
