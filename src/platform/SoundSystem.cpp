#include "platform/SoundSystem.h"

#include "platform/TaskThread.h"
#include "platform/cubeb/CubebBackend.h"

#include <cassert>
#include <utility>

namespace deckmate {

namespace {

SoundSystem* installed = nullptr;

} // namespace

SoundSystem::SoundSystem()
    : backend_(makeCubebBackend()), thread_(std::make_unique<TaskThread>()),
      tasks_([this](std::function<void()> task) { thread_->run(std::move(task)); }) {
    assert(installed == nullptr);
    installed = this;
}

SoundSystem::SoundSystem(std::unique_ptr<OutputBackend> backend, Tasks tasks)
    : backend_(std::move(backend)), tasks_(std::move(tasks)) {
    assert(installed == nullptr);
    installed = this;
}

SoundSystem::~SoundSystem() {
    // Destroying the library's context may hang as any other of its calls.
    if (thread_) {
        thread_->run([backend = std::move(backend_)]() mutable { backend.reset(); });
    }
    installed = nullptr;
}

SoundSystem& SoundSystem::current() {
    assert(installed != nullptr);
    return *installed;
}

} // namespace deckmate
