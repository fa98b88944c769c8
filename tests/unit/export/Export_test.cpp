#include "export/Export.h"

#include "support/Bytes.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>

namespace deckmate {
namespace {

using namespace test;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr Format floatFormat{.tag = 3, .bits = 32};
constexpr BextTexts plain{.history = plainHistory};

Export opened(const Bytes& bytes) {
    return Export("/some/where/take.wav", WavArray::copyOf(bytes));
}

bool isSupported(const Bytes& bytes) {
    return opened(bytes).IsFileValid();
}

/// The samples that an export writes.
Bytes exported(Export& recording, bool is24bit = true, bool isNormalize = false) {
    const TemporaryFolder folder;
    EXPECT_TRUE(recording.export2File(folder / "out.WAV", is24bit, isNormalize));
    const Bytes whole = contentsOf(folder / "out.WAV");
    return {whole.begin() + 748, whole.end()};
}

// ---- Which files are the recorder's

TEST(ExportValidity, TheRecordersFilesAreValid) {
    EXPECT_TRUE(isSupported(recording(zeros(12))));
}

TEST(ExportValidity, TheOriginatorMayHoldMore) {
    EXPECT_TRUE(isSupported(recording(zeros(12), {}, {.originator = "The ORLO H8 no. 7"})));
    // Twenty-five characters in front: the field ends with the name.
    EXPECT_TRUE(
        isSupported(recording(zeros(12), {}, {.originator = "-------------------------ORLO H8"})));
}

TEST(ExportValidity, OtherOriginatorsAreRefused) {
    for (const char* originator : {"", "ORLO H", "orlo h8", "ORLO  H8", "OTHER"}) {
        EXPECT_FALSE(isSupported(recording(zeros(12), {}, {.originator = originator})));
    }
}

TEST(ExportValidity, ANameBehindAZeroByteDoesNotCount) {
    EXPECT_FALSE(
        isSupported(recording(zeros(12), {}, {.originator = std::string_view("\0ORLO H8", 8)})));
}

TEST(ExportValidity, FilesWithoutBextAreRefused) {
    EXPECT_FALSE(isSupported(riff(chunk("fmt ", formatBody({})) + chunk("data", zeros(40)))));
}

TEST(ExportValidity, FilesThatAreNoWavAreRefused) {
    EXPECT_FALSE(isSupported(text("something else altogether, long enough to be parsed")));
    EXPECT_FALSE(isSupported(zeros(1)));
}

TEST(ExportValidity, AFileThatCantBeReadIsRefused) {
    EXPECT_FALSE(Export("/missing/take.wav").IsFileValid());
}

// Only a body that reaches into the originator's field can name the recorder.
TEST(ExportValidity, ShortBextBodiesReadAsZerosBehindTheirEnd) {
    Bytes body = bextBody({});
    for (const std::size_t size : {0, 255, 256, 262, 263, 287, 288, 601, 602, 603}) {
        const Bytes cut(body.begin(), body.begin() + static_cast<std::ptrdiff_t>(size));
        const Bytes file =
            riff(chunk("bext", cut) + chunk("fmt ", formatBody({})) + chunk("data", zeros(40)));
        EXPECT_EQ(isSupported(file), size >= 263) << size;
        EXPECT_FALSE(opened(file).reader()->isBoMSFormat()) << size;
    }
}

TEST(ExportValidity, ABextChunkBeyondTheFileIsNone) {
    EXPECT_FALSE(isSupported(riff(chunk("fmt ", formatBody({})) + chunk("data", zeros(12)) +
                                  chunk("bext", bextBody({}), 0x10000))));
}

TEST(ExportValidity, RawIsWhatTheCodingHistorySays) {
    const auto isRaw = [](std::string_view history) {
        return opened(recording(zeros(12), {}, {.history = history})).reader()->isBoMSFormat();
    };
    EXPECT_TRUE(isRaw("MSRAW=ON"));
    EXPECT_TRUE(isRaw("A=PCM;xMSRAW=ONx"));
    EXPECT_FALSE(isRaw("MSRAW=OFF"));
    EXPECT_FALSE(isRaw("msraw=on"));
    EXPECT_FALSE(isRaw(""));
    EXPECT_FALSE(isRaw(std::string_view("\0MSRAW=ON", 9)));
}

TEST(ExportValidity, KeepsThePathAndItsFolder) {
    const Export recording = opened(test::recording(zeros(12)));
    EXPECT_EQ(recording.getFilePath(), "/some/where/take.wav");
    EXPECT_EQ(recording.getDirPath(), "/some/where");
}

TEST(ExportValidity, StartsWithoutGainAngleAndChoices) {
    const Export recording = opened(test::recording(zeros(12)));
    EXPECT_EQ(recording.gain(), 0.0);
    EXPECT_EQ(recording.angle(), 0.0);
    EXPECT_FALSE(recording.isExport24Bit());
    EXPECT_FALSE(recording.normalize());
}

// ---- The fields of the output

TEST(ExportBext, CarriesTheTextsOver) {
    const Export recording = opened(test::recording(
        zeros(12), {},
        {.description = "Rehearsal", .originator = "ORLO H8 #7", .reference = "R1", .umid = "U2"}));
    const BextChunkInfo bext = recording.buildBextInfo();
    EXPECT_EQ(bext.Description, "Rehearsal");
    EXPECT_EQ(bext.Originator, "ORLO H8 #7");
    EXPECT_EQ(bext.OriginatorReference, "R1");
    EXPECT_EQ(bext.UniqueMaterialIdentifier, "U2");
}

TEST(ExportBext, FullFieldsAreCarriedOverWhole) {
    const std::string description(256, 'd');
    const Export recording = opened(test::recording(zeros(12), {}, {.description = description}));
    EXPECT_EQ(recording.buildBextInfo().Description, description);
}

TEST(ExportBext, DateTimeReferenceAndVersionAreItsOwn) {
    const auto before = std::chrono::system_clock::now();
    const BextChunkInfo bext = opened(recording(zeros(12))).buildBextInfo();
    EXPECT_GE(bext.OriginationDateTime, before);
    EXPECT_EQ(bext.TimeReference, 0);
    EXPECT_EQ(bext.Version, 1);
}

TEST(ExportBext, TheHistoryNamesTheDepthAndNothingElseOfTheFile) {
    Export recording = opened(test::recording(zeros(16), {.rate = 96000}));
    EXPECT_EQ(recording.buildBextInfo().CodingHistory,
              "A=PCM,F=48000,W=32,M=stereo,T=H8;VERSION=1.00;MSRAW=OFF;");
    exported(recording, true);
    EXPECT_EQ(recording.buildBextInfo().CodingHistory,
              "A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.00;MSRAW=OFF;");
}

// ---- The samples of the output

TEST(ExportSamples, ValuesAt24BitOutput) {
    Export recording = opened(test::recording(
        floats({1.0F, -1.0F, 0.5F, -0.5F, 2.0F, -2.0F, 0.0F, std::nanf("")}), floatFormat, plain));
    EXPECT_EQ(exported(recording),
              pcm24({0x7FFFFF, -0x800000, 0x3FFFFF, -0x3FFFFF, 0x7FFFFF, -0x800000, 0, -0x800000}));
}

TEST(ExportSamples, FloatOutputKeepsEveryBit) {
    const Bytes samples = floats({1.5F, -0.0F, 1e-45F, -1e38F, infinity, -infinity});
    Export recording = opened(test::recording(samples, floatFormat, plain));
    EXPECT_EQ(exported(recording, false), samples);
}

TEST(ExportSamples, PlainRecordingsKeepTheirChannels) {
    Export recording = opened(test::recording(pcm24({0x400000, 0x200000}), {}, plain));
    recording.setAngle(120);
    EXPECT_EQ(exported(recording, false), floats({0.5F, 0.25F}));
}

TEST(ExportSamples, RawRecordingsAreDecodedAtTheCutAngle) {
    Export recording = opened(test::recording(pcm24({0x400000, 0x200000})));
    recording.setAngle(120.99);
    EXPECT_EQ(exported(recording, false), floats({0.75F, 0.25F}));
    recording.setAngle(0);
    EXPECT_EQ(exported(recording, false), floats({0.5F, 0.5F}));
}

TEST(ExportSamples, PositiveGainIsLouder) {
    Export recording = opened(test::recording(pcm24({0x080000, 0x080000}), {}, plain));
    recording.setGain(20);
    EXPECT_EQ(exported(recording, false), floats({0.0625F / 0.1F, 0.0625F / 0.1F}));
    recording.setGain(-20);
    EXPECT_EQ(exported(recording, false), floats({0.00625F, 0.00625F}));
}

TEST(ExportSamples, NormalisingMultipliesToFullScaleAndIgnoresTheGain) {
    Export recording =
        opened(test::recording(floats({0.25F, -0.125F, 0.0625F, 0.03F}), floatFormat, plain));
    recording.setGain(-12);
    EXPECT_EQ(exported(recording, false, true), floats({1.0F, -0.5F, 0.25F, 0.12F}));
}

TEST(ExportSamples, NormalisingMeasuresAfterDecoding) {
    Export recording = opened(test::recording(floats({0.5F, -0.25F}), floatFormat));
    recording.setAngle(120);
    const float three = 0.75F / 0.75F;
    EXPECT_EQ(exported(recording, false, true), floats({0.25F / 0.75F, three}));
}

TEST(ExportSamples, NormalisingSilenceLeavesSilence) {
    Export recording = opened(test::recording(zeros(32), floatFormat));
    EXPECT_EQ(exported(recording, false, true), zeros(32));
}

TEST(ExportSamples, NormalisingIgnoresNotANumber) {
    Export recording =
        opened(test::recording(floats({std::nanf(""), 0.5F, 0.25F, -0.125F}), floatFormat, plain));
    const Bytes samples = exported(recording, true, true);
    EXPECT_EQ(samples, pcm24({-0x800000, 0x7FFFFF, 0x3FFFFF, -2097151}));
}

TEST(ExportSamples, NormalisingByInfinityLeavesNothing) {
    Export recording = opened(test::recording(floats({infinity, 0.5F}), floatFormat, plain));
    EXPECT_EQ(exported(recording, true, true), pcm24({-0x800000, 0}));
}

TEST(ExportSamples, MonoDeclaresOneChannelAndHoldsTwoSamplesPerFrame) {
    Export recording = opened(test::recording(pcm24({0x400000}), {.channels = 1}, plain));
    const TemporaryFolder folder;
    ASSERT_TRUE(recording.export2File(folder / "out.WAV", true, false));
    const Bytes whole = contentsOf(folder / "out.WAV");
    EXPECT_EQ(Bytes(whole.begin() + 724, whole.begin() + 726), le16(1));
    EXPECT_EQ(Bytes(whole.begin() + 748, whole.end()), pcm24({0x3FFFFF, -0x800000}));
}

TEST(ExportSamples, SixteenBitSourcesAreReadUnsigned) {
    Export recording = opened(test::recording(le16(0x4000) + le16(0xFFFF), {.bits = 16}, plain));
    EXPECT_EQ(exported(recording, false), floats({0.5F, 65535.0F / 32768.0F}));
}

TEST(ExportSamples, UndecodableDepthsGiveTheMarkOfMissingSamples) {
    Export recording = opened(test::recording(zeros(4), {.bits = 8}, plain));
    EXPECT_EQ(exported(recording, false), floats({-2.0F, -2.0F, -2.0F, -2.0F}));
}

TEST(ExportSamples, EmptyDataGivesAnEmptyFile) {
    Export recording = opened(test::recording({}));
    EXPECT_EQ(exported(recording), Bytes{});
    EXPECT_EQ(exported(recording, true, true), Bytes{});
}

TEST(ExportSamples, FramesOfNoBytesGiveAnEmptyFile) {
    Export recording = opened(test::recording(zeros(100), {.channels = 0}));
    EXPECT_EQ(exported(recording, true, true), Bytes{});
}

// A block has 2560 frames: each count around its multiples comes out whole and in order.
TEST(ExportSamples, EveryLengthAroundABlockIsExportedWhole) {
    for (const std::int32_t frames : {1, 2559, 2560, 2561, 5119, 5120, 5121}) {
        Bytes source;
        Bytes expected;
        for (std::int32_t k = 0; k < frames; ++k) {
            source = std::move(source) + le24(1024 * k) + le24(-512 * k);
            // 2^-13 k * 8388607 = 1024 k - k / 8192
            expected = std::move(expected) + le24(1024 * k - (k > 0 ? 1 : 0)) +
                       le24(-512 * k + (k > 0 ? 1 : 0));
        }
        Export recording = opened(test::recording(source, {}, plain));
        ASSERT_EQ(exported(recording), expected) << frames;
    }
}

TEST(ExportSamples, ExportingTwiceGivesTheSameTwice) {
    Export recording = opened(test::recording(pcm24({1 << 20, 1 << 19, 3, 4})));
    recording.setAngle(70);
    const Bytes once = exported(recording);
    EXPECT_EQ(exported(recording), once);
}

// Several threads take a piece of 512,000 frames each.
TEST(ExportSamples, EveryFrameOfALongRecordingLandsInItsPlace) {
    constexpr std::int32_t frames = 1'500'000;
    Bytes source(std::size_t{frames} * 6);
    for (std::int32_t k = 0; k < frames; ++k) {
        const Bytes left = le24(4 * k);
        std::copy(left.begin(), left.end(), source.begin() + std::ptrdiff_t{6} * k);
    }
    Export recording = opened(test::recording(source, {}, plain));
    const Bytes samples = exported(recording, false);
    ASSERT_EQ(samples.size(), std::size_t{frames} * 8);
    for (std::int32_t k = 0; k < frames; ++k) {
        float left = 0;
        std::memcpy(&left, samples.data() + std::ptrdiff_t{8} * k, sizeof left);
        ASSERT_EQ(left, static_cast<float>(k) * 0x1p-21F) << k;
    }
}

TEST(ExportSamples, ThePeakIsFoundInEveryPiece) {
    for (const std::size_t at : {0U, 511'999U, 512'000U, 1'499'999U}) {
        Bytes source(std::size_t{1'500'000} * 6);
        source[6 * at + 5] = 0x20; // a quarter of full scale on the right
        Export recording = opened(test::recording(source, {}, plain));
        const Bytes samples = exported(recording, true, true);
        EXPECT_EQ(Bytes(samples.begin() + static_cast<std::ptrdiff_t>(6 * at + 3),
                        samples.begin() + static_cast<std::ptrdiff_t>(6 * at + 6)),
                  pcm24({0x7FFFFF}))
            << at;
    }
}

TEST(ExportSamples, TheReadingPositionDoesNotMatter) {
    Export recording = opened(test::recording(pcm24({1 << 20, 1 << 20}), {}, plain));
    float left = 0;
    float right = 0;
    recording.reader()->beginReadSample();
    recording.reader()->readNextSample(&left, &right);
    EXPECT_EQ(exported(recording, false), floats({0.125F, 0.125F}));
}

// Each byte of an eight-bit mono recording becomes two floats, eight bytes.
TEST(ExportSamples, OutputBeyond32BitSizesIsNotWritten) {
    const TemporaryFolder folder;
    Bytes start = recording({}, {.channels = 1, .bits = 8});
    const std::uint32_t size = 540'000'000;
    std::copy_n(le32(size).begin(), 4, start.end() - 4);
    const auto path = folder.file("huge.wav", start);
    std::filesystem::resize_file(path, start.size() + size);
    Export recording(path);
    ASSERT_TRUE(recording.IsFileValid());
    EXPECT_FALSE(recording.export2File(folder / "out.WAV", false, false));
    EXPECT_FALSE(std::filesystem::exists(folder / "out.WAV"));
}

// ---- Progress and life cycle

TEST(ExportProgress, EndsWithAllFramesOfAllPasses) {
    constexpr std::uint64_t frames = 2'500'000;
    Export recording = opened(test::recording(zeros(frames * 6)));
    std::vector<std::uint64_t> seen;
    recording.setProgress([&](std::uint64_t done, std::uint64_t total) {
        EXPECT_EQ(total, recording.normalize() ? 2 * frames : frames);
        seen.push_back(done);
    });
    exported(recording, true, false);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end(), std::less_equal<>())); // only news
    EXPECT_EQ(seen.back(), frames);
    seen.clear();
    exported(recording, true, true);
    EXPECT_EQ(seen.back(), 2 * frames);
}

