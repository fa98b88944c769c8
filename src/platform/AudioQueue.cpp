#include "platform/AudioQueue.h"

#include "platform/BufferFeed.h"
#include "platform/PcmFloats.h"
#include "platform/QueueStream.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace deckmate {

namespace {

OutputFormat outputFormatOf(const StreamDescription& format) {
    constexpr double most = std::numeric_limits<std::uint32_t>::max();
    return {static_cast<std::uint32_t>(std::lround(std::min(format.sampleRate, most))),
            format.channelsPerFrame};
}

} // namespace

/// Shared with what was posted to the main loop, so that it finds out whether the queue still is.
struct AudioQueue::State : std::enable_shared_from_this<State> {
    State(const StreamDescription& streamFormat, BufferNeeded needed)
        : format(streamFormat), bufferNeeded(std::move(needed)) {}

    /// A run needs a feed and a stream of its own, since a drained or broken one can't go on.
    void beginRun() {
        if (feed) {
            return;
        }
        std::uint32_t largest = 0;
        for (const std::unique_ptr<Buffer>& buffer : buffers) {
            largest = std::max(largest, buffer->capacity);
        }
        feed = std::make_shared<BufferFeed>(format, largest, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->takeNews();
            }
        });
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

    void leaveRun() {
        if (feed) {
            feed->detach();
            earlierUnderruns += feed->underruns();
            lastHandedOver = feed->framesHandedOver();
            // Not here, where its own call may be under way.
            RunLoop::main().runLater([leaving = std::move(feed)]() mutable { leaving.reset(); });
        }
        stream.reset();
    }

    void takeNews() {
        const std::shared_ptr<State> self = shared_from_this();
        const std::shared_ptr<BufferFeed> run = feed;
        while (feed == run && run != nullptr) {
            AudioQueueBuffer* buffer = run->takePlayed();
            if (buffer == nullptr) {
                break;
            }
            bufferNeeded(*buffer);
        }
        if (feed != run || run == nullptr || !isRunning) {
            return;
        }
        const BufferFeed::Endings endings = run->takeEndings();
        if (endings.isDrained) {
            // Whatever a server's clock says of the very last frames.
            lastTime = static_cast<double>(run->framesHandedOver());
        }
        if (endings.isDrained || endings.isFailed) {
            end();
        }
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

    /// A buffer with all that it points to.
    struct Buffer : AudioQueueBuffer {
        std::vector<std::uint8_t> storage;
        std::vector<PacketDescription> descriptions;
    };

    const StreamDescription format;
    BufferNeeded bufferNeeded;
    std::function<void()> listener;
    std::vector<std::unique_ptr<Buffer>> buffers;
    std::vector<std::uint8_t> magicCookie;
    std::vector<std::uint8_t> channelLayout;
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
};

AudioQueue::AudioQueue(const StreamDescription& format, BufferNeeded bufferNeeded)
    : state_(std::make_shared<State>(format, std::move(bufferNeeded))) {}

AudioQueue::~AudioQueue() {
    state_->listener = nullptr;
    state_->isRunning = false;
    state_->isStopped = true;
    state_->leaveRun();
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
    if (state_->isStopped) {
        return audioNotOpen;
    }
    state_->beginRun();
    return state_->feed->give(buffer) ? 0 : static_cast<AudioStatus>(audioQueueFull);
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

void AudioQueue::stopNow() {
    const std::shared_ptr<State> self = state_;
    const bool wasRunning = self->isRunning;
    self->isStopped = true;
    self->lastTime = self->sampleTime();
    self->isRunning = false;
    self->leaveRun();
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

void AudioQueue::setMagicCookie(std::vector<std::uint8_t> cookie) {
    state_->magicCookie = std::move(cookie);
}

void AudioQueue::setChannelLayout(std::vector<std::uint8_t> layout) {
    state_->channelLayout = std::move(layout);
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
