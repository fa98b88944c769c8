#include "platform/BufferFeed.h"

#include "platform/AudioQueue.h"
#include "platform/SoundSystem.h"
#include "platform/TaskThread.h"
#include "support/ManualRunLoop.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

using test::ManualRunLoop;

/// Streams that take frames as fast as they can, on threads of their own.
class GreedyBackend final : public OutputBackend {
public:
    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) override {
        return std::make_unique<Stream>(format, source);
    }

private:
    class Stream final : public OutputStream {
    public:
        Stream(const OutputFormat& format, OutputSource& source)
            : source_(source), out_(std::size_t{frames} * format.channels),
              thread_([this] { take(); }) {}
        ~Stream() override {
            isEnding_ = true;
            thread_.join();
        }
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;
        Stream(Stream&&) = delete;
        Stream& operator=(Stream&&) = delete;

        bool start() override {
            isPlaying_ = true;
            return true;
        }
        bool stop() override {
            isPlaying_ = false;
            return true;
        }
        std::optional<std::uint64_t> position() override { return 0; }

    private:
        static constexpr std::size_t frames = 4096;

        void take() {
            while (!isEnding_) {
                if (isPlaying_) {
                    source_.fill(out_.data(), frames);
                } else {
                    std::this_thread::yield();
                }
            }
        }

        OutputSource& source_;
        std::vector<float> out_;
        std::atomic<bool> isPlaying_ = false;
        std::atomic<bool> isEnding_ = false;
        std::thread thread_;
    };
};

/// Mostly of use under the address and thread sanitizers.
TEST(BufferFeed, BuffersMayGoAtAnyMomentOfBeingRead) {
    ManualRunLoop loop;
    TaskThread tasks;
    SoundSystem sound(std::make_unique<GreedyBackend>(),
                      [&tasks](std::function<void()> task) { tasks.run(std::move(task)); });
    StreamDescription format;
    format.sampleRate = 48000;
    format.formatFlags = StreamDescription::floatFlag;
    format.bytesPerPacket = format.bytesPerFrame = 8;
    format.framesPerPacket = 1;
    format.channelsPerFrame = 2;
    format.bitsPerChannel = 32;

    std::uint64_t played = 0;
    for (int i = 0; i < 300; ++i) {
        std::unique_ptr<AudioQueue> queue;
        const auto fill = [&](AudioQueueBuffer& buffer) {
            std::fill_n(buffer.bytes, buffer.capacity, std::uint8_t{1});
            buffer.byteSize = buffer.capacity;
            EXPECT_EQ(queue->enqueue(buffer), 0);
        };
        queue = std::make_unique<AudioQueue>(format, fill);
        std::vector<AudioQueueBuffer*> buffers;
        for (int k = 0; k < 3; ++k) {
            buffers.push_back(queue->allocateBuffer(65536, 0));
        }
        for (AudioQueueBuffer* buffer : buffers) {
            fill(*buffer);
        }
        queue->start();
        while (queue->framesHandedOver() == 0) {
            std::this_thread::yield();
        }
        loop.runPending();
        if (i % 2 == 0) {
            queue->reset();
            for (AudioQueueBuffer* buffer : buffers) {
                fill(*buffer);
            }
        } else {
            queue->stopNow();
        }
        played += queue->framesHandedOver();
        queue.reset();
        loop.runPending();
    }
    EXPECT_GT(played, 0U);

    // What was let go of by tasks is destroyed on the main thread.
    std::atomic<bool> areDone = false;
    tasks.run([&areDone] { areDone = true; });
    while (!areDone) {
        std::this_thread::yield();
    }
    loop.runPending();
}

} // namespace
} // namespace deckmate
