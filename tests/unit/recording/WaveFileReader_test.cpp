// The chunk walk, the header record and the frames of WaveFileReader.
#include "recording/WaveFileReader.h"

#include "support/Bytes.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <thread>

namespace deckmate {
namespace {

using namespace test;

constexpr std::uint32_t fmtId = 0x20746D66;
constexpr std::uint32_t dataId = 0x61746164;

std::shared_ptr<WaveFileReader> reading(const Bytes& bytes) {
    return WaveFileReader::readFromData(bytes);
}

Bytes formatChunk(const Format& format = {}) {
    return chunk("fmt ", formatBody(format));
}

/// `fmt ` and `data` only, padded in front to the shortest length that is parsed.
std::shared_ptr<WaveFileReader> samples(const Bytes& bytes, const Format& format = {}) {
    return reading(riff(chunk("JUNK", zeros(8)) + formatChunk(format) + chunk("data", bytes)));
}

std::vector<std::string> identifiers(const WaveFileReader& reader) {
    std::vector<std::string> names;
    for (const ChunkInfo& info : reader.chunks().value()) {
        std::string name;
        for (int shift = 0; shift < 32; shift += 8) {
            name += static_cast<char>(info.chunkID >> shift);
        }
        names.push_back(name);
    }
    return names;
}

using Names = std::vector<std::string>;

struct Frame {
    float left;
    float right;
    bool operator==(const Frame&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Frame& frame) {
    return stream << "(" << frame.left << ", " << frame.right << ")";
}

std::vector<Frame> allFrames(WaveFileReader& reader) {
    std::vector<Frame> frames;
    Frame frame{};
    for (reader.beginReadSample(); reader.readNextSample(&frame.left, &frame.right);) {
        frames.push_back(frame);
    }
    return frames;
}

using Frames = std::vector<Frame>;

// ---- Refusals

TEST(WaveFileReaderWalk, FortySevenBytesAreNoRecording) {
    Bytes bytes = riff(formatChunk() + chunk("data", zeros(10)));
    bytes.resize(47);
    const auto reader = reading(bytes);
    EXPECT_FALSE(reader->isValidFile());
    EXPECT_EQ(reader->getBextChunk(), nullptr);
    EXPECT_FALSE(reader->chunks().has_value());
}

TEST(WaveFileReaderWalk, FortyEightBytesCanBeARecording) {
    const Bytes bytes = riff(formatChunk() + chunk("data", zeros(4)));
    ASSERT_EQ(bytes.size(), 48U);
    EXPECT_TRUE(reading(bytes)->isValidFile());
}

TEST(WaveFileReaderWalk, NoBytesAreNoRecording) {
    EXPECT_FALSE(reading({})->isValidFile());
    EXPECT_EQ(reading({})->getBextChunk(), nullptr);
}

TEST(WaveFileReaderWalk, OtherFirstBytesThanRiffAreRefused) {
    for (const char* id : {"RIFX", "RF64", "riff", "FORM"}) {
        Bytes bytes = riff(formatChunk() + chunk("data", zeros(40)));
        std::copy_n(id, 4, bytes.begin());
        const auto reader = reading(bytes);
        EXPECT_FALSE(reader->isValidFile()) << id;
        EXPECT_EQ(reader->getBextChunk(), nullptr) << id;
        EXPECT_FALSE(reader->chunks().has_value()) << id;
    }
}

TEST(WaveFileReaderWalk, OtherFormsThanWaveAreRefused) {
    Bytes bytes = riff(formatChunk() + chunk("data", zeros(40)));
    bytes[8] = 'A';
    EXPECT_FALSE(reading(bytes)->isValidFile());
}

TEST(WaveFileReaderWalk, WithoutDataItIsInvalidButIndexed) {
    const auto reader = reading(riff(formatChunk() + chunk("JUNK", zeros(20))));
    EXPECT_FALSE(reader->isValidFile());
    EXPECT_EQ(identifiers(*reader), (Names{"fmt ", "JUNK"}));
}

TEST(WaveFileReaderWalk, WithoutFormatItIsInvalid) {
    EXPECT_FALSE(reading(riff(chunk("data", zeros(40))))->isValidFile());
}

// ---- Header and index

TEST(WaveFileReaderWalk, HoldsTheHeaderFieldsOfTheFile) {
    const Format format{.tag = 3, .channels = 2, .rate = 96000, .bits = 32};
    const Bytes bytes = recording(floats({0.5F, 0.25F}), format);
    const WaveHeader header = reading(bytes)->header();
    EXPECT_EQ(header.ChunkID, 0x46464952U);
    EXPECT_EQ(header.ChunkSize, bytes.size() - 8);
    EXPECT_EQ(header.Format, 0x45564157U);
    EXPECT_EQ(header.Subchunk1ID, fmtId);
    EXPECT_EQ(header.Subchunk1Size, 16U);
    EXPECT_EQ(header.AudioFormat, 3);
    EXPECT_EQ(header.NumChannels, 2);
    EXPECT_EQ(header.SampleRate, 96000U);
    EXPECT_EQ(header.ByteRate, 768000U);
    EXPECT_EQ(header.BlockAlign, 8);
    EXPECT_EQ(header.BitsPerSample, 32);
    EXPECT_EQ(header.dataChunkPosition, samplesAt());
    EXPECT_EQ(header.dataChunkLength, 8U);
    EXPECT_EQ(header.dataChunkEnd, samplesAt() + 8);
}

TEST(WaveFileReaderWalk, IndexesEveryChunkInFileOrder) {
    const auto reader = reading(riff(chunk("JUNK", zeros(28)) + formatChunk() +
                                     chunk("data", zeros(6)) + chunk("LIST", zeros(2))));
    const std::vector<ChunkInfo> expected{{.chunkID = 0x4B4E554A, .chunkSize = 28, .streamPos = 20},
                                          {.chunkID = fmtId, .chunkSize = 16, .streamPos = 56},
                                          {.chunkID = dataId, .chunkSize = 6, .streamPos = 80},
                                          {.chunkID = 0x5453494C, .chunkSize = 2, .streamPos = 94}};
    EXPECT_EQ(reader->chunks(), expected);
}

TEST(WaveFileReaderWalk, DataBeforeFormatIsIndexedTheSameWay) {
    const auto reader = reading(riff(chunk("data", pcm24({1, 2, 3, 4})) + formatChunk()));
    EXPECT_TRUE(reader->isValidFile());
    EXPECT_EQ(identifiers(*reader), (Names{"data", "fmt "}));
    EXPECT_EQ(allFrames(*reader), (Frames{{0x1p-23F, 0x2p-23F}, {0x3p-23F, 0x4p-23F}}));
}

TEST(WaveFileReaderWalk, ASecondFormatAndASecondDataWin) {
    const auto reader = reading(riff(formatChunk({.rate = 44100}) + chunk("data", zeros(6)) +
                                     formatChunk({.rate = 96000}) + chunk("data", pcm24({4, 5}))));
    EXPECT_EQ(reader->header().SampleRate, 96000U);
    EXPECT_EQ(identifiers(*reader), (Names{"fmt ", "data", "fmt ", "data"}));
    EXPECT_EQ(allFrames(*reader), (Frames{{0x4p-23F, 0x5p-23F}}));
}

// The byte that pads an odd chunk is taken for the first of the next header.
TEST(WaveFileReaderWalk, APadByteLeadsTheWalkAstray) {
    const auto reader = reading(
        riff(formatChunk() + chunk("bext", zeros(603)) + zeros(1) + chunk("data", zeros(12))));
    EXPECT_FALSE(reader->isValidFile());
    EXPECT_EQ(identifiers(*reader), (Names{"fmt ", "bext"}));
}

TEST(WaveFileReaderWalk, AnOddChunkWithoutPadByteIsFollowed) {
    const auto reader =
        reading(riff(formatChunk() + chunk("bext", zeros(603)) + chunk("data", zeros(12))));
    EXPECT_TRUE(reader->isValidFile());
}

// ---- Declared sizes that don't fit

TEST(WaveFileReaderWalk, ARiffSizeBeyondTheFileEndsAtTheFile) {
    const auto reader =
        reading(riff(formatChunk() + chunk("data", zeros(12)) + chunk("LIST", {}), 0x10000000));
    EXPECT_EQ(identifiers(*reader), (Names{"fmt ", "data", "LIST"}));
}

TEST(WaveFileReaderWalk, ARiffSizeInsideTheFileEndsTheWalkThere) {
    // Up to the end of `fmt `, and then one byte less than the next header needs.
    const std::uint32_t size = 12 + 24 - 8 + 7;
    const auto reader = reading(riff(formatChunk() + chunk("data", zeros(12)), size));
    EXPECT_EQ(identifiers(*reader), (Names{"fmt "}));
    EXPECT_FALSE(reader->isValidFile());
    EXPECT_TRUE(reading(riff(formatChunk() + chunk("data", zeros(12)), size + 1))->isValidFile());
}

TEST(WaveFileReaderWalk, RiffSizesThatWrapLimitTheWalkToTheFirstBytes) {
    for (const std::uint32_t size : {0xFFFFFFF8U, 0xFFFFFFFFU, 0U, 11U}) {
        const auto reader = reading(riff(formatChunk() + chunk("data", zeros(12)), size));
        EXPECT_FALSE(reader->isValidFile()) << size;
        EXPECT_EQ(identifiers(*reader), Names{}) << size;
    }
}

TEST(WaveFileReaderWalk, OneWholeChunkHeaderIsTheLeastToWalk) {
    const Bytes chunks = chunk("none", {}) + formatChunk() + chunk("data", zeros(12));
    EXPECT_EQ(identifiers(*reading(riff(chunks, 11))), Names{}); // ends at 19
    EXPECT_EQ(identifiers(*reading(riff(chunks, 12))), (Names{"none"}));
}

TEST(WaveFileReaderWalk, AnUnknownChunkBeyondTheFileEndsTheWalk) {
    const auto reader =
        reading(riff(formatChunk() + chunk("data", zeros(12)) + chunk("LIST", zeros(4), 5)));
    EXPECT_TRUE(reader->isValidFile());
    EXPECT_EQ(identifiers(*reader), (Names{"fmt ", "data"}));
}

TEST(WaveFileReaderWalk, AnUnknownChunkUpToTheLastByteIsIndexed) {
    const auto reader =
        reading(riff(formatChunk() + chunk("data", zeros(12)) + chunk("LIST", zeros(4))));
    EXPECT_EQ(identifiers(*reader), (Names{"fmt ", "data", "LIST"}));
}

TEST(WaveFileReaderWalk, DataBeyondTheFileIsAcceptedAsDeclared) {
    const auto reader = reading(riff(formatChunk() + chunk("data", zeros(14), 5000)));
    EXPECT_TRUE(reader->isValidFile());
    EXPECT_EQ(reader->header().dataChunkLength, 5000U);
    EXPECT_EQ(allFrames(*reader).size(), 2U); // fourteen bytes are loaded
}

// Each of these next positions repeats a chunk, goes backwards or lies behind the end.
TEST(WaveFileReaderWalk, SizesThatWrapEndTheWalk) {
    for (const char* id : {"fmt ", "data"}) {
        for (const std::uint32_t size : {0xFFFFFFF8U, 0xFFFFFFF0U, 0x7FFFFFFFU, 0x80000000U}) {
            const auto reader = reading(riff(chunk(id, zeros(40), size) + chunk("data", zeros(4))));
            EXPECT_EQ(identifiers(*reader), Names{id}) << size;
        }
    }
}

// One byte back from the body still lies behind the header's start.
TEST(WaveFileReaderWalk, ASizeThatWrapsIntoItsOwnHeaderGoesOn) {
    const auto reader = reading(riff(chunk("data", zeros(28), 0xFFFFFFFF)));
    const std::vector<ChunkInfo> expected{
        {.chunkID = dataId, .chunkSize = 0xFFFFFFFF, .streamPos = 20},
        {.chunkID = 0xFF, .chunkSize = 0, .streamPos = 27},
        {.chunkID = 0, .chunkSize = 0, .streamPos = 35},
        {.chunkID = 0, .chunkSize = 0, .streamPos = 43}};
    EXPECT_EQ(reader->chunks(), expected);
}

TEST(WaveFileReaderWalk, AWrappedDataEndHoldsNoFrames) {
    const auto reader = reading(riff(formatChunk() + chunk("data", zeros(12), 0xFFFFFFFF)));
    EXPECT_EQ(reader->header().dataChunkEnd, 43U);
    EXPECT_EQ(reader->frameCount(), 0U);
    EXPECT_TRUE(allFrames(*reader).empty());
}

TEST(WaveFileReaderWalk, FormatBytesBehindTheFileReadAsZero) {
    for (std::size_t loaded = 0; loaded < 16; ++loaded) {
        Bytes format = formatBody({.tag = 3, .channels = 2, .rate = 48000, .bits = 32});
        format.resize(loaded);
        const auto reader = reading(riff(chunk("data", zeros(40)) + chunk("fmt ", format, 16)));
        const WaveHeader header = reader->header();
        EXPECT_TRUE(reader->isValidFile());
        EXPECT_EQ(header.AudioFormat, loaded >= 1 ? 3 : 0) << loaded;
        EXPECT_EQ(header.SampleRate, loaded >= 6 ? 48000U : loaded == 5 ? 0x80U : 0U) << loaded;
        EXPECT_EQ(header.BitsPerSample, loaded >= 15 ? 32 : 0) << loaded;
    }
}

TEST(WaveFileReaderWalk, AShortFormatChunkReadsIntoWhatFollows) {
    const auto reader = reading(riff(chunk("fmt ", {}) + chunk("data", zeros(20))));
    EXPECT_EQ(reader->header().AudioFormat, 0x6164); // "da"
    EXPECT_EQ(reader->header().Subchunk1Size, 0U);
}

TEST(WaveFileReaderWalk, EmptyChunksToTheEndOfTheFileAreWalked) {
    Bytes chunks = formatChunk() + chunk("data", {});
    for (int i = 0; i < 1000; ++i) {
        chunks = chunks + chunk("none", {});
    }
    EXPECT_EQ(reading(riff(chunks))->chunks()->size(), 1002U);
}

// ---- Chunk contents and texts

TEST(WaveFileReaderChunks, TheFirstBextChunkIsFound) {
    const auto reader = reading(riff(formatChunk() + chunk("bext", text("one")) +
                                     chunk("bext", text("two")) + chunk("data", zeros(12))));
    ASSERT_NE(reader->getBextChunk(), nullptr);
    const WavArray body = reader->getChunkData(*reader->getBextChunk());
    EXPECT_EQ(Bytes(body.bytes(), body.bytes() + body.length()), text("one"));
}

TEST(WaveFileReaderChunks, AFileWithoutBextChunkHasNone) {
    EXPECT_EQ(samples(zeros(12))->getBextChunk(), nullptr);
}

TEST(WaveFileReaderChunks, ACopyEndsWithTheLoadedBytes) {
    const auto reader = reading(riff(formatChunk() + chunk("data", zeros(14), 0x10000)));
    EXPECT_EQ(reader->getChunkData(reader->chunks()->back()).length(), 14U);
    EXPECT_EQ(reader->getChunkData({0, 100, 0xFFFFFFF0}).length(), 0U);
}

TEST(WaveFileReaderChunks, TextsEndAtAZeroByteOrTheFieldsEnd) {
    const auto decoded = [](std::string_view characters, std::size_t length) {
        return WaveFileReader::DecodeAsString(test::text(characters), length);
    };
    EXPECT_EQ(decoded(std::string_view("\0abc", 4), 4), "");
    EXPECT_EQ(decoded(std::string_view("ab\0c", 4), 4), "ab");
    EXPECT_EQ(decoded("abcdef", 4), "abcd");
    EXPECT_EQ(decoded("ab", 4), "ab"); // the field is cut off
    EXPECT_EQ(decoded("\xE9\x01\xFF", 3), "\xE9\x01\xFF");
    EXPECT_EQ(decoded("", 0), "");
}

// ---- Frames

TEST(WaveFileReaderFrames, TwentyFourBitSamplesAreSigned) {
    EXPECT_EQ(allFrames(*samples(pcm24({0x7FFFFF, -0x800000, -1, 0x400000}))),
              (Frames{{0.99999988F, -1.0F}, {-0x1p-23F, 0.5F}}));
}

TEST(WaveFileReaderFrames, SixteenBitSamplesAreReadUnsigned) {
    const Bytes bytes = le16(0x7FFF) + le16(0xFFFF) + le16(0x8000) + le16(0);
    EXPECT_EQ(allFrames(*samples(bytes, {.bits = 16})),
              (Frames{{32767.0F / 32768.0F, 65535.0F / 32768.0F}, {1.0F, 0.0F}}));
}

TEST(WaveFileReaderFrames, FloatSamplesAreTakenAsTheyAre) {
    const Bytes bytes = floats({-0.0F, 1e38F, std::numeric_limits<float>::infinity(), 1e-42F});
    EXPECT_EQ(allFrames(*samples(bytes, {.tag = 3, .bits = 32})),
              (Frames{{-0.0F, 1e38F}, {std::numeric_limits<float>::infinity(), 1e-42F}}));
}

TEST(WaveFileReaderFrames, ThirtyTwoBitIntegersComeOutAlmostSilent) {
    const Bytes bytes = le32(0x80000000) + le32(0x7FFFFFFF);
    EXPECT_EQ(allFrames(*samples(bytes, {.tag = 1, .bits = 32})),
              (Frames{{-0x1p-33F, 0x1p-33F}})); // 2^31 - 1 rounds up to 2^31 as a float
}

TEST(WaveFileReaderFrames, OnlyFormatThreeIsFloat) {
    const Bytes bytes = floats({1.0F, 1.0F});
    EXPECT_EQ(allFrames(*samples(bytes, {.tag = 0xFFFE, .bits = 32})),
              (Frames{{0x3F800000 * 0x1p-64F, 0x3F800000 * 0x1p-64F}}));
}

TEST(WaveFileReaderFrames, TheLastFormatDecidesWhetherItIsFloat) {
    const auto reader =
        reading(riff(formatChunk({.tag = 3, .bits = 32}) + formatChunk({.tag = 1, .bits = 32}) +
                     chunk("data", floats({1.0F, 1.0F}))));
    EXPECT_EQ(allFrames(*reader), (Frames{{0x3F800000 * 0x1p-64F, 0x3F800000 * 0x1p-64F}}));
}

TEST(WaveFileReaderFrames, MonoHasNoRightSample) {
    EXPECT_EQ(allFrames(*samples(pcm24({0x400000, -0x400000}), {.channels = 1})),
              (Frames{{0.5F, -2.0F}, {-0.5F, -2.0F}}));
}

TEST(WaveFileReaderFrames, OtherDepthsAdvanceWithoutSamples) {
    for (const std::uint16_t bits : std::initializer_list<std::uint16_t>{8, 12, 20, 40, 64}) {
        const std::size_t frameBytes = bits / 8U * 2;
        const auto reader = samples(zeros(3 * frameBytes + 1), {.bits = bits});
        EXPECT_EQ(allFrames(*reader), Frames(3, {-2.0F, -2.0F})) << bits;
    }
}

// Channel c is read c(c+1)/2 samples behind the frame's start, the last one stays.
TEST(WaveFileReaderFrames, MoreChannelsAreReadWithGrowingSteps) {
    const Bytes bytes = pcm24({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(allFrames(*samples(bytes, {.channels = 3})),
              (Frames{{0x0p-23F, 0x3p-23F}, {0x3p-23F, 0x6p-23F}, {0x6p-23F, 0x9p-23F}}));
    EXPECT_EQ(allFrames(*samples(bytes, {.channels = 4})),
              (Frames{{0x0p-23F, 0x6p-23F}, {0x4p-23F, 0x7p-23F}})); // sample 10 doesn't exist
}

TEST(WaveFileReaderFrames, StepsMayReachIntoTheChunkBehindTheData) {
    const auto reader = reading(riff(chunk("JUNK", zeros(8)) + formatChunk({.channels = 3}) +
                                     chunk("data", pcm24({1, 2, 3})) + chunk("LIST", zeros(8))));
    // Sample 3 is the first three characters of "LIST".
    EXPECT_EQ(allFrames(*reader), (Frames{{0x1p-23F, 0x53494C * 0x1p-23F}}));
}

TEST(WaveFileReaderFrames, ATrailingPartOfAFrameIsNeverRead) {
    const auto reader = samples(zeros(17));
    reader->beginReadSample();
    EXPECT_FALSE(reader->isFinishReadSample());
    Frame frame{};
    EXPECT_TRUE(reader->readNextSample(&frame.left, &frame.right));
    EXPECT_FALSE(reader->isFinishReadSample());
    EXPECT_TRUE(reader->readNextSample(&frame.left, &frame.right));
    EXPECT_TRUE(reader->isFinishReadSample());
    EXPECT_FALSE(reader->readNextSample(&frame.left, &frame.right));
    EXPECT_EQ(frame, (Frame{-2.0F, -2.0F}));
}

TEST(WaveFileReaderFrames, FramesOfNoBytesAreNoFrames) {
    for (const Format format : {Format{.channels = 0}, Format{.bits = 0}, Format{.bits = 7}}) {
        const auto reader = samples(zeros(100), format);
        EXPECT_TRUE(reader->isFinishReadSample());
        EXPECT_EQ(reader->frameCount(), 0U);
        EXPECT_TRUE(allFrames(*reader).empty());
    }
}

TEST(WaveFileReaderFrames, TheLargestFrameIsReadOnlyIfItIsThere) {
    const auto reader = samples(zeros(1000), {.channels = 65535, .bits = 65535});
    EXPECT_TRUE(allFrames(*reader).empty());
}

TEST(WaveFileReaderFrames, ManyChannelsEndWithTheLoadedBytes) {
    const auto reader = samples(zeros(65535 * 3), {.channels = 65535});
    EXPECT_EQ(allFrames(*reader), (Frames{{0.0F, 0.0F}}));
}

TEST(WaveFileReaderFrames, BlocksEqualSingleFrames) {
    const std::vector<Format> formats{{},           {.channels = 1},        {.channels = 3},
                                      {.bits = 16}, {.tag = 3, .bits = 32}, {.tag = 1, .bits = 32},
                                      {.bits = 8}};
    Bytes bytes;
    for (std::uint32_t i = 0; i < 300; ++i) {
        bytes = bytes + le32(i * 2654435761U % 0x70000000);
    }
    for (const Format& format : formats) {
        const auto reader = samples(bytes, format);
        const Frames singly = allFrames(*reader);
        reader->beginReadSample();
        Frames inBlocks;
        std::vector<float> block(2 * 37);
        while (const std::size_t count = reader->readSampleBlock(block.data(), 37)) {
            for (std::size_t k = 0; k < count; ++k) {
                inBlocks.push_back({block[2 * k], block[2 * k + 1]});
            }
        }
        EXPECT_EQ(inBlocks, singly) << format.bits << " bits, " << format.channels << " channels";
        EXPECT_EQ(reader->frameCount(), singly.size());
        EXPECT_TRUE(reader->isFinishReadSample());
    }
}

TEST(WaveFileReaderFrames, FramesAreReadFromAnywhereWithoutMoving) {
    const auto reader = samples(pcm24({0, 1, 2, 3, 4, 5}));
    const std::uint64_t position = reader->readDataIdx();
    std::vector<float> pairs(6, 9.0F);
    EXPECT_EQ(reader->readFramesFrom(1, pairs.data(), 3), 2U);
    EXPECT_EQ(pairs, (std::vector<float>{0x2p-23F, 0x3p-23F, 0x4p-23F, 0x5p-23F, 9.0F, 9.0F}));
    EXPECT_EQ(reader->readFramesFrom(3, pairs.data(), 3), 0U);
    EXPECT_EQ(reader->readFramesFrom(~std::uint64_t{0}, pairs.data(), 3), 0U);
    EXPECT_EQ(reader->readDataIdx(), position);
}

TEST(WaveFileReaderFrames, AFrameLentFromOutsideIsReadWithinItsBytes) {
    const auto reader = samples(zeros(12));
    Frame frame{-2.0F, -2.0F};
    reader->getSample(&frame.left, &frame.right, pcm24({0x400000}));
    EXPECT_EQ(frame, (Frame{0.5F, -2.0F}));
}

// ---- Life cycle and properties

TEST(WaveFileReaderLife, NothingCanBeReadAfterDispose) {
    const auto reader = samples(zeros(12));
    reader->dispose();
    reader->dispose();
    EXPECT_TRUE(allFrames(*reader).empty());
    EXPECT_EQ(reader->getChunkData(reader->chunks()->front()).length(), 0U);
}

TEST(WaveFileReaderLife, TakesOverABlockWithoutCopyingIt) {
    const Bytes bytes = recording(zeros(12));
    auto* block = static_cast<std::uint8_t*>(std::malloc(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), block);
    const auto reader = WaveFileReader::readFromData(WavArray(block, bytes.size()));
    EXPECT_EQ(reader->raw().bytes(), block);
    EXPECT_TRUE(reader->isValidFile());
}

TEST(WaveFileReaderLife, ItNeverMarksARecordingAsRawItself) {
    const auto reader = reading(recording(zeros(12)));
    EXPECT_FALSE(reader->isBoMSFormat());
    reader->setIsBoMSFormat(true);
    EXPECT_TRUE(reader->isBoMSFormat());
}

// Whole records only: the thread sanitizer and the fields that belong together watch.
TEST(WaveFileReaderLife, TheHeaderIsCopiedWholeFromAnyThread) {
    const auto reader = samples(zeros(12));
    std::thread other([&] {
        for (int i = 0; i < 20000; ++i) {
            const WaveHeader header = reader->header();
            ASSERT_EQ(header.SampleRate == 96000, header.ByteRate == 576000);
        }
    });
    WaveHeader header = reader->header();
    for (int i = 0; i < 20000; ++i) {
        header.SampleRate = i % 2 == 0 ? 96000 : 48000;
        header.ByteRate = 6 * header.SampleRate;
        reader->setHeader(header);
    }
    other.join();
}

} // namespace
} // namespace deckmate
