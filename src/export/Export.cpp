#include "export/Export.h"

#include "export/BextLayout.h"
#include "recording/RecordingFile.h"
#include "recording/SampleKernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <span>
#include <string>
#include <string_view>

namespace deckmate {

namespace {

constexpr std::string_view deviceOriginator = "ORLO H8";
constexpr std::string_view rawMark = "MSRAW=ON";

constexpr std::size_t blockFrames = 2560;
constexpr std::uint64_t progressFrames = 400 * blockFrames;

std::string text(const bext::Field& field, std::span<const std::uint8_t> body) {
    return WaveFileReader::DecodeAsString(field.in(body), field.width);
}

std::span<const std::uint8_t> contents(const WavArray& array) {
    return {array.bytes(), array.length()};
}

} // namespace

/// One reading of all frames, block by block, decoded to left and right.
class Export::Pass {
public:
    explicit Pass(Export& recording, std::uint64_t framesBefore, std::uint64_t framesInAll)
        : recording_(recording), reader_(*recording.reader_),
          angle_(WaveFileReader::truncatedAngle(recording.angle_)), done_(framesBefore),
          total_(framesInAll) {
        reader_.beginReadSample();
    }

    /// The next frames, empty at the end. Valid, and free to be changed, until the next call.
    std::span<float> next() {
        const std::size_t count = 2 * reader_.readSampleBlock(block_.data(), blockFrames);
        if (reader_.isBoMSFormat()) {
            WaveFileReader::COM_MSDecode(0, block_.data(), count, angle_);
        }
        report(count / 2);
        return std::span(block_).first(count);
    }

private:
    void report(std::size_t frames) {
        const std::uint64_t before = done_;
        done_ += frames;
        const bool isDue = done_ / progressFrames != before / progressFrames || done_ == total_;
        if (recording_.progress_ && frames > 0 && isDue) {
            recording_.progress_(done_, total_);
        }
    }

    Export& recording_;
    WaveFileReader& reader_;
    int angle_;
    std::uint64_t done_;
    std::uint64_t total_;
    std::array<float, 2 * blockFrames> block_ = {};
};

Export::Export(const std::filesystem::path& path) : Export(path, readWholeFile(path).bytes) {}

Export::Export(const std::filesystem::path& path, WavArray&& bytes)
    : dirPath_(path.parent_path()), filePath_(path) {
    isFileValid_ = checkFileValid(std::move(bytes));
}

bool Export::checkFileValid(WavArray&& bytes) try {
    reader_ = WaveFileReader::readFromData(std::move(bytes));
    if (!reader_->isValidFile()) {
        return false;
    }
    const ChunkInfo* chunk = reader_->getBextChunk();
    if (chunk == nullptr) {
        return false;
    }
    bextChunk_ = reader_->getChunkData(*chunk);
    const std::span<const std::uint8_t> body = contents(bextChunk_);
    if (text(bext::Originator, body).find(deviceOriginator) == std::string::npos) {
        return false;
    }
    const auto history = bext::codingHistoryIn(body);
    const std::string written = WaveFileReader::DecodeAsString(history, history.size());
    reader_->setIsBoMSFormat(written.find(rawMark) != std::string::npos);
    return true;
} catch (const std::bad_alloc&) {
    return false; // an index or a `bext` chunk of millions of entries may not fit
}

BextChunkInfo Export::buildBextInfo() const {
    const std::span<const std::uint8_t> source = contents(bextChunk_);
    BextChunkInfo bext;
    bext.Description = text(bext::Description, source);
    bext.Originator = text(bext::Originator, source);
    bext.OriginatorReference = text(bext::OriginatorReference, source);
    bext.UniqueMaterialIdentifier = text(bext::UniqueMaterialIdentifier, source);
    bext.CodingHistory = "A=PCM,F=48000,W=" + std::string(isExport24Bit_ ? "24" : "32") +
                         ",M=stereo,T=H8;VERSION=1.00;MSRAW=OFF;";
    return bext;
}

bool Export::export2File(const std::filesystem::path& path, bool Is24bit, bool IsNormalize) {
    isExport24Bit_ = Is24bit;
    normalize_ = IsNormalize;
    return export2File(path);
}

bool Export::export2File(const std::filesystem::path& path) try {
    BextChunkInfo bext = buildBextInfo();
    BwfWriter writer(reader_.get(), bext, isExport24Bit_);
    editAndWriteSample(writer);
    writer.FixUpChunkSizes();
    const bool isSaved = writer.Save2File(path);
    writer.dispose();
    bext.dispose();
    return isSaved;
} catch (const std::bad_alloc&) {
    return false;
}

void Export::editAndWriteSample(BwfWriter& writer) {
    const std::uint64_t frames = reader_->frameCount();
    const std::uint32_t sampleBytes = isExport24Bit_ ? 3 : 4;
    // Refused here rather than after minutes of decoding.
    if (!writer.reserveSamples(frames * 2 * sampleBytes)) {
        return;
    }

    double dB = -gain_;
    std::uint64_t framesBefore = 0;
    const std::uint64_t framesInAll = normalize_ ? 2 * frames : frames;
    if (normalize_) {
        float peak = 0.0F;
        Pass pass(*this, 0, framesInAll);
        for (auto block = pass.next(); !block.empty(); block = pass.next()) {
            float left = peak;
            float right = peak;
            SampleKernels::active().raisePeaks(block.data(), block.size() / 2, &left, &right);
            peak = std::max(left, right);
        }
        dB = 20.0 * std::log10(static_cast<double>(peak));
        framesBefore = frames;
    }

    Pass pass(*this, framesBefore, framesInAll);
    for (auto block = pass.next(); !block.empty(); block = pass.next()) {
        WaveFileReader::COM_AdjustdB(0, block.data(), block.size(), dB, dB);
        const auto bytes = static_cast<std::uint32_t>(block.size() * sampleBytes);
        std::uint8_t* room = writer.appendSamples(bytes);
        if (room == nullptr) {
            return;
        }
        if (isExport24Bit_) {
            SampleKernels::active().packPcm24(block.data(), room, block.size());
        } else {
            std::copy_n(reinterpret_cast<const std::uint8_t*>(block.data()), bytes, room);
        }
    }
}

void Export::cleanUp() {
    if (reader_) {
        reader_->dispose();
    }
    bextChunk_ = WavArray();
    isFileValid_ = false;
}

} // namespace deckmate
