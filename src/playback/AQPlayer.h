// Streams one WAV file from disk to the sound output, through three rotating buffers.
#pragma once

#include "platform/AudioFile.h"
#include "platform/AudioQueue.h"
#include "platform/StreamDescription.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace deckmate {

/// Called with each buffer before it goes to the output, to be changed in place: the buffer, the
/// file's format and the index of the buffer's first packet.
using AQBufferHook = std::function<void(AudioQueueBuffer& buffer, const StreamDescription& info,
                                        std::int64_t curPackage)>;

/// All that is known about what is being played: there is one of it, so only one file plays at a
/// time. Thread: main.
struct AQData {
    StreamDescription format;
    std::unique_ptr<AudioQueue> queue;
    std::array<AudioQueueBuffer*, 3> buffers = {}; ///< the queue's
    AudioQueue* timeline = nullptr;                ///< whose clock tells the time; null if none can
    std::unique_ptr<AudioFile> audioFile;
    std::uint32_t bufferByteSize = 0;
    std::int64_t currentPacket = 0; ///< the next to be read
    std::uint32_t packetsPerRead = 0;
    std::uint64_t packetCount = 0;
    bool isRunning = false; ///< cleared when the queue has stopped; nothing sets it
    bool isDone = false;    ///< the file is exhausted, or reading it failed
    bool isError = false;   ///< reading failed
    bool isPrepared = false;
    std::optional<std::string> filePath; ///< of the open file; none if none is open
    double durationSeconds = 0;
};
AQData& aqData();

/// Opens the file unless one is open, and sets up a queue for it in any case.
void CreateQueueForFile(const std::string& path);
/// A new queue and its buffers for the file that is open.
void SetupNewQueue();
/// Gives up queue and file.
void DisposeQueue();
/// Fills a buffer with the next packets of the file and enqueues it, or lets the queue drain at the
/// end of the file.
void AQBufferCallback(AQData* data, AudioQueue* queue, AudioQueueBuffer* buffer);
/// Fires "EB_PLAY_FINISH" when the queue has stopped, for whatever reason.
void isRunningProc(AQData* data, AudioQueue* queue, std::uint32_t propertyId);

/// The player of one file. Making another one takes over the output.
///
///     AQPlayer player("take.wav");
///     player.setDataCB(changeSamples);
///     player.play(false);
///
/// The end is told by the event "EB_PLAY_FINISH", which a seek causes as well. A file that can't be
/// opened shows by a read error once it is played. Thread: main.
class AQPlayer {
public:
    explicit AQPlayer(const std::filesystem::path& file);
    /// Cleans up.
    ~AQPlayer();
    AQPlayer(const AQPlayer&) = delete;
    AQPlayer& operator=(const AQPlayer&) = delete;
    AQPlayer(AQPlayer&&) = delete;
    AQPlayer& operator=(AQPlayer&&) = delete;

    /// Gives up queue, file and hook; the player does nothing afterwards, as when another one has
    /// taken over the output.
    void cleanUp();

    /// Linear, 0.0 to 1.0.
    void setVolume(double volume);
    /// From the beginning, or on from a pause. The offset of an earlier seek stays in the time.
    void play(bool resume);
    void pause();
    /// Goes to a fraction of the file, 0.0 to 1.0, and plays there or stands ready. A queue that
    /// was running reports its stop inside this call.
    void setPosition(double position, bool play);

    /// Milliseconds at a fraction of the file.
    double timeFromPosition(double position) const;
    /// Seconds.
    double duration() const;
    /// Milliseconds.
    double currentTime() const;

    bool getIsDone() const { return aqData().isDone; }
    bool getIsError() const { return aqData().isError; }

    /// Registers the buffer hook, instead of any other.
    void setDataCB(AQBufferHook hook);

private:
    /// Whether what is being played is this player's.
    bool isActive() const;

    std::string filePath_;
    double seek_time_ = 0; ///< milliseconds from the file's start to the queue's
};

} // namespace deckmate
