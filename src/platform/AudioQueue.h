// A queue of filled buffers that are played one after the other.
#pragma once

#include "platform/AudioQueueBuffer.h"
#include "platform/StreamDescription.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace deckmate {

/// An output queue on the sound system.
///
///     AudioQueue queue(format, [&](AudioQueueBuffer& buffer) {
///         if (fillFromFile(buffer)) {
///             queue.enqueue(buffer);
///         } else {
///             queue.stopAfterDraining();
///         }
///     });
///     queue.setIsRunningListener([&] { if (!queue.isRunning()) showStopped(); });
///     for (int i = 0; i < 3; ++i) {
///         fillFromFile(*queue.allocateBuffer(28800, 0));   // and enqueue
///     }
///     queue.start();
///
/// The queue's own state changes at once; the sound server is told later, in order, and nobody
/// waits for it. Where there is no server, or it doesn't take the format, the queue plays silence
/// at the right speed. At volume 1.0, samples of up to 24 bits and 32-bit
/// floats reach the server unchanged.
///
/// Thread: main, and so are all calls it makes.
class AudioQueue {
public:
    /// Called for each buffer that can be filled anew, in the order of playing, never from inside
    /// one of the queue's operations. Those that come back after stopAfterDraining() are asked for
    /// when everything has been heard, just before that is reported.
    using BufferNeeded = std::function<void(AudioQueueBuffer& buffer)>;

    AudioQueue(const StreamDescription& format, BufferNeeded bufferNeeded);
    /// Disposes of the queue at once, with its buffers: nothing of it is heard or called any more.
    /// May happen inside a call that the queue makes.
    ~AudioQueue();
    AudioQueue(const AudioQueue&) = delete;
    AudioQueue& operator=(const AudioQueue&) = delete;
    AudioQueue(AudioQueue&&) = delete;
    AudioQueue& operator=(AudioQueue&&) = delete;

    /// All buffers are allocated before the first is enqueued.
    AudioQueueBuffer* allocateBuffer(std::uint32_t capacity, std::uint32_t packetDescriptions);
    /// Connects to the sound system, which would take start() some time. To be called once the
    /// buffers are allocated; not needed.
    void prepare();
    /// Hands a filled buffer of this queue over. audioBufferInUse for one that wasn't asked for
    /// again, audioQueueFull beyond BufferFeed::mostBuffers.
    AudioStatus enqueue(AudioQueueBuffer& buffer);

    /// Plays what has been enqueued, from the beginning or on from a pause.
    void start();
    /// Stands still and keeps what is queued; it is still running.
    void pause();
    /// Drops what is queued, without a report: the queue is as before the first enqueue, and no
    /// longer running. All buffers are free.
    void reset();
    /// Is over at once, which the listener hears of inside this call if the queue was running.
    /// After that, the queue can only be disposed of.
    void stopNow();
    /// Is over when all that was enqueued has been played, now or after the next start. Buffers
    /// enqueued later may not be played. A queue that has nothing to play and isn't running is over
    /// soon after. It can be filled and started again.
    void stopAfterDraining();

    /// 0.0 to 1.0, linear; what is outside counts as the nearest, what is no number is ignored.
    void setVolume(double volume);
    /// What the format doesn't tell about the samples: nothing that plain ones need.
    void setMagicCookie(std::span<const std::uint8_t> /*cookie*/) {}
    void setChannelLayout(std::span<const std::uint8_t> /*layout*/) {}

    /// From start() until it is over, pauses included.
    bool isRunning() const;
    /// Called when isRunning() has changed, and when the queue is over though it never ran. A sound
    /// server that goes away ends the queue too.
    void setIsRunningListener(std::function<void()> listener);

    /// Whether the format can be played, so that there is a time to be told.
    bool hasClock() const;
    /// Frames heard since the start, whatever was put in between them while the main thread was too
    /// busy to fill buffers. Never goes back, never exceeds the frames that were handed to the
    /// sound system; once the queue is over, stays until the next start.
    double sampleTime();
    /// How often the sound had to be interrupted because no filled buffer was there.
    std::uint64_t underruns() const;
    /// Frames handed to the sound system since the start.
    std::uint64_t framesHandedOver() const;

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace deckmate
