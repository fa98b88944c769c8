#include "platform/SoundSystem.h"

#include "platform/Installed.h"
#include "platform/RunLoop.h"
#include "platform/TaskThread.h"
#include "platform/cubeb/CubebBackend.h"

#include <utility>

namespace deckmate {

namespace {

constinit Installed<SoundSystem> installed("SoundSystem");

} // namespace

SoundSystem::SoundSystem() : SoundSystem(makeCubebBackend(), nullptr) {
    thread_ = std::make_unique<TaskThread>();
    tasks_ = [this](std::function<void()> task) { thread_->run(std::move(task)); };
}

SoundSystem::SoundSystem(std::unique_ptr<OutputBackend> backend, Tasks tasks)
    : readers_(std::make_shared<Readers>()), news_(RunLoop::main().makeSignal([readers = readers_] {
          std::erase_if(*readers, [](const auto& reader) { return reader.expired(); });
          const Readers present = *readers; // which they may change
          for (const std::weak_ptr<SoundNewsReader>& weak : present) {
              if (const auto reader = weak.lock()) {
                  reader->takeNews();
              }
          }
      })),
      backend_(std::move(backend)), tasks_(std::move(tasks)) {
    installed.install(*this);
}

SoundSystem::~SoundSystem() {
    // Destroying the library's context may hang as any other of its calls.
    if (thread_) {
        thread_->run([backend = std::move(backend_)]() mutable { backend.reset(); });
    }
    installed.remove();
}

SoundSystem& SoundSystem::current() {
    return installed.get();
}

void SoundSystem::addNewsReader(std::weak_ptr<SoundNewsReader> reader) {
    readers_->push_back(std::move(reader));
}

} // namespace deckmate
