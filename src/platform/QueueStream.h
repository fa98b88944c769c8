// The stream of one run of a queue, told what to do without waiting for it.
#pragma once

#include "platform/BufferFeed.h"
#include "platform/OutputStream.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace deckmate {

/// Opens, starts, stops and closes an output stream by tasks of the SoundSystem. Where no stream
/// can be opened, a silent one with a steady clock takes its place.
///
/// Thread: main.
class QueueStream {
public:
    QueueStream(const OutputFormat& format, std::shared_ptr<BufferFeed> feed);
    /// Closes the stream. The feed is let go of on the main thread, once the stream is gone.
    ~QueueStream();
    QueueStream(const QueueStream&) = delete;
    QueueStream& operator=(const QueueStream&) = delete;
    QueueStream(QueueStream&&) = delete;
    QueueStream& operator=(QueueStream&&) = delete;

    /// Opens the stream beforehand, so that starting it takes less time.
    void prepare();
    /// A failure is reported by the feed.
    void start();
    void stop();
    /// Frames of the stream heard so far, if that can be told without waiting.
    std::optional<std::uint64_t> position() const;

private:
    struct Shared;

    std::shared_ptr<Shared> shared_;
};

} // namespace deckmate
