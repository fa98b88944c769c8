#include "export/Export.h"

#include "export/BextLayout.h"
#include "recording/Parallel.h"
#include "recording/RecordingFile.h"
#include "recording/SampleKernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace deckmate {

namespace {

constexpr std::string_view deviceOriginator = "ORLO H8";
constexpr std::string_view rawMark = "MSRAW=ON";

// A block stays in the first-level cache. A piece is what one thread takes at a time and what is
// written at once: large enough that threads seldom wait for each other.
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
    Pass(const Export& recording, std::uint64_t readings)
        : recording_(recording), reader_(*recording.reader_),
          angle_(WaveFileReader::truncatedAngle(recording.angle_)), frames_(reader_.frameCount()),
          total_(readings * frames_) {}

    /// How many slots there are: pieces that are worked on at the same time have different ones.
    std::size_t slots() const { return slots_; }

    /// Called on any thread with pairs of a block inside a piece, free to be changed, and with what
    /// was read of the piece before, in frames.
    using Work = std::function<void(std::size_t slot, std::size_t before, std::span<float> pairs)>;
    /// Called on any thread with the frames that the piece in the slot holds, one piece at a time
    /// and in order.
    using Finish = std::function<void(std::size_t slot, std::size_t frames)>;

    /// Reads all frames once. Neither `work` nor `finish` may throw.
    void read(const Work& work, const Finish& finish) {
        std::vector<std::size_t> held(slots_);
        inParallelAndInOrder(
            slots_, (frames_ + pieceFrames - 1) / pieceFrames,
            [&](std::size_t piece, std::size_t slot) { held[slot] = readPiece(piece, slot, work); },
            [&](std::size_t, std::size_t slot) {
                finish(slot, held[slot]);
                done_ += held[slot];
                report();
            });
        report();
    }

private:
    std::size_t readPiece(std::size_t piece, std::size_t slot, const Work& work) const {
        const std::uint64_t first = piece * pieceFrames;
        const std::uint64_t count = std::min(pieceFrames, frames_ - first);
        std::array<float, 2 * blockFrames> block = {};
        std::size_t done = 0;
        while (done < count) {
            const std::size_t wanted = std::min<std::uint64_t>(blockFrames, count - done);
            const std::size_t frames = reader_.readFramesFrom(first + done, block.data(), wanted);
            if (frames == 0) {
                break; // the reader was changed meanwhile, against its contract
            }
            if (reader_.isBoMSFormat()) {
                WaveFileReader::COM_MSDecode(0, block.data(), 2 * frames, angle_);
            }
            work(slot, done, std::span(block).first(2 * frames));
            done += frames;
        }
        return done;
    }

    /// Only on the exporting thread, where a window can be painted, and only news.
    void report() {
        if (recording_.progress_ && std::this_thread::get_id() == exporting_) {
            if (done_ != reported_) {
                reported_ = done_;
                recording_.progress_(done_, total_);
            }
        }
    }

    const Export& recording_;
    const WaveFileReader& reader_;
    const int angle_;
    const std::uint64_t frames_;
    const std::uint64_t total_;
    const std::size_t slots_ = usefulThreads();
    const std::thread::id exporting_ = std::this_thread::get_id();
    std::uint64_t done_ = 0;
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
    const WriteRules rules = {.untouchable = filePath_, .mayOverwrite = mayOverwrite_};
    BextChunkInfo bext = buildBextInfo();
    BwfWriter writer(reader_.get(), bext, isExport24Bit_);
    writer.setTarget(path, rules);
    editAndWriteSample(writer);
    writer.FixUpChunkSizes();
    const bool isSaved = writer.Save2File(path, rules);
    writer.dispose();
    bext.dispose();
    return isSaved;
} catch (const std::bad_alloc&) {
    return false;
}

void Export::editAndWriteSample(BwfWriter& writer) {
    const std::size_t frameBytes = isExport24Bit_ ? 6 : 8; // a left and a right sample
    // Refused here rather than after minutes of decoding.
    if (!writer.expectSamples(reader_->frameCount() * frameBytes)) {
        return;
    }

    Pass pass(*this, normalize_ ? 2 : 1);
    std::vector<std::vector<std::uint8_t>> pieces(pass.slots());
    for (std::vector<std::uint8_t>& piece : pieces) {
        piece.resize(std::min(pieceFrames, reader_->frameCount()) * frameBytes);
    }
    const double dB = normalize_ ? 20.0 * std::log10(static_cast<double>(peak(pass))) : -gain_;
    pass.read(
        [&](std::size_t slot, std::size_t before, std::span<float> pairs) {
            WaveFileReader::COM_AdjustdB(0, pairs.data(), pairs.size(), dB, dB);
            std::uint8_t* target = pieces[slot].data() + before * frameBytes;
            if (isExport24Bit_) {
                SampleKernels::active().packPcm24(pairs.data(), target, pairs.size());
            } else {
                std::memcpy(target, pairs.data(), pairs.size_bytes());
            }
        },
        [&](std::size_t slot, std::size_t frames) {
            writer.Write(pieces[slot].data(), static_cast<std::uint32_t>(frames * frameBytes));
        });
}

float Export::peak(Pass& pass) {
    std::vector<float> peaks(pass.slots());
    pass.read(
        [&](std::size_t slot, std::size_t, std::span<float> pairs) {
            float left = peaks[slot];
            float right = peaks[slot];
            SampleKernels::active().raisePeaks(pairs.data(), pairs.size() / 2, &left, &right);
            peaks[slot] = std::max(left, right);
        },
        [](std::size_t, std::size_t) {});
    return *std::max_element(peaks.begin(), peaks.end());
}

void Export::cleanUp() {
    if (reader_) {
        reader_->dispose();
    }
    bextChunk_ = WavArray();
    isFileValid_ = false;
}

} // namespace deckmate
