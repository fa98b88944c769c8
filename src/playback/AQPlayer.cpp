#include "playback/AQPlayer.h"

#include "platform/Log.h"
#include "platform/StandardStreams.h"
#include "services/EB.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include <unistd.h>

namespace deckmate {

namespace {

constexpr std::uint32_t largestBuffer = 0x10000;
constexpr std::uint32_t smallestBuffer = 16384;
constexpr double bufferSeconds = 0.1;
constexpr std::uint32_t isRunningProperty = 0x6171726E; // "aqrn"

AQBufferHook& S_BufferCallBack() {
    static AQBufferHook hook;
    return hook;
}

/// Whose file and queue are in the shared record.
const AQPlayer*& activePlayer() {
    static const AQPlayer* player = nullptr;
    return player;
}

/// That of the queues to come: a seek must not begin at another one.
double& currentVolume() {
    static double volume = 1.0;
    return volume;
}

/// Cut toward zero; what no packet index can be becomes the nearest one, and 0 if it is no number.
std::int64_t truncated(double value) {
    constexpr double limit = 0x1p53;
    return std::isnan(value) ? 0 : static_cast<std::int64_t>(std::clamp(value, -limit, limit));
}

std::uint32_t bufferSizeFor(const StreamDescription& format, std::uint32_t maxPacketSize) {
    std::uint32_t size = std::max(maxPacketSize, largestBuffer);
    if (format.framesPerPacket != 0) {
        const double packets = format.sampleRate / format.framesPerPacket * bufferSeconds;
        constexpr double most = std::numeric_limits<std::uint32_t>::max();
        size = static_cast<std::uint32_t>(std::min(maxPacketSize * packets, most));
    }
    if (size > largestBuffer && size > maxPacketSize) {
        return largestBuffer;
    }
    return std::max(size, smallestBuffer);
}

void primeBuffers(AQData& data) {
    for (AudioQueueBuffer* buffer : data.buffers) {
        AQBufferCallback(&data, data.queue.get(), buffer);
    }
}

} // namespace

AQData& aqData() {
    // Never destroyed: its queue could not outlive the main loop.
    static auto* const data = new AQData;
    return *data;
}

void CreateQueueForFile(const std::string& path) {
    AQData& data = aqData();
    if (!data.filePath) {
        if (AudioFile::open(path, data.audioFile) != 0) {
            Log::write("Open File Failed");
        }
        const AudioFile* file = data.audioFile.get();
        data.format = file != nullptr ? file->dataFormat() : StreamDescription();
        data.packetCount = file != nullptr ? file->packetCount() : 0;
        data.durationSeconds = file != nullptr ? file->estimatedDuration() : 0;
        data.filePath = path;
    }
    SetupNewQueue();
}

void SetupNewQueue() {
    AQData& data = aqData();
    data.queue = std::make_unique<AudioQueue>(data.format, [&data](AudioQueueBuffer& buffer) {
        AQBufferCallback(&data, data.queue.get(), &buffer);
    });

    const std::uint32_t maxPacketSize = data.audioFile ? data.audioFile->packetSizeUpperBound() : 0;
    data.bufferByteSize = bufferSizeFor(data.format, maxPacketSize);
    // Of packets without a size, none can be read.
    data.packetsPerRead = maxPacketSize != 0 ? data.bufferByteSize / maxPacketSize : 0;

    if (data.audioFile) {
        if (const std::vector<std::uint8_t> cookie = data.audioFile->magicCookie();
            !cookie.empty()) {
            data.queue->setMagicCookie(cookie);
        }
        if (const std::vector<std::uint8_t> layout = data.audioFile->channelLayout();
            !layout.empty()) {
            data.queue->setChannelLayout(layout);
        }
    }
    data.queue->setVolume(currentVolume());
    data.queue->setIsRunningListener(
        [&data] { isRunningProc(&data, data.queue.get(), isRunningProperty); });

    const bool isVariable = data.format.bytesPerPacket == 0 || data.format.framesPerPacket == 0;
    for (AudioQueueBuffer*& buffer : data.buffers) {
        buffer =
            data.queue->allocateBuffer(data.bufferByteSize, isVariable ? data.packetsPerRead : 0);
    }
    data.timeline = data.queue->hasClock() ? data.queue.get() : nullptr;
    if (data.timeline == nullptr) {
        Log::write("errrr timeline");
    }
    data.queue->prepare();
    data.isPrepared = true;
}

void DisposeQueue() {
    AQData& data = aqData();
    data.timeline = nullptr;
    data.buffers = {};
    data.queue.reset();
    data.audioFile.reset();
    data.filePath.reset();
    data.isPrepared = false;
}

void AQBufferCallback(AQData* data, AudioQueue* queue, AudioQueueBuffer* buffer) {
    if (data->isDone || queue == nullptr || buffer == nullptr) {
        return;
    }
    AudioFile::Packets read = {audioNotOpen, 0, 0};
    if (data->audioFile) {
        read = data->audioFile->readPackets(data->currentPacket, data->packetsPerRead,
                                            {buffer->bytes, buffer->capacity});
    }
    if (read.status != 0) {
        writeToStream(STDOUT_FILENO,
                      "AudioFileReadPackets failed: " + std::to_string(read.status) + "\n");
        data->isError = true;
        read.packets = 0;
    }
    if (read.packets == 0) {
        data->isDone = true;
        queue->stopAfterDraining();
        return;
    }
    buffer->byteSize = read.bytes;
    buffer->packetDescriptionCount = read.packets;
    if (S_BufferCallBack()) {
        S_BufferCallBack()(*buffer, data->format, data->currentPacket);
    }
    static_cast<void>(queue->enqueue(*buffer));
    data->currentPacket += read.packets;
}

void isRunningProc(AQData* data, AudioQueue* queue, std::uint32_t /*propertyId*/) {
    const bool isRunning = queue != nullptr && queue->isRunning();
    Log::write("result = 0, state = " + std::string(isRunning ? "1" : "0"));
    if (!isRunning) {
        data->isRunning = false;
        EB::FIRE("EB_PLAY_FINISH");
    }
}

AQPlayer::AQPlayer(const std::filesystem::path& file) : filePath_(file.native()) {
    AQData& data = aqData();
    DisposeQueue();
    data.isRunning = false;
    data.isDone = false;
    data.isError = false;
    activePlayer() = this;
    currentVolume() = 1.0;
    CreateQueueForFile(filePath_);
}

AQPlayer::~AQPlayer() {
    cleanUp();
}

bool AQPlayer::isActive() const {
    return activePlayer() == this;
}

void AQPlayer::cleanUp() {
    if (!isActive()) {
        return;
    }
    DisposeQueue();
    S_BufferCallBack() = nullptr;
    activePlayer() = nullptr;
}

void AQPlayer::setVolume(double volume) {
    if (!isActive()) {
        return;
    }
    if (!std::isnan(volume)) {
        currentVolume() = volume;
    }
    if (aqData().queue) {
        aqData().queue->setVolume(volume);
    }
}

void AQPlayer::play(bool resume) {
    AQData& data = aqData();
    if (filePath_.empty() || !isActive() || !data.queue) {
        return;
    }
    data.isDone = false;
    if (!resume) {
        data.currentPacket = 0;
        // A seek may have filled and enqueued the buffers already.
        data.queue->reset();
        primeBuffers(data);
    }
    data.queue->start();
}

void AQPlayer::pause() {
    if (isActive() && aqData().queue) {
        aqData().queue->pause();
    }
}

void AQPlayer::setPosition(double position, bool play) {
    if (!isActive()) {
        return;
    }
    AQData& data = aqData();
    if (data.queue) {
        data.queue->stopNow();
        if (!isActive()) {
            return; // whoever heard of the stop has closed the file
        }
        data.timeline = nullptr;
        data.queue.reset();
    }
    data.currentPacket = truncated(static_cast<double>(data.packetCount) * position);
    seek_time_ = static_cast<double>(data.currentPacket * 1000) / data.format.sampleRate;
    SetupNewQueue();
    data.isDone = false;
    primeBuffers(data);
    if (play) {
        data.queue->start();
    }
}

double AQPlayer::timeFromPosition(double position) const {
    const AQData& data = aqData();
    return position * static_cast<double>(data.packetCount) * 1000.0 / data.format.sampleRate;
}

double AQPlayer::duration() const {
    return aqData().durationSeconds;
}

double AQPlayer::currentTime() const {
    const AQData& data = aqData();
    const double played = data.timeline != nullptr ? data.timeline->sampleTime() : 0;
    return played * 1000.0 / data.format.sampleRate + seek_time_;
}

void AQPlayer::setDataCB(AQBufferHook hook) {
    S_BufferCallBack() = std::move(hook);
}

} // namespace deckmate
