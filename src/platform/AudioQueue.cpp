#include "platform/AudioQueue.h"

#include "platform/BufferFeed.h"
#include "platform/PcmFloats.h"
#include "platform/QueueStream.h"
#include "platform/RunLoop.h"
#include "platform/SoundSystem.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace deckmate {

namespace {

constexpr std::chrono::seconds lingeringTime{3};

OutputFormat outputFormatOf(const StreamDescription& format) {
    constexpr double most = std::numeric_limits<std::uint32_t>::max();
    return {static_cast<std::uint32_t>(std::lround(std::min(format.sampleRate, most))),
            format.channelsPerFrame};
}

} // namespace

/// Shared with what was posted to the main loop, so that it finds out whether the queue still is.
struct AudioQueue::State final : SoundNewsReader, std::enable_shared_from_this<State> {
    State(const StreamDescription& streamFormat, BufferNeeded needed)
        : format(streamFormat), bufferNeeded(std::move(needed)) {}

    /// A buffer with all that it points to.
    struct Buffer : AudioQueueBuffer {
        std::vector<std::uint8_t> storage;
        std::vector<PacketDescription> descriptions;
        bool isQueued = false;

        std::vector<std::uint8_t> renewStorage() {
            std::vector<std::uint8_t> old(capacity);
            old.swap(storage);
            bytes = storage.data();
            isQueued = false;
            return old;
        }
    };

    /// A run needs a feed and a stream of its own, since a drained or broken one can't go on.
    void beginRun() {
        if (feed) {
            return;
        }
        std::uint32_t largest = 0;
        for (const std::unique_ptr<Buffer>& buffer : buffers) {
            largest = std::max(largest, buffer->capacity);
        }
        feed = std::make_shared<BufferFeed>(format, largest, SoundSystem::current().news());
        feed->setVolume(volume);
        ++runs;
        openStream();
    }

    bool isPlayable() const { return canBecomeFloats(format) && format.sampleRate >= 1; }

    void openStream() {
        if (isPlayable()) {
            stream = std::make_unique<QueueStream>(outputFormatOf(format), feed);
            stream->prepare();
        }
    }

    void start() {
        beginRun();
        if (isRunning && !isPaused) {
            return;
        }
        const bool isNew = !isRunning;
        isRunning = true;
        isPaused = false;
        if (isNew) {
            lastTime = 0;
            // A server that went away while nothing was played is no end: there may be a new one.
            if (feed->takeEndings().isFailed) {
                openStream();
            }
        }
        if (stream && !(isNew && isFinishing && feed->isEmpty())) {
            stream->start();
        } else if (isFinishing) {
            endSoon();
        }
        if (isNew) {
            report();
        }
    }

    void finish() {
        beginRun();
        isFinishing = true;
        feed->finish();
        if (isRunning ? !stream : feed->isEmpty()) {
            endSoon();
        }
    }

    /// After the calls that are under way, and only if the same run is still there then.
    void endSoon() {
        RunLoop::main().runLater([weak = weak_from_this(), ending = runs] {
            const auto self = weak.lock();
            if (self && self->feed && self->runs == ending) {
                self->end();
            }
        });
    }

    void end() {
        lastTime = sampleTime();
        isRunning = false;
        isPaused = false;
        isFinishing = false;
        leaveRun();
        report();
    }

    /// Nothing that was queued is played any more; the buffers are free.
    void leaveRun() {
        if (feed) {
            feed->detach();
            earlierUnderruns += feed->underruns();
            lastHandedOver = feed->framesHandedOver();
            for (const std::unique_ptr<Buffer>& buffer : buffers) {
                if (buffer->isQueued) {
                    // Its samples may just be read.
                    feed->keep(buffer->renewStorage());
                }
            }
            // Not here, where its own call may be under way.
            RunLoop::main().runLater([leaving = std::move(feed)]() mutable { leaving.reset(); });
        }
        late.clear();
        stream.reset();
    }

    void reset() {
        if (isRunning || isFinishing || (feed && !feed->isEmpty())) {
            leaveRun();
            isRunning = false;
            isPaused = false;
            isFinishing = false;
        }
    }

    AudioStatus enqueue(Buffer& buffer) {
        if (buffer.isQueued) {
            return audioBufferInUse;
        }
        beginRun();
        buffer.isQueued = feed->give(buffer);
        return buffer.isQueued ? 0 : static_cast<AudioStatus>(audioQueueFull);
    }

    void takeNews() override {
        const std::shared_ptr<State> self = shared_from_this();
        const std::shared_ptr<BufferFeed> run = feed;
        while (run != nullptr && feed == run) {
            AudioQueueBuffer* const played = run->takePlayed();
            if (played == nullptr) {
                break;
            }
            auto& buffer = static_cast<Buffer&>(*played);
            if (isFinishing) {
                // Its samples have been taken out, but the last of all to play are still to come.
                late.push_back(&buffer);
            } else {
                need(buffer);
            }
        }
        if (run == nullptr || feed != run || !isRunning) {
            return;
        }
        const BufferFeed::Endings endings = run->takeEndings();
        if (endings.isDrained) {
            // Whatever a server's clock says of the very last frames.
            lastTime = static_cast<double>(run->framesHandedOver());
            for (Buffer* const buffer : std::exchange(late, {})) {
                need(*buffer);
                if (feed != run) {
                    return;
                }
            }
            linger();
        }
        if (endings.isDrained || endings.isFailed) {
            end();
        }
    }

