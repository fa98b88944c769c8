#include "recording/WaveFileReader.h"

#include "recording/LittleEndian.h"
#include "recording/RiffTypes.h"
#include "recording/SampleKernels.h"

#include <algorithm>
#include <cstring>

namespace deckmate {

namespace {

constexpr std::uint64_t shortestFile = 48;
// A chunk header behind the file header.
constexpr std::uint32_t shortestWalk = riff::fileHeaderSize + riff::chunkHeaderSize;

/// Bytes of one sample that can be decoded, 0 for any other depth.
std::size_t decodableBytes(std::uint16_t bitsPerSample) {
    switch (bitsPerSample) {
    case 16:
    case 24:
    case 32:
        return bitsPerSample / 8U;
    default:
        return 0;
    }
}

float decoded(const std::uint8_t* bytes, std::uint16_t bitsPerSample, bool isFloat) {
    if (bitsPerSample == 16) {
        // Unsigned: negative samples come out between 1 and 2.
        return static_cast<float>(loadU16(bytes)) * 0x1p-15F;
    }
    if (bitsPerSample == 24) {
        return static_cast<float>(loadS24(bytes)) * 0x1p-23F;
    }
    if (isFloat) {
        return loadF32(bytes);
    }
    return static_cast<float>(static_cast<std::int32_t>(loadU32(bytes))) * 0x1p-64F;
}

} // namespace

std::shared_ptr<WaveFileReader> WaveFileReader::readFromData(std::span<const std::uint8_t> data) {
    return readFromData(WavArray::copyOf(data));
}

std::shared_ptr<WaveFileReader> WaveFileReader::readFromData(WavArray&& data) {
    std::shared_ptr<WaveFileReader> reader(new WaveFileReader);
    reader->setRaw(std::move(data));
    reader->parseWave();
    return reader;
}

void WaveFileReader::parseWave() {
    isValidFile_ = false;
    const std::uint64_t length = raw_.length();
    if (length < shortestFile) {
        return;
    }
    const std::uint8_t* bytes = raw_.bytes();
    header_.ChunkID = loadU32(bytes);
    header_.ChunkSize = loadU32(bytes + 4);
    header_.Format = loadU32(bytes + 8);
    if (header_.ChunkID != riff::RIFF || header_.Format != riff::WAVE) {
        return;
    }

    const std::uint64_t end = std::min<std::uint64_t>(length, header_.ChunkSize + 8U);
    chunks_.emplace();
    if (end >= shortestWalk) {
        std::uint32_t pos = riff::fileHeaderSize;
        while (pos <= end - riff::chunkHeaderSize) {
            const std::uint32_t id = loadU32(bytes + pos);
            const std::uint32_t size = loadU32(bytes + pos + 4);
            const std::uint32_t body = pos + riff::chunkHeaderSize;
            if (id == riff::FMT) {
                header_.Subchunk1ID = riff::FMT;
                header_.Subchunk1Size = size;
                readFormat(body);
            } else if (id == riff::DATA) {
                header_.dataChunkPosition = body;
                header_.dataChunkLength = size;
                header_.dataChunkEnd = body + size;
            } else if (length - body < size) {
                break;
            }
            chunks_->push_back({id, size, body});
            // Odd sizes are followed without their pad byte, as recordings have always been read.
            const std::uint32_t next = body + size;
            if (next <= pos) {
                break; // a size that wraps around would walk the same chunks for ever
            }
            pos = next;
        }
    }
    isValidFile_ = header_.dataChunkPosition != 0 && header_.Subchunk1ID == riff::FMT;
}

void WaveFileReader::readFormat(std::uint32_t body) {
    std::uint8_t fields[16] = {};
    const std::span<const std::uint8_t> loaded = bytesFrom(body);
    std::copy_n(loaded.begin(), std::min(loaded.size(), sizeof fields), fields);
    header_.AudioFormat = loadU16(fields);
    header_.NumChannels = loadU16(fields + 2);
    header_.SampleRate = loadU32(fields + 4);
    header_.ByteRate = loadU32(fields + 8);
    header_.BlockAlign = loadU16(fields + 12);
    header_.BitsPerSample = loadU16(fields + 14);
    encoding_ = header_.AudioFormat;
}

const ChunkInfo* WaveFileReader::getBextChunk() const {
    if (!chunks_) {
        return nullptr;
    }
    const auto found = std::find_if(chunks_->begin(), chunks_->end(), [](const ChunkInfo& chunk) {
        return chunk.chunkID == riff::BEXT;
    });
    return found == chunks_->end() ? nullptr : &*found;
}

WavArray WaveFileReader::getChunkData(const ChunkInfo& chunk) const {
    const std::span<const std::uint8_t> loaded = bytesFrom(chunk.streamPos);
    return WavArray::copyOf(loaded.first(std::min<std::size_t>(chunk.chunkSize, loaded.size())));
}

std::string WaveFileReader::DecodeAsString(std::span<const std::uint8_t> bytes,
                                           std::size_t length) {
    const auto field = bytes.first(std::min(length, bytes.size()));
    return {field.begin(), std::find(field.begin(), field.end(), std::uint8_t{0})};
}

std::uint64_t WaveFileReader::frameBytes() const {
    return std::uint64_t{header_.BitsPerSample / 8U} * header_.NumChannels;
}

std::uint64_t WaveFileReader::framesFrom(std::uint64_t position) const {
    const std::uint64_t frame = frameBytes();
    const std::uint64_t end = std::min<std::uint64_t>(header_.dataChunkEnd, raw_.length());
    return frame == 0 || position >= end ? 0 : (end - position) / frame;
}

std::span<const std::uint8_t> WaveFileReader::bytesFrom(std::uint64_t position) const {
    const std::uint64_t start = std::min(position, raw_.length());
    return {raw_.bytes() + start, raw_.length() - start};
}

bool WaveFileReader::isFinishReadSample() const {
    return framesFrom(readDataIdx_) == 0;
}

std::uint64_t WaveFileReader::frameCount() const {
    return framesFrom(header_.dataChunkPosition);
}

bool WaveFileReader::readNextSample(float* left, float* chanelRight) {
    *left = noSample;
    *chanelRight = noSample;
    if (isFinishReadSample()) {
        return false;
    }
    const std::span<const std::uint8_t> frame = bytesFrom(readDataIdx_);
    readDataIdx_ += frameBytes();
    getSample(left, chanelRight, frame);
    return true;
}

std::size_t WaveFileReader::readSampleBlock(float* pairs, std::size_t maxFrames) {
    const std::size_t frames = readFramesAt(readDataIdx_, pairs, maxFrames);
    readDataIdx_ += frames * frameBytes();
    return frames;
}

std::size_t WaveFileReader::readFramesFrom(std::uint64_t first, float* pairs,
                                           std::size_t maxFrames) const {
    return first < frameCount()
               ? readFramesAt(header_.dataChunkPosition + first * frameBytes(), pairs, maxFrames)
               : 0;
}

std::size_t WaveFileReader::readFramesAt(std::uint64_t position, float* pairs,
                                         std::size_t maxFrames) const {
    const std::size_t frames = std::min<std::uint64_t>(maxFrames, framesFrom(position));
    if (frames == 0) {
        return 0;
    }
    const std::uint8_t* bytes = bytesFrom(position).data();
    const bool isStereo = header_.NumChannels == 2;
    if (isStereo && header_.BitsPerSample == 24) {
        SampleKernels::active().unpackPcm24(bytes, pairs, 2 * frames);
    } else if (isStereo && header_.BitsPerSample == 32 && encoding_ == riff::ieeeFloat) {
        std::memcpy(pairs, bytes, frames * frameBytes());
    } else {
        std::fill_n(pairs, 2 * frames, noSample);
        for (std::size_t k = 0; k < frames; ++k) {
            getSample(&pairs[2 * k], &pairs[2 * k + 1], bytesFrom(position + k * frameBytes()));
        }
    }
    return frames;
}

void WaveFileReader::getSample(float* left, float* changeRight,
                               std::span<const std::uint8_t> data) const {
    const std::size_t sampleBytes = decodableBytes(header_.BitsPerSample);
    if (sampleBytes == 0) {
        return;
    }
    const bool isFloat = encoding_ == riff::ieeeFloat;
    std::size_t position = 0;
    std::size_t runningStep = 0;
    for (std::uint32_t channel = 0; channel < header_.NumChannels; ++channel) {
        if (position + sampleBytes > data.size()) {
            return; // the following channels lie even further out
        }
        float* destination = channel == 0 ? left : changeRight;
        *destination = decoded(data.data() + position, header_.BitsPerSample, isFloat);
        runningStep += sampleBytes;
        position += runningStep;
    }
}

WaveHeader WaveFileReader::header() const {
    const std::lock_guard guard(headerLock_);
    return header_;
}

void WaveFileReader::setHeader(const WaveHeader& header) {
    const std::lock_guard guard(headerLock_);
    header_ = header;
}

} // namespace deckmate
