#include "platform/QueueStream.h"

#include "platform/RunLoop.h"
#include "platform/SoundSystem.h"
#include "platform/silent/SilentBackend.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace deckmate {

/// What the tasks work on. All but `position` runs in tasks.
struct QueueStream::Shared {
    Shared(const OutputFormat& outputFormat, std::shared_ptr<BufferFeed> bufferFeed,
           std::shared_ptr<OutputBackend> outputBackend)
        : format(outputFormat), feed(std::move(bufferFeed)), backend(std::move(outputBackend)) {}

    void open() {
        if (!stream && !isUnwanted) {
            publish(backend->open(format, *feed));
        }
    }

    void start() {
        open();
        if (isUnwanted) {
            return;
        }
        if (!stream) {
            publish(makeSilentBackend()->open(format, *feed));
        }
        if (!stream || !stream->start()) {
            feed->failed();
        }
    }

    void stop() {
        if (stream && !isUnwanted) {
            stream->stop();
        }
    }

    void close() {
        std::unique_ptr<OutputStream> closing;
        {
            const std::lock_guard guard(lock);
            closing = std::move(stream);
        }
    }

    std::optional<std::uint64_t> position() {
        // Somebody else has it only for a moment, while it comes or goes.
        const std::unique_lock guard(lock, std::try_to_lock);
        return guard && stream ? stream->position() : std::nullopt;
    }

    const OutputFormat format;
    std::shared_ptr<BufferFeed> feed;
    const std::shared_ptr<OutputBackend> backend;
    /// Nothing is worth doing any more but closing: where the server is slow, streams that a
    /// moving slider has left behind don't hold up the last one.
    std::atomic<bool> isUnwanted = false;

private:
    void publish(std::unique_ptr<OutputStream> opened) {
        const std::lock_guard guard(lock);
        stream = std::move(opened);
    }

    std::mutex lock; ///< for `stream` as a pointer; only tasks change it
    std::unique_ptr<OutputStream> stream;
};

QueueStream::QueueStream(const OutputFormat& format, std::shared_ptr<BufferFeed> feed)
    : shared_(std::make_shared<Shared>(format, std::move(feed), SoundSystem::current().backend())) {
}

QueueStream::~QueueStream() {
    shared_->isUnwanted = true;
    // A task of its own lets go of the feed: one that hangs in the library may outlive the main
    // loop.
    SoundSystem::current().run([shared = shared_] { shared->close(); });
    SoundSystem::current().run([shared = std::move(shared_)] {
        RunLoop::main().runLater([feed = std::move(shared->feed)]() mutable { feed.reset(); });
    });
}

void QueueStream::prepare() {
    SoundSystem::current().run([shared = shared_] { shared->open(); });
}

void QueueStream::start() {
    SoundSystem::current().run([shared = shared_] { shared->start(); });
}

void QueueStream::stop() {
    SoundSystem::current().run([shared = shared_] { shared->stop(); });
}

std::optional<std::uint64_t> QueueStream::position() const {
    return shared_->position();
}

} // namespace deckmate
