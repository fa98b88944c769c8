// The way to the computer's sound output, for all queues of the program.
#pragma once

#include "platform/OutputStream.h"

#include <functional>
#include <memory>

namespace deckmate {

class TaskThread;

/// Exactly one exists while queues are used; whoever made it outlives them.
///
///     SoundSystem sound;                       // cubeb, on a thread of its own
///     SoundSystem sound(myBackend, myTasks);   // for tests
///
/// The sound library's calls block while a server hangs, so they are tasks that run in order on one
/// thread, and nobody waits for them.
class SoundSystem {
public:
    /// Runs the tasks it is given in their order, now or later, on any one thread at a time.
    using Tasks = std::function<void(std::function<void()> task)>;

    SoundSystem();
    SoundSystem(std::unique_ptr<OutputBackend> backend, Tasks tasks);
    ~SoundSystem();
    SoundSystem(const SoundSystem&) = delete;
    SoundSystem& operator=(const SoundSystem&) = delete;
    SoundSystem(SoundSystem&&) = delete;
    SoundSystem& operator=(SoundSystem&&) = delete;

    /// The one that exists. Thread: main.
    static SoundSystem& current();

    /// Thread: main.
    void run(std::function<void()> task) { tasks_(std::move(task)); }
    /// To be used inside tasks. Shared, since a task that hangs may outlive the system.
    const std::shared_ptr<OutputBackend>& backend() const { return backend_; }

private:
    std::shared_ptr<OutputBackend> backend_;
    std::unique_ptr<TaskThread> thread_;
    Tasks tasks_;
};

} // namespace deckmate
