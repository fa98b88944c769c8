#include "platform/BufferFeed.h"

#include "platform/AudioQueueBuffer.h"
#include "platform/PcmFloats.h"

#include <algorithm>
#include <utility>

namespace deckmate {

BufferFeed::BufferFeed(const StreamDescription& format, std::uint32_t largestBuffer,
                       std::shared_ptr<Signal> news)
    : format_(format), channels_(canBecomeFloats(format) ? format.channelsPerFrame : 0),
      news_(std::move(news)), staged_(channels_ > 0 ? largestBuffer / sampleBytes(format) : 0) {
    gaps_.reserve(16);
}

bool BufferFeed::give(AudioQueueBuffer& buffer) {
    std::size_t frames = 0;
    if (channels_ > 0) {
        frames = std::min(std::min(buffer.byteSize, buffer.capacity) / format_.bytesPerFrame,
                          static_cast<std::uint32_t>(staged_.size() / channels_));
    }
    if (outstanding_ == mostBuffers || !filled_.push({&buffer, buffer.bytes, frames})) {
        return false;
    }
    ++outstanding_;
    return true;
}

AudioQueueBuffer* BufferFeed::takePlayed() {
    collectGaps();
    const std::optional<AudioQueueBuffer*> buffer = played_.pop();
    if (!buffer) {
        return nullptr;
    }
    --outstanding_;
    return *buffer;
}

BufferFeed::Endings BufferFeed::takeEndings() {
    const unsigned endings = endings_.exchange(0, std::memory_order_acq_rel);
    return {(endings & drainedBit) != 0, (endings & failedBit) != 0};
}

void BufferFeed::collectGaps() {
    while (const std::optional<Gap> gap = closedGaps_.pop()) {
        gaps_.push_back(*gap);
    }
}

std::uint64_t BufferFeed::fileFrames(std::uint64_t position) {
    // Asked before collecting: a gap that closes meanwhile lies behind these frames.
    const std::uint64_t handedOver = framesHandedOver();
    collectGaps();
    std::uint64_t silence = 0;
    for (const Gap& gap : gaps_) {
        if (position > gap.begin) {
            silence += std::min(gap.length, position - gap.begin);
        }
    }
    return std::min(position - silence, handedOver);
}

std::size_t BufferFeed::fill(float* out, std::size_t frames) noexcept {
    if (isDetached_.load(std::memory_order_acquire)) {
        std::fill_n(out, frames * channels_, 0.0F);
        return frames;
    }
    std::size_t done = 0;
    while (done < frames) {
        if (stagedDone_ == stagedFrames_) {
            // Asked before looking for a buffer: the last one was given before the end was told.
            const bool isFinishing = isFinishing_.load(std::memory_order_acquire);
            if (!stageNext()) {
                if (isFinishing) {
                    break;
                }
                playSilence(out + done * channels_, frames - done);
                return frames;
            }
            continue;
        }
        const std::size_t count = std::min(frames - done, stagedFrames_ - stagedDone_);
        play(out + done * channels_, count);
        done += count;
    }
    return done;
}

bool BufferFeed::stageNext() noexcept {
    const std::optional<Filled> next = filled_.pop();
    if (!next) {
        return false;
    }
    toFloats(format_, next->bytes, next->frames * channels_, staged_.data());
    stagedFrames_ = next->frames;
    stagedDone_ = 0;
    played_.push(next->buffer);
    news_->raise();
    return true;
}

void BufferFeed::play(float* out, std::size_t frames) noexcept {
    if (openGap_) {
        // Never full: the main thread, which gave the buffer that ends the gap, has collected
        // others.
        closedGaps_.push(*openGap_);
        openGap_.reset();
    }
    const float volume = volume_.load(std::memory_order_relaxed);
    const float* samples = staged_.data() + stagedDone_ * channels_;
    for (std::size_t i = 0; i < frames * channels_; ++i) {
        out[i] = samples[i] * volume;
    }
    stagedDone_ += frames;
    streamFrames_ += frames;
    handedOver_.store(handedOver_.load(std::memory_order_relaxed) + frames,
                      std::memory_order_release);
}

void BufferFeed::playSilence(float* out, std::size_t frames) noexcept {
    std::fill_n(out, frames * channels_, 0.0F);
    if (!openGap_) {
        openGap_ = Gap{streamFrames_, 0};
        underruns_.fetch_add(1, std::memory_order_relaxed);
    }
    openGap_->length += frames;
    streamFrames_ += frames;
}

void BufferFeed::report(unsigned ending) noexcept {
    if (!isDetached_.load(std::memory_order_acquire)) {
        endings_.fetch_or(ending, std::memory_order_acq_rel);
        news_->raise();
    }
}

} // namespace deckmate
