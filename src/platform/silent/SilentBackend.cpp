#include "platform/silent/SilentBackend.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace deckmate {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds step{10};
constexpr std::size_t blockFrames = 1024;
// At a rate that no sound has, the stream rather runs late than keeps a core busy.
constexpr std::uint64_t mostFramesPerStep = 64 * blockFrames;

class SilentStream final : public OutputStream {
public:
    SilentStream(const OutputFormat& format, OutputSource& source)
        : rate_(format.sampleRate), source_(source),
          block_(std::size_t{blockFrames} * format.channels), thread_([this] { run(); }) {}

    ~SilentStream() override {
        {
            const std::lock_guard guard(lock_);
            isEnding_ = true;
        }
        news_.notify_all();
        thread_.join();
    }
    SilentStream(const SilentStream&) = delete;
    SilentStream& operator=(const SilentStream&) = delete;
    SilentStream(SilentStream&&) = delete;
    SilentStream& operator=(SilentStream&&) = delete;

    bool start() override {
        const std::lock_guard guard(lock_);
        if (!isPlaying_) {
            isPlaying_ = true;
            started_ = Clock::now();
        }
        news_.notify_all();
        return true;
    }

    bool stop() override {
        const std::lock_guard guard(lock_);
        if (isPlaying_) {
            playedBefore_ = due();
            isPlaying_ = false;
        }
        return true;
    }

    std::optional<std::uint64_t> position() override {
        const std::lock_guard guard(lock_);
        return std::min(isPlaying_ ? due() : playedBefore_, taken_);
    }

private:
    /// Frames that should have been heard by now; with the lock held, while playing.
    std::uint64_t due() const {
        const std::chrono::duration<double> elapsed = Clock::now() - started_;
        return playedBefore_ + static_cast<std::uint64_t>(elapsed.count() * rate_);
    }

    void run() {
        std::unique_lock guard(lock_);
        bool hasEnded = false;
        while (!isEnding_) {
            if (!isPlaying_ || hasEnded) {
                news_.wait(guard);
                continue;
            }
            const std::uint64_t ahead = due() + static_cast<std::uint64_t>(rate_ / 100.0);
            const std::uint64_t wanted =
                ahead > taken_ ? std::min(ahead - taken_, mostFramesPerStep) : 0;
            hasEnded = !take(guard, wanted);
            news_.wait_for(guard, step);
        }
    }

    /// Without the lock while the source is asked. NO at the end.
    bool take(std::unique_lock<std::mutex>& guard, std::uint64_t wanted) {
        while (wanted > 0 && !isEnding_) {
            const std::size_t count = std::min<std::uint64_t>(wanted, blockFrames);
            guard.unlock();
            const std::size_t got = source_.fill(block_.data(), count);
            if (got < count) {
                source_.drained();
            }
            guard.lock();
            taken_ += got;
            if (got < count) {
                return false;
            }
            wanted -= got;
        }
        return true;
    }

    const double rate_;
    OutputSource& source_;
    std::mutex lock_;
    std::condition_variable news_;
    bool isPlaying_ = false;
    bool isEnding_ = false;
    Clock::time_point started_;
    std::uint64_t playedBefore_ = 0; ///< frames up to the last stop
    std::uint64_t taken_ = 0;
    std::vector<float> block_;
    std::thread thread_;
};

class SilentBackend final : public OutputBackend {
public:
    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) override {
        try {
            return std::make_unique<SilentStream>(format, source);
        } catch (const std::system_error&) {
            return nullptr; // no thread is to be had
        }
    }
};

} // namespace

std::unique_ptr<OutputBackend> makeSilentBackend() {
    return std::make_unique<SilentBackend>();
}

} // namespace deckmate
