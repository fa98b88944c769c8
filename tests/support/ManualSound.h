// A sound output that takes frames when a test says so.
#pragma once

#include "platform/OutputStream.h"
#include "platform/SoundSystem.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace deckmate::test {

class ManualStream;

/// The SoundSystem of a test: what the program tells its streams is done at once. Thread: main.
class ManualSound {
public:
    ManualSound();
    ~ManualSound();
    ManualSound(const ManualSound&) = delete;
    ManualSound& operator=(const ManualSound&) = delete;
    ManualSound(ManualSound&&) = delete;
    ManualSound& operator=(ManualSound&&) = delete;

    /// The stream that was opened last, if it is still there.
    ManualStream* stream() const;
    /// Lets the current stream take frames, if it is started, and gives what it got.
    std::vector<float> pull(std::size_t frames);

    /// What every stream took, in order.
    std::vector<float> heard;
    std::size_t opened = 0; ///< streams, ever
    std::size_t open = 0;   ///< streams, now
    bool canStart = true;

private:
    friend class ManualStream;
    class Backend;

    ManualStream* stream_ = nullptr;
    std::unique_ptr<SoundSystem> system_;
};

class ManualStream final : public OutputStream {
public:
    ManualStream(ManualSound& sound, const OutputFormat& format, OutputSource& source);
    ~ManualStream() override;
    ManualStream(const ManualStream&) = delete;
    ManualStream& operator=(const ManualStream&) = delete;
    ManualStream(ManualStream&&) = delete;
    ManualStream& operator=(ManualStream&&) = delete;

    bool start() override;
    bool stop() override;
    std::optional<std::uint64_t> position() override { return heardFrames; }

    /// The server goes away.
    void fail() { source_.failed(); }

    const OutputFormat format;
    bool isPlaying = false;
    bool isDrained = false;
    /// What position() tells: by default all that was taken.
    std::optional<std::uint64_t> heardFrames = 0;

private:
    friend class ManualSound;

    ManualSound& sound_;
    OutputSource& source_;
};

} // namespace deckmate::test
