// The way to the computer's sound output, for all queues of the program.
#pragma once

#include "platform/OutputStream.h"

#include <functional>
#include <memory>
#include <vector>

namespace deckmate {

class Signal;
class TaskThread;

/// Somebody for whom the sound library's threads may have news.
class SoundNewsReader {
public:
    SoundNewsReader() = default;
    virtual ~SoundNewsReader() = default;
    SoundNewsReader(const SoundNewsReader&) = delete;
    SoundNewsReader& operator=(const SoundNewsReader&) = delete;
    SoundNewsReader(SoundNewsReader&&) = delete;
    SoundNewsReader& operator=(SoundNewsReader&&) = delete;

    /// May be called without there being any. Thread: main.
    virtual void takeNews() = 0;
};

/// Exactly one exists while queues are used: made after the RunLoop and destroyed before it, when
/// no queue is left.
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
    /// Raised by the sound library's threads; shared, since these may outlive the system where a
    /// server hangs. One for all queues, so that no number of them takes descriptors.
    const std::shared_ptr<Signal>& news() const { return news_; }
    /// Has the reader told of all news, for as long as it exists. Thread: main.
    void addNewsReader(std::weak_ptr<SoundNewsReader> reader);
    /// To be used inside tasks. Shared, since a task that hangs may outlive the system.
    const std::shared_ptr<OutputBackend>& backend() const { return backend_; }

private:
    using Readers = std::vector<std::weak_ptr<SoundNewsReader>>;

    std::shared_ptr<Readers> readers_;
    std::shared_ptr<Signal> news_;
    std::shared_ptr<OutputBackend> backend_;
    std::unique_ptr<TaskThread> thread_;
    Tasks tasks_;
};

} // namespace deckmate
