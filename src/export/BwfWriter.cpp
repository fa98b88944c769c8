#include "export/BwfWriter.h"

#include "export/BextLayout.h"
#include "recording/RiffTypes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace deckmate {

namespace {

// The space that a 64-bit size table would take (EBU Tech 3306); this program writes none.
constexpr std::uint32_t junkSize = 28;
constexpr std::uint32_t formatSize = 18;
constexpr std::size_t riffSizePosition = 4;
constexpr std::size_t uncountedByRiffSize = 8;

/// The text if ASCII can hold all of it, else nothing.
std::string_view asAscii(std::string_view text) {
    const bool isAscii = std::all_of(text.begin(), text.end(), [](char character) {
        return static_cast<unsigned char>(character) < 0x80;
    });
    return isAscii ? text : std::string_view();
}

} // namespace

BwfWriter::BwfWriter(const WaveFileReader* reader, const BextChunkInfo& bext, bool is24bit) {
    const WaveHeader source = reader != nullptr ? reader->header() : WaveHeader();
    appendInteger(source.ChunkID);
    appendInteger(std::uint32_t{0});
    appendInteger(source.Format);

    appendIdentifier("JUNK");
    appendInteger(junkSize);
    constexpr std::array<std::uint8_t, junkSize> junk = {};
    append(junk.data(), junk.size());

    const std::string_view history = asAscii(bext.CodingHistory);
    const std::size_t historySize = history.size() + history.size() % 2;
    appendIdentifier("bext");
    appendInteger(static_cast<std::uint32_t>(bext::fixedSize + historySize));
    appendText(bext.Description, bext::Description.width);
    appendText(bext.Originator, bext::Originator.width);
    appendText(bext.OriginatorReference, bext::OriginatorReference.width);
    appendText(bext.OriginationDate(), bext::OriginationDate.width);
    appendText(bext.OriginationTime(), bext::OriginationTime.width);
    appendInteger(bext.TimeReference);
    appendInteger(bext.Version);
    appendText(bext.UniqueMaterialIdentifier, bext::UniqueMaterialIdentifier.width);
    append(bext.Reserved().bytes(), bext.Reserved().length());
    appendText(history, historySize);

    const std::uint16_t bits = is24bit ? 24 : 32;
    const auto blockAlign = static_cast<std::uint16_t>(bits / 8 * source.NumChannels);
    appendIdentifier("fmt ");
    appendInteger(formatSize);
    appendInteger(is24bit ? riff::integerPcm : riff::ieeeFloat);
    appendInteger(source.NumChannels);
    appendInteger(source.SampleRate);
    appendInteger(blockAlign * source.SampleRate);
    appendInteger(blockAlign);
    appendInteger(bits);
    appendInteger(std::uint16_t{0}); // size of the format's extension

    appendIdentifier("data");
    dataChunkSizePosition_ = static_cast<std::uint32_t>(data_.size());
    appendInteger(std::uint32_t{0});
}

bool BwfWriter::holds(std::uint64_t count) const {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
    return count <= largest - dataLength_ &&
           headerSize() + dataLength_ + count - uncountedByRiffSize <= largest;
}

std::uint64_t BwfWriter::headerSize() const {
    return std::uint64_t{dataChunkSizePosition_} + sizeof dataLength_;
}

void BwfWriter::setTarget(const std::filesystem::path& path, const WriteRules& rules) {
    target_ = std::make_unique<Target>();
    target_->path = path;
    target_->rules = rules;
}

bool BwfWriter::expectSamples(std::uint64_t count) {
    isComplete_ =
        isComplete_ && holds(count) && (target_ != nullptr || data_.reserve(data_.size() + count));
    expected_ = count;
    return isComplete_;
}

void BwfWriter::Write(const void* bytes, std::uint32_t count) {
    isComplete_ = isComplete_ && holds(count);
    if (!isComplete_ || count == 0) {
        return;
    }
    if (target_ != nullptr) {
        writeToTarget({static_cast<const std::uint8_t*>(bytes), count});
    } else {
        append(bytes, count);
    }
    dataLength_ += isComplete_ ? count : 0;
}

void BwfWriter::writeToTarget(std::span<const std::uint8_t> samples) {
    if (!target_->file) {
        target_->file.emplace(target_->path, target_->rules);
        target_->file->expectSize(headerSize() + expected_);
        target_->file->append(data_.bytes());
    }
    target_->file->append(samples);
    isComplete_ = target_->file->isGood();
}

void BwfWriter::FixUpChunkSizes() {
    if (!isComplete_) {
        return;
    }
    const auto riffSize =
        static_cast<std::uint32_t>(headerSize() + dataLength_ - uncountedByRiffSize);
    std::uint8_t* file = data_.bytes().data();
    std::memcpy(file + riffSizePosition, &riffSize, sizeof riffSize);
    std::memcpy(file + dataChunkSizePosition_, &dataLength_, sizeof dataLength_);
}

bool BwfWriter::Save2File(const std::filesystem::path& path, const WriteRules& rules) {
    if (!isComplete_) {
        return false;
    }
    if (target_ == nullptr || !target_->file) {
        return writeWholeFile(path, data_.bytes(), rules);
    }
    target_->file->rewriteStart(data_.bytes());
    return target_->file->close();
}

void BwfWriter::dispose() {
    data_.clear();
    target_.reset();
    isComplete_ = false;
}

std::uint32_t BwfWriter::stringToInt32(std::string_view text) {
    if (text.size() != 4) {
        return 0;
    }
    const char characters[5] = {text[0], text[1], text[2], text[3], '\0'};
    return riff::fourCC(characters);
}

void BwfWriter::append(const void* bytes, std::size_t count) {
    std::uint8_t* room = isComplete_ ? data_.extend(count) : nullptr;
    if (room == nullptr) {
        isComplete_ = false;
    } else if (count > 0) {
        std::memcpy(room, bytes, count);
    }
}

void BwfWriter::appendText(std::string_view text, std::size_t width) {
    std::string field(asAscii(text));
    field.resize(width, '\0');
    append(field.data(), field.size());
}

void BwfWriter::appendIdentifier(std::string_view identifier) {
    appendInteger(stringToInt32(identifier));
}

template <class Integer>
void BwfWriter::appendInteger(Integer value) {
    append(&value, sizeof value);
}

} // namespace deckmate
