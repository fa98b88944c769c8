// One recording held wholly in memory: its chunk index, its frames, and the arithmetic on them.
#pragma once

#include "recording/ChunkInfo.h"
#include "recording/SampleRamps.h"
#include "recording/WavArray.h"
#include "recording/WaveHeader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace deckmate {

/// Reads RIFF/WAVE bytes that come from anywhere: whatever they claim, nothing beyond the loaded
/// bytes is read.
///
///     auto reader = WaveFileReader::readFromData(std::move(bytes));
///     if (reader->isValidFile()) {
///         float left, right;
///         for (reader->beginReadSample(); reader->readNextSample(&left, &right);) { ... }
///     }
///
/// Samples are 32-bit floats, full scale 1.0, in pairs left, right (or mid, side). -2.0 marks a
/// sample that the file doesn't have. Gains are in decibels and in the divisor convention: a sample
/// is divided by 10^(x/20), so a user gain of +g is passed as -g. Angles are indices into
/// `SideLevelCoef`.
///
/// Thread: one at a time, but `header()` any. The class operations are reentrant and, once the
/// kernels have been chosen by a first call, lock and allocate nothing.
class WaveFileReader {
public:
    /// The value of a sample that isn't there.
    static constexpr float noSample = -2.0F;

    /// Copies `data`, parses it and returns the reader, also when the file is invalid.
    static std::shared_ptr<WaveFileReader> readFromData(std::span<const std::uint8_t> data);
    /// Takes over `data` instead of copying it.
    static std::shared_ptr<WaveFileReader> readFromData(WavArray&& data);

    // ---- The file and its chunks

    /// Whether the bytes are RIFF/WAVE with a `fmt ` and a `data` chunk. No field is validated.
    bool isValidFile() const { return isValidFile_; }
    /// The first `bext` chunk, or null. Valid until the chunks are set anew.
    const ChunkInfo* getBextChunk() const;
    /// A copy of the part of the chunk's body that is loaded.
    WavArray getChunkData(const ChunkInfo& chunk) const;
    /// The characters of a fixed-width text field up to a zero byte, at most `length`; each
    /// character's code is its byte's value (ISO 8859-1). Bytes that the field lacks are zero.
    static std::string DecodeAsString(std::span<const std::uint8_t> bytes, std::size_t length);

    // ---- Frames

    void beginReadSample() { readDataIdx_ = header_.dataChunkPosition; }
    /// Whether no whole frame is left inside both the `data` chunk and the loaded bytes.
    bool isFinishReadSample() const;
    /// Reads the next frame into the pair. NO at the end, with both set to -2.0.
    bool readNextSample(float* left, float* chanelRight);
    /// Reads up to `maxFrames` frames into interleaved `pairs`; returns how many. The same as that
    /// many calls of `readNextSample`.
    std::size_t readSampleBlock(float* pairs, std::size_t maxFrames);
    /// Reads up to `maxFrames` frames from frame `first` of the `data` chunk on into interleaved
    /// `pairs`; returns how many. Leaves the reading position alone, so that several threads may
    /// read at the same time as long as nothing changes the reader.
    std::size_t readFramesFrom(std::uint64_t first, float* pairs, std::size_t maxFrames) const;
    /// Decodes one frame at the start of `data` (frame bytes up to the end of what may be read).
    /// Channel 0 goes to `left`, every other one to `changeRight`, so the last one wins; a channel
    /// that the file lacks leaves its sample as it was.
    void getSample(float* left, float* changeRight, std::span<const std::uint8_t> data) const;
    /// Whole frames from the start of the `data` chunk that can be read.
    std::uint64_t frameCount() const;
    /// File offset of the next frame.
    std::uint64_t readDataIdx() const { return readDataIdx_; }

    // ---- Sample arithmetic; `bits` (the file's depth) is ignored everywhere

    /// sample / divisor; a divisor of exactly 0 counts as 1.
    static float COM_SetCvtdBSample(int bits, float sample, float divisor);
    /// Divides `sampleLength` floats (2 per frame; an odd count takes in the float behind it) by
    /// 10^(dBL/20) and 10^(dBR/20).
    static void COM_AdjustdB(int bits, float* sample, std::uint64_t sampleLength, double dBL,
                             double dBR);
    /// `sampleLength` frames; the divisor moves from `prevGain` to `curGain` in a straight line
    /// over the first 960 frames, or over the whole buffer if that is shorter.
    static void COM_AdjustdBForPlaying(int bits, float* sample, std::uint64_t sampleLength,
                                       const AdjustDBInfo* info);
    /// The pair M, S becomes M + S k, M - S k with k = SideLevelCoef[angle].
    static void COM_SetCvtMSSample(int bits, float* sample, int angle);
    /// `sampleLength` floats (2 per frame), all at one angle.
    static void COM_MSDecode(int bits, float* sample, std::uint64_t sampleLength, int angle);
    /// `sampleLength` frames; the angle moves one index per frame from `prevAngle` to `curAngle`,
    /// beginning with the first frame.
    static void COM_MSDecodeForPlaying(int bits, float* sample, std::uint64_t sampleLength,
                                       const AdjustAngleInfo* info);
    /// An angle of a control cut toward zero to an index inside the table; 0 for NaN.
    static int truncatedAngle(double angle);

    /// The largest magnitudes, after decoding and gain, of the frames between `from` and `to`
    /// (seconds from the start of the audio); 0 where there are none. Moves the reading position.
    /// The scan ends at the file offset that equals the `data` chunk's length, not at its end.
    void getSampleLevelMeterFrom(double from, double to, float* chanelLeft, float* chanelRight,
                                 double gain, double angle);

    // ---- Life cycle and properties

    /// Frees the file's bytes; nothing can be read afterwards.
    void dispose() { raw_.dispose(); }

    const WavArray& raw() const { return raw_; }
    void setRaw(WavArray&& raw) { raw_ = std::move(raw); }
    /// A copy of the whole record, taken under a lock. Thread: any.
    WaveHeader header() const;
    void setHeader(const WaveHeader& header);
    /// Empty optional: the bytes never were RIFF/WAVE.
    const std::optional<std::vector<ChunkInfo>>& chunks() const { return chunks_; }
    void setChunks(std::optional<std::vector<ChunkInfo>> chunks) { chunks_ = std::move(chunks); }
    /// Whether the recording is raw mid/side. Set by who has read the coding history.
    bool isBoMSFormat() const { return isBoMSFormat_; }
    void setIsBoMSFormat(bool isBoMSFormat) { isBoMSFormat_ = isBoMSFormat; }

private:
    WaveFileReader() = default;

    void parseWave();
    void readFormat(std::uint32_t body);
    std::uint64_t frameBytes() const;
    std::uint64_t framesFrom(std::uint64_t position) const;
    std::size_t readFramesAt(std::uint64_t position, float* pairs, std::size_t maxFrames) const;
    std::span<const std::uint8_t> bytesFrom(std::uint64_t position) const;

    bool isValidFile_ = false;
    std::uint64_t readDataIdx_ = 0;
    std::uint64_t encoding_ = 0;
    bool isBoMSFormat_ = false;
    WavArray raw_;
    std::optional<std::vector<ChunkInfo>> chunks_;
    // Written by the reader's thread only, which may read it without the lock.
    WaveHeader header_;
    mutable std::mutex headerLock_;
};

} // namespace deckmate
