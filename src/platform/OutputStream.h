// What plays frames: a stream to the sound server, or one of its stand-ins.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace deckmate {

/// Interleaved 32-bit floats.
struct OutputFormat {
    std::uint32_t sampleRate = 0;
    std::uint32_t channels = 0;
};

/// Where a stream takes its frames from. Outlives the stream.
class OutputSource {
public:
    OutputSource() = default;
    virtual ~OutputSource() = default;
    OutputSource(const OutputSource&) = delete;
    OutputSource& operator=(const OutputSource&) = delete;
    OutputSource(OutputSource&&) = delete;
    OutputSource& operator=(OutputSource&&) = delete;

    /// Writes `frames` frames and returns as many; fewer only at the end, after which it isn't
    /// called again. Thread: audio. Realtime: yes.
    virtual std::size_t fill(float* out, std::size_t frames) noexcept = 0;
    /// All frames up to the end have been heard. Thread: audio. Realtime: yes.
    virtual void drained() noexcept = 0;
    /// The stream is broken for good. Thread: audio. Realtime: yes.
    virtual void failed() noexcept = 0;
};

/// An output stream, stopped at first. Thread: one at a time, and not its source's; any of these
/// may wait as long as the sound server pleases, but for `position`.
class OutputStream {
public:
    OutputStream() = default;
    /// Once it is gone, the source isn't called any more. What was not heard yet never will be.
    virtual ~OutputStream() = default;
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;
    OutputStream(OutputStream&&) = delete;
    OutputStream& operator=(OutputStream&&) = delete;

    /// Plays on where it was stopped. NO when that fails.
    virtual bool start() = 0;
    /// What was taken from the source and not heard yet is kept for the next start.
    virtual bool stop() = 0;
    /// Frames heard since the stream was made; may run ahead of those taken from the source while
    /// the server doesn't answer. Nothing when it isn't known. Thread: any.
    virtual std::optional<std::uint64_t> position() = 0;
};

/// Makes streams.
class OutputBackend {
public:
    OutputBackend() = default;
    virtual ~OutputBackend() = default;
    OutputBackend(const OutputBackend&) = delete;
    OutputBackend& operator=(const OutputBackend&) = delete;
    OutputBackend(OutputBackend&&) = delete;
    OutputBackend& operator=(OutputBackend&&) = delete;

    /// Null when there is nothing to play on. May wait as long as the sound server pleases.
    /// Thread: one at a time.
    virtual std::unique_ptr<OutputStream> open(const OutputFormat& format,
                                               OutputSource& source) = 0;
};

} // namespace deckmate