TEST(ExportProgress, IsReportedOnTheExportingThread) {
    Export recording = opened(test::recording(zeros(std::size_t{2'500'000} * 6)));
    const std::thread::id exporting = std::this_thread::get_id();
    int reports = 0;
    recording.setProgress([&](std::uint64_t, std::uint64_t) {
        EXPECT_EQ(std::this_thread::get_id(), exporting);
        ++reports;
    });
    exported(recording);
    EXPECT_GT(reports, 0);
}

TEST(ExportLife, CleanUpEndsTheRecording) {
    Export recording = opened(test::recording(zeros(12)));
    const std::shared_ptr<WaveFileReader> shared = recording.reader();
    recording.cleanUp();
    recording.cleanUp();
    EXPECT_FALSE(recording.IsFileValid());
    EXPECT_EQ(shared->raw().length(), 0U);
    EXPECT_EQ(recording.buildBextInfo().Originator, "");
}

TEST(ExportLife, TheRecordingItselfIsNeverWritten) {
    const TemporaryFolder folder;
    const Bytes original = test::recording(zeros(12));
    Export recording(folder.file("take.wav", original));
    std::filesystem::create_hard_link(folder / "take.wav", folder / "other.wav");
    EXPECT_FALSE(recording.export2File(folder / "other.wav", true, false));
    EXPECT_EQ(contentsOf(folder / "take.wav"), original);
}

TEST(ExportLife, AnExportMayBeKeptFromOverwriting) {
    const TemporaryFolder folder;
    Export recording(folder.file("take.wav", test::recording(zeros(12))));
    const auto there = folder.file("there.wav", text("something"));
    recording.setMayOverwrite(false);
    EXPECT_FALSE(recording.export2File(there, true, false));
    EXPECT_EQ(contentsOf(there), text("something"));
    EXPECT_TRUE(recording.export2File(folder / "new.wav", true, false));
}

TEST(ExportLife, TheReaderOutlivesTheRecordingForWhoSharesIt) {
    std::shared_ptr<WaveFileReader> shared;
    {
        const Export recording = opened(test::recording(pcm24({1 << 20, 0})));
        shared = recording.reader();
    }
    float left = 0;
    float right = 0;
    shared->beginReadSample();
    EXPECT_TRUE(shared->readNextSample(&left, &right));
    EXPECT_EQ(left, 0.125F);
}

} // namespace
} // namespace deckmate
