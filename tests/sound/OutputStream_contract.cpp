// What every output stream promises to its source: the sound server's, the silent one, and the one
// that stands in for them in other tests.
#include "platform/OutputStream.h"

#include "platform/cubeb/CubebBackend.h"
#include "platform/silent/SilentBackend.h"
#include "support/ManualRunLoop.h"
#include "support/ManualSound.h"
#include "support/SoundServer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace deckmate::test {
namespace {

using namespace std::chrono_literals;

/// Counts what is asked of it; noted mistakes are those of the stream.
class CountingSource final : public OutputSource {
public:
    explicit CountingSource(std::size_t frames) : frames_(frames) {}

    std::size_t fill(float* out, std::size_t frames) noexcept override {
        isAskedAfterItsEnd = isAskedAfterItsEnd || hasEnded_;
        const std::size_t count = std::min(frames, frames_ - taken);
        std::fill_n(out, 2 * count, 0.25F);
        taken += count;
        hasEnded_ = count < frames;
        return count;
    }
    void drained() noexcept override { ++drains; }
    void failed() noexcept override { ++failures; }

    std::atomic<std::size_t> taken = 0;
    std::atomic<bool> isAskedAfterItsEnd = false;
    std::atomic<int> drains = 0;
    std::atomic<int> failures = 0;

private:
    const std::size_t frames_;
    std::atomic<bool> hasEnded_ = false;
};

struct Manual {
    ManualRunLoop loop;
    ManualSound sound;

    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) {
        return SoundSystem::current().backend()->open(format, source);
    }
    void step() { sound.pull(480); }
};

struct Silent {
    std::unique_ptr<OutputBackend> backend = makeSilentBackend();

    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) {
        return backend->open(format, source);
    }
    void step() { std::this_thread::sleep_for(10ms); }
};

struct Cubeb {
    SoundServer server{48000};
    std::unique_ptr<OutputBackend> backend = makeCubebBackend();

    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) {
        return backend->open(format, source);
    }
    void step() { std::this_thread::sleep_for(10ms); }
};

template <class Kind>
class OutputStreamContract : public testing::Test {
protected:
    static constexpr OutputFormat format = {48000, 2};

    /// NO if it doesn't come true in thousands of steps.
    bool step(const std::function<bool()>& isDone) {
        for (int i = 0; i < 3000 && !isDone(); ++i) {
            kind.step();
        }
        return isDone();
    }
    void steps(int count) {
        for (int i = 0; i < count; ++i) {
            kind.step();
        }
    }

    Kind kind;
};

using Kinds = testing::Types<Manual, Silent, Cubeb>;
TYPED_TEST_SUITE(OutputStreamContract, Kinds);

TYPED_TEST(OutputStreamContract, NothingIsTakenBeforeTheStart) {
    CountingSource source(48000);
    const auto stream = this->kind.open(this->format, source);
    ASSERT_NE(stream, nullptr);
    this->steps(10);
    EXPECT_EQ(source.taken, 0U);
}

TYPED_TEST(OutputStreamContract, EverythingIsTakenAndThenDrainedOnce) {
    CountingSource source(12345);
    const auto stream = this->kind.open(this->format, source);
    ASSERT_TRUE(stream->start());
    EXPECT_TRUE(this->step([&] { return source.drains > 0; }));
    this->steps(20);
    EXPECT_EQ(source.taken, 12345U);
    EXPECT_EQ(source.drains, 1);
    EXPECT_EQ(source.failures, 0);
    EXPECT_FALSE(source.isAskedAfterItsEnd);
}

TYPED_TEST(OutputStreamContract, ASourceThatEndsAtOnceIsDrained) {
    CountingSource source(0);
    const auto stream = this->kind.open(this->format, source);
    ASSERT_TRUE(stream->start());
    EXPECT_TRUE(this->step([&] { return source.drains > 0; }));
    EXPECT_FALSE(source.isAskedAfterItsEnd);
}

TYPED_TEST(OutputStreamContract, ThePositionGoesOnAndNeverBack) {
    CountingSource source(24000);
    const auto stream = this->kind.open(this->format, source);
    ASSERT_TRUE(stream->start());
    std::uint64_t last = 0;
    EXPECT_TRUE(this->step([&] {
        const std::uint64_t now = stream->position().value_or(last);
        EXPECT_GE(now, last);
        last = now;
        return source.drains > 0;
    }));
    EXPECT_GE(last, 12000U);
}

TYPED_TEST(OutputStreamContract, StoppedItStandsStillAndThenGoesOn) {
    CountingSource source(48000);
    const auto stream = this->kind.open(this->format, source);
    ASSERT_TRUE(stream->start());
    ASSERT_TRUE(this->step([&] { return source.taken >= 12000; }));
    ASSERT_TRUE(stream->stop());
    this->steps(5);
    const std::size_t taken = source.taken;
    this->steps(20);
    EXPECT_EQ(source.taken, taken);
    EXPECT_EQ(source.drains, 0);
    ASSERT_TRUE(stream->start());
    EXPECT_TRUE(this->step([&] { return source.drains > 0; }));
    EXPECT_EQ(source.taken, 48000U);
}

TYPED_TEST(OutputStreamContract, StartingAndStoppingTwiceIsHarmless) {
    CountingSource source(24000);
    const auto stream = this->kind.open(this->format, source);
    EXPECT_TRUE(stream->start());
    EXPECT_TRUE(stream->start());
    this->steps(3);
    EXPECT_TRUE(stream->stop());
    EXPECT_TRUE(stream->stop());
    EXPECT_TRUE(stream->start());
    EXPECT_TRUE(this->step([&] { return source.drains > 0; }));
    EXPECT_EQ(source.taken, 24000U);
}

TYPED_TEST(OutputStreamContract, OnceGoneItLeavesTheSourceAlone) {
    CountingSource source(480000);
    auto stream = this->kind.open(this->format, source);
    ASSERT_TRUE(stream->start());
    ASSERT_TRUE(this->step([&] { return source.taken > 0; }));
    stream.reset();
    const std::size_t taken = source.taken;
    this->steps(20);
    EXPECT_EQ(source.taken, taken);
    EXPECT_EQ(source.drains, 0);
}

} // namespace
} // namespace deckmate::test
