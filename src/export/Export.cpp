#include "export/Export.h"

#include "export/BextLayout.h"
#include "recording/Parallel.h"
#include "recording/RecordingFile.h"
#include "recording/SampleKernels.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <thread>

namespace deckmate {

namespace {

constexpr std::string_view deviceOriginator = "ORLO H8";
constexpr std::string_view rawMark = "MSRAW=ON";

// A block stays in the first-level cache; a piece is what one thread takes at a time.
constexpr std::size_t blockFrames = 2560;
constexpr std::uint64_t pieceFrames = 200 * blockFrames;

std::string text(const bext::Field& field, std::span<const std::uint8_t> body) {
    return WaveFileReader::DecodeAsString(field.in(body), field.width);
}

std::span<const std::uint8_t> contents(const WavArray& array) {
    return {array.bytes(), array.length()};
}

} // namespace

/// Readings of all frames, piece by piece on several threads, decoded to left and right.
class Export::Pass {
public:
    /// Frames from `first` on, free to be changed.
    using Work = std::function<void(std::uint64_t first, std::span<float> pairs)>;

    Pass(const Export& recording, std::uint64_t readings)
        : recording_(recording), reader_(*recording.reader_),
          angle_(WaveFileReader::truncatedAngle(recording.angle_)), frames_(reader_.frameCount()),
          total_(readings * frames_) {}

    /// Reads all frames once. `work` gets every block once, in no order, on any thread.
    void read(const Work& work) {
        inParallel((frames_ + pieceFrames - 1) / pieceFrames, [&](std::size_t piece) {
            const std::uint64_t first = piece * pieceFrames;
            const std::uint64_t end = std::min(first + pieceFrames, frames_);
            readPiece(first, end, work);
            done_ += end - first;
            report();
        });
        report();
    }

private:
    void readPiece(std::uint64_t first, std::uint64_t end, const Work& work) const {
        std::array<float, 2 * blockFrames> block = {};
        while (first < end) {
            const std::size_t wanted = std::min<std::uint64_t>(blockFrames, end - first);
            const std::size_t frames = reader_.readFramesFrom(first, block.data(), wanted);
            if (frames == 0) {
                return; // the reader was changed meanwhile, against its contract
            }
            if (reader_.isBoMSFormat()) {
                WaveFileReader::COM_MSDecode(0, block.data(), 2 * frames, angle_);
            }
            work(first, std::span(block).first(2 * frames));
            first += frames;
        }
    }

    /// Only on the exporting thread, where a window can be painted, and only news.
    void report() {
        if (recording_.progress_ && std::this_thread::get_id() == exporting_) {
            const std::uint64_t done = done_;
            if (done != reported_) {
                reported_ = done;
                recording_.progress_(done, total_);
            }
        }
    }

    const Export& recording_;
    const WaveFileReader& reader_;
    const int angle_;
    const std::uint64_t frames_;
    const std::uint64_t total_;
    const std::thread::id exporting_ = std::this_thread::get_id();
    std::atomic<std::uint64_t> done_ = 0;
    std::uint64_t reported_ = 0;
};

Export::Export(const std::filesystem::path& path) : Export(path, WavArray()) {
    try {
        isFileValid_ = checkFileValid(readWholeFile(path).bytes);
    } catch (const std::bad_alloc&) {
        cleanUp(); // an index or a `bext` chunk of millions of entries may not fit
    }
}

Export::Export(const std::filesystem::path& path, WavArray&& bytes)
    : dirPath_(path.parent_path()), filePath_(path) {
    isFileValid_ = checkFileValid(std::move(bytes));
}

bool Export::checkFileValid(WavArray&& bytes) {
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
    const bool isSaved =
        writer.Save2File(path, {.untouchable = filePath_, .mayOverwrite = mayOverwrite_});
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

    Pass pass(*this, normalize_ ? 2 : 1);
    const double dB = normalize_ ? 20.0 * std::log10(static_cast<double>(peak(pass))) : -gain_;
    std::uint8_t* room = writer.appendSamples(static_cast<std::uint32_t>(frames * 2 * sampleBytes));
    pass.read([&](std::uint64_t first, std::span<float> pairs) {
        WaveFileReader::COM_AdjustdB(0, pairs.data(), pairs.size(), dB, dB);
        std::uint8_t* target = room + first * 2 * sampleBytes;
        if (isExport24Bit_) {
            SampleKernels::active().packPcm24(pairs.data(), target, pairs.size());
        } else {
            std::memcpy(target, pairs.data(), pairs.size_bytes());
        }
    });
}

float Export::peak(Pass& pass) {
    std::atomic<float> peak = 0.0F;
    pass.read([&](std::uint64_t, std::span<float> pairs) {
        float left = 0.0F;
        float right = 0.0F;
        SampleKernels::active().raisePeaks(pairs.data(), pairs.size() / 2, &left, &right);
        const float found = std::max(left, right);
        float known = peak;
        while (found > known && !peak.compare_exchange_weak(known, found)) {
        }
    });
    return peak;
}

void Export::cleanUp() {
    if (reader_) {
        reader_->dispose();
    }
    bextChunk_ = WavArray();
    isFileValid_ = false;
}

} // namespace deckmate