    /// Libraries reckon when the last frame should have been heard. A server that was held up is
    /// later, and would lose what it still has.
    void linger() {
        lingering = std::move(stream);
        lingeringEnd = RunLoop::main().makeTimer();
        lingeringEnd->startOnce(lingeringTime, [this] { lingering.reset(); });
    }

    void need(Buffer& buffer) const {
        buffer.isQueued = false;
        bufferNeeded(buffer);
    }

    void report() const {
        // The listener may replace itself or dispose of the queue.
        if (const std::function<void()> current = listener) {
            current();
        }
    }

    double sampleTime() {
        if (isRunning && feed && stream) {
            if (const std::optional<std::uint64_t> position = stream->position()) {
                lastTime = std::max(lastTime, static_cast<double>(feed->fileFrames(*position)));
            }
        }
        return lastTime;
    }

    const StreamDescription format;
    BufferNeeded bufferNeeded;
    std::function<void()> listener;
    std::vector<std::unique_ptr<Buffer>> buffers;
    std::vector<Buffer*> late; ///< played, and needed again only once all has been heard
    float volume = 1.0F;
    bool isRunning = false;
    bool isPaused = false;
    bool isFinishing = false;
    bool isStopped = false;
    double lastTime = 0;
    std::uint64_t runs = 0;
    std::uint64_t earlierUnderruns = 0;
    std::uint64_t lastHandedOver = 0;
    std::shared_ptr<BufferFeed> feed;
    std::unique_ptr<QueueStream> stream;
    std::unique_ptr<QueueStream> lingering; ///< that of the run before, drained
    std::unique_ptr<Timer> lingeringEnd;
};

AudioQueue::AudioQueue(const StreamDescription& format, BufferNeeded bufferNeeded)
    : state_(std::make_shared<State>(format, std::move(bufferNeeded))) {
    SoundSystem::current().addNewsReader(state_);
}

AudioQueue::~AudioQueue() {
    state_->listener = nullptr;
    state_->isRunning = false;
    state_->isStopped = true;
    state_->leaveRun();
    state_->lingering.reset();
    state_->lingeringEnd.reset();
}

AudioQueueBuffer* AudioQueue::allocateBuffer(std::uint32_t capacity,
                                             std::uint32_t packetDescriptions) {
    auto buffer = std::make_unique<State::Buffer>();
    buffer->storage.resize(capacity);
    buffer->descriptions.resize(packetDescriptions);
    buffer->capacity = capacity;
    buffer->bytes = buffer->storage.data();
    buffer->packetDescriptionCapacity = packetDescriptions;
    buffer->packetDescriptions = buffer->descriptions.data();
    state_->buffers.push_back(std::move(buffer));
    return state_->buffers.back().get();
}

void AudioQueue::prepare() {
    if (!state_->isStopped) {
        state_->beginRun();
    }
}

AudioStatus AudioQueue::enqueue(AudioQueueBuffer& buffer) {
    return state_->isStopped ? static_cast<AudioStatus>(audioNotOpen)
                             : state_->enqueue(static_cast<State::Buffer&>(buffer));
}

void AudioQueue::start() {
    if (!state_->isStopped) {
        const std::shared_ptr<State> self = state_;
        self->start();
    }
}

void AudioQueue::pause() {
    if (state_->isRunning && !state_->isPaused) {
        state_->isPaused = true;
        if (state_->stream) {
            state_->stream->stop();
        }
    }
}

void AudioQueue::reset() {
    state_->reset();
}

void AudioQueue::stopNow() {
    const std::shared_ptr<State> self = state_;
    const bool wasRunning = self->isRunning;
    self->isStopped = true;
    self->lastTime = self->sampleTime();
    self->isRunning = false;
    self->leaveRun();
    self->lingering.reset();
    if (wasRunning) {
        self->report();
    }
}

void AudioQueue::stopAfterDraining() {
    if (!state_->isStopped) {
        state_->finish();
    }
}

void AudioQueue::setVolume(double volume) {
    if (std::isnan(volume)) {
        return;
    }
    state_->volume = static_cast<float>(std::clamp(volume, 0.0, 1.0));
    if (state_->feed) {
        state_->feed->setVolume(state_->volume);
    }
}

bool AudioQueue::isRunning() const {
    return state_->isRunning;
}

void AudioQueue::setIsRunningListener(std::function<void()> listener) {
    state_->listener = std::move(listener);
}

bool AudioQueue::hasClock() const {
    return state_->isPlayable();
}

double AudioQueue::sampleTime() {
    return state_->sampleTime();
}

std::uint64_t AudioQueue::underruns() const {
    return state_->earlierUnderruns + (state_->feed ? state_->feed->underruns() : 0);
}

std::uint64_t AudioQueue::framesHandedOver() const {
    return state_->feed ? state_->feed->framesHandedOver() : state_->lastHandedOver;
}

} // namespace deckmate
