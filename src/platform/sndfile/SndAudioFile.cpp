#include "platform/sndfile/SndAudioFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace deckmate {

namespace {

struct SampleKind {
    std::uint32_t bits;
    std::uint32_t flags;
};

std::optional<SampleKind> kindOf(int format) {
    const int container = format & SF_FORMAT_TYPEMASK;
    if ((container != SF_FORMAT_WAV && container != SF_FORMAT_WAVEX) ||
        (format & SF_FORMAT_ENDMASK) == SF_ENDIAN_BIG) {
        return std::nullopt;
    }
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_U8:
        return SampleKind{8, 0};
    case SF_FORMAT_PCM_16:
        return SampleKind{16, StreamDescription::signedIntegerFlag};
    case SF_FORMAT_PCM_24:
        return SampleKind{24, StreamDescription::signedIntegerFlag};
    case SF_FORMAT_PCM_32:
        return SampleKind{32, StreamDescription::signedIntegerFlag};
    case SF_FORMAT_FLOAT:
        return SampleKind{32, StreamDescription::floatFlag};
    case SF_FORMAT_DOUBLE:
        return SampleKind{64, StreamDescription::floatFlag};
    default:
        return std::nullopt;
    }
}

/// The bits that the file says are used of each sample, where the library tells only in how many
/// bytes they lie.
std::uint32_t bitsUsed(SNDFILE* file, const SampleKind& kind) {
    SF_CHUNK_INFO chunk = {};
    std::memcpy(chunk.id, "fmt ", 4);
    chunk.id_size = 4;
    SF_CHUNK_ITERATOR* const found = sf_get_chunk_iterator(file, &chunk);
    std::array<std::uint8_t, 40> format = {};
    chunk.data = format.data();
    chunk.datalen = format.size();
    constexpr std::size_t bitsAt = 14; // RIFF/WAVE: wBitsPerSample
    if (found == nullptr || sf_get_chunk_data(found, &chunk) != SF_ERR_NO_ERROR) {
        return kind.bits;
    }
    const std::uint32_t bits = format[bitsAt] | std::uint32_t{format[bitsAt + 1]} << 8;
    return bits > kind.bits - 8 && bits < kind.bits ? bits : kind.bits;
}

struct Close {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using OpenFile = std::unique_ptr<SNDFILE, Close>;

class SndAudioFile final : public AudioFile {
public:
    SndAudioFile(OpenFile file, const SF_INFO& info, const SampleKind& kind)
        : file_(std::move(file)), frames_(static_cast<std::uint64_t>(info.frames)) {
        format_.sampleRate = info.samplerate;
        format_.formatId = StreamDescription::linearPcm;
        format_.formatFlags = kind.flags | StreamDescription::packedFlag;
        format_.channelsPerFrame = static_cast<std::uint32_t>(info.channels);
        format_.bitsPerChannel = bitsUsed(file_.get(), kind);
        format_.bytesPerFrame = kind.bits / 8 * format_.channelsPerFrame;
        format_.bytesPerPacket = format_.bytesPerFrame;
        format_.framesPerPacket = 1;
    }

    StreamDescription dataFormat() const override { return format_; }
    std::uint64_t packetCount() const override { return frames_; }
    double estimatedDuration() const override {
        return static_cast<double>(frames_) / format_.sampleRate;
    }
    std::uint32_t packetSizeUpperBound() const override { return format_.bytesPerPacket; }
    std::vector<std::uint8_t> magicCookie() const override { return {}; }

    std::vector<std::uint8_t> channelLayout() const override {
        std::vector<std::uint8_t> map(format_.channelsPerFrame * sizeof(int));
        const int isKnown = sf_command(file_.get(), SFC_GET_CHANNEL_MAP_INFO, map.data(),
                                       static_cast<int>(map.size()));
        return isKnown == SF_TRUE ? map : std::vector<std::uint8_t>();
    }

    Packets readPackets(std::int64_t first, std::uint32_t count,
                        std::span<std::uint8_t> room) override {
        const std::uint32_t packetBytes = format_.bytesPerPacket;
        const auto wanted =
            std::min<std::uint64_t>({count, room.size() / packetBytes,
                                     std::numeric_limits<std::uint32_t>::max() / packetBytes});
        if (first < 0) {
            return {audioReadFailed, 0, 0};
        }
        if (static_cast<std::uint64_t>(first) >= frames_ || wanted == 0) {
            return {};
        }
        errno = 0;
        if (sf_seek(file_.get(), first, SEEK_SET) != first) {
            return {error(), 0, 0};
        }
        const sf_count_t got =
            sf_read_raw(file_.get(), room.data(), static_cast<sf_count_t>(wanted * packetBytes));
        if (sf_error(file_.get()) != SF_ERR_NO_ERROR) {
            return {error(), 0, 0};
        }
        // A file that was cut short may end inside a packet.
        const auto packets = static_cast<std::uint32_t>(std::max<sf_count_t>(got, 0) / packetBytes);
        return {0, packets * packetBytes, packets};
    }

private:
    AudioStatus error() const {
        const bool isSystems = sf_error(file_.get()) == SF_ERR_SYSTEM && errno != 0;
        return isSystems ? errno : static_cast<AudioStatus>(audioReadFailed);
    }

    OpenFile file_;
    StreamDescription format_;
    std::uint64_t frames_;
};

} // namespace

AudioStatus openSndAudioFile(const std::filesystem::path& path, std::unique_ptr<AudioFile>& file) {
    // A pipe of that name must not hold up the caller.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor < 0) {
        return errno;
    }
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        return audioUnsupported;
    }
    SF_INFO info = {};
    OpenFile opened(sf_open_fd(descriptor, SFM_READ, &info, SF_TRUE));
    if (opened == nullptr) {
        return audioUnsupported;
    }
    const std::optional<SampleKind> kind = kindOf(info.format);
    if (!kind || info.channels <= 0 || info.samplerate <= 0 || info.frames < 0) {
        return audioUnsupported;
    }
    file = std::make_unique<SndAudioFile>(std::move(opened), info, *kind);
    return 0;
}

} // namespace deckmate
