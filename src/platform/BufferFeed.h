// Hands filled buffers from the main thread to the thread that plays them, without either waiting.
#pragma once

#include "platform/OutputStream.h"
#include "platform/RunLoop.h"
#include "platform/SpscRing.h"
#include "platform/StreamDescription.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace deckmate {

struct AudioQueueBuffer;

/// One run of a queue, from its first buffer to its end. A buffer's samples are taken out all at
/// once, so that it can be filled anew while they play: a queue of three buffers holds four.
/// Where no buffer has come in time, silence is played and counted; it is no time of the file.
///
/// Has to be destroyed on the main thread.
class BufferFeed final : public OutputSource {
public:
    /// More buffers than this are not taken at the same time.
    static constexpr std::size_t mostBuffers = 64;

    /// Takes buffers of up to `largestBuffer` bytes. `news` is raised when there may be played
    /// buffers or an ending to be taken out. Thread: main.
    BufferFeed(const StreamDescription& format, std::uint32_t largestBuffer,
               std::shared_ptr<Signal> news);

    // ---- Thread: main

    /// Gives a filled buffer to be played, which must stay as it is until takePlayed() gives it
    /// back. NO when there are too many.
    bool give(AudioQueueBuffer& buffer);
    /// A buffer whose samples have been taken out, or null.
    AudioQueueBuffer* takePlayed();
    /// No further buffer comes: what was given is played, and then the stream drains.
    void finish() { isFinishing_.store(true, std::memory_order_release); }
    /// Silence from now on; nothing is reported any more. Buffers that have not been given back may
    /// still be read for a moment: keep() what they point to.
    void detach() { isDetached_.store(true, std::memory_order_release); }
    /// Holds the samples of a buffer for as long as the feed exists.
    void keep(std::vector<std::uint8_t> bytes) { kept_.push_back(std::move(bytes)); }
    /// A factor for the samples that are played from now on.
    void setVolume(float volume) { volume_.store(volume, std::memory_order_relaxed); }
    /// Whether takePlayed() has given back every buffer.
    bool isEmpty() const { return outstanding_ == 0; }

    struct Endings {
        bool isDrained = false;
        bool isFailed = false;
    };
    /// What has been reported since the last call.
    Endings takeEndings();

    /// Frames of the file among the first `position` frames of the stream, no more than were handed
    /// over.
    std::uint64_t fileFrames(std::uint64_t position);
    /// Frames of the file that the stream has taken.
    std::uint64_t framesHandedOver() const { return handedOver_.load(std::memory_order_acquire); }
    /// How often silence had to be played because no buffer had come in time.
    std::uint64_t underruns() const { return underruns_.load(std::memory_order_relaxed); }

    // ---- Thread: audio. Realtime: yes

    std::size_t fill(float* out, std::size_t frames) noexcept override;
    void drained() noexcept override { report(drainedBit); }
    void failed() noexcept override { report(failedBit); }

private:
    struct Filled {
        AudioQueueBuffer* buffer;
        const std::uint8_t* bytes;
        std::size_t frames;
    };
    struct Gap {
        std::uint64_t begin; ///< in frames of the stream
        std::uint64_t length;
    };
    static constexpr unsigned drainedBit = 1;
    static constexpr unsigned failedBit = 2;

    bool stageNext() noexcept;
    void play(float* out, std::size_t frames) noexcept;
    void playSilence(float* out, std::size_t frames) noexcept;
    void report(unsigned ending) noexcept;
    void collectGaps();

    const StreamDescription format_;
    const std::size_t channels_;
    const std::shared_ptr<Signal> news_;
    SpscRing<Filled, mostBuffers> filled_;
    SpscRing<AudioQueueBuffer*, 2 * mostBuffers> played_;
    SpscRing<Gap, 256> closedGaps_;
    std::atomic<bool> isFinishing_ = false;
    std::atomic<bool> isDetached_ = false;
    std::atomic<float> volume_ = 1.0F;
    std::atomic<std::uint64_t> handedOver_ = 0;
    std::atomic<std::uint64_t> underruns_ = 0;
    std::atomic<unsigned> endings_ = 0;

    // The main thread's.
    std::size_t outstanding_ = 0;
    std::vector<Gap> gaps_;
    std::vector<std::vector<std::uint8_t>> kept_;

    // The audio thread's.
    std::vector<float> staged_; ///< the buffer being played
    std::size_t stagedFrames_ = 0;
    std::size_t stagedDone_ = 0;
    std::uint64_t streamFrames_ = 0;
    std::optional<Gap> openGap_;
};

} // namespace deckmate
