#include "InfoJson.h"

#include "common/Process.h"
#include "export/BextLayout.h"
#include "export/Export.h"
#include "recording/LittleEndian.h"
#include "recording/RecordingFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace deckmate::tools {

namespace {

using Json = nlohmann::ordered_json;

/// Length of the UTF-8 character (RFC 3629) at the start of `text`, 0 where there is none.
std::size_t utf8Length(std::string_view text) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto isContinuation = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80; };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    // The ends of the second byte's range shut out overlong forms, surrogates and what lies beyond
    // the last code point.
    if (first >= 0xC2 && first <= 0xDF) {
        return isContinuation(1) ? 2 : 0;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        const bool isInRange =
            (first != 0xE0 || byte(1) >= 0xA0) && (first != 0xED || byte(1) <= 0x9F);
        return isInRange && isContinuation(1) && isContinuation(2) ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool isInRange =
            (first != 0xF0 || byte(1) >= 0x90) && (first != 0xF4 || byte(1) <= 0x8F);
        return isInRange && isContinuation(1) && isContinuation(2) && isContinuation(3) ? 4 : 0;
    }
    return 0;
}

std::string hex(std::span<const std::uint8_t> bytes, std::size_t width) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < width; ++i) {
        const std::uint8_t byte = i < bytes.size() ? bytes[i] : 0;
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

std::string fileName(std::string_view name) {
    std::string text;
    while (!name.empty()) {
        const std::size_t length = utf8Length(name);
        if (length > 0) {
            text += name.substr(0, length);
        } else {
            const auto byte = static_cast<std::uint8_t>(name.front());
            text += "\\x";
            text += hex(std::span(&byte, 1), 1);
        }
        name.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

/// Characters whose codes are their bytes' values.
std::string latin1(std::string_view bytes) {
    std::string text;
    for (const char character : bytes) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            text += character;
        } else {
            text += static_cast<char>(0xC0 | code >> 6);
            text += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return text;
}

std::string chunkName(std::uint32_t chunkID) {
    std::array<char, 4> characters = {};
    std::memcpy(characters.data(), &chunkID, characters.size());
    return latin1({characters.data(), characters.size()});
}

template <class Integer>
std::uint64_t integer(const bext::Field& field, std::span<const std::uint8_t> body) {
    std::array<std::uint8_t, sizeof(Integer)> bytes = {};
    const auto found = field.in(body);
    std::copy(found.begin(), found.end(), bytes.begin());
    Integer value = 0;
    std::memcpy(&value, bytes.data(), bytes.size());
    return value;
}

Json bextObject(const WaveFileReader& reader) {
    const ChunkInfo* chunk = reader.getBextChunk();
    if (chunk == nullptr) {
        return nullptr;
    }
    const WavArray data = reader.getChunkData(*chunk);
    const std::span<const std::uint8_t> body(data.bytes(), data.length());
    const auto text = [&](const bext::Field& field) {
        return latin1(WaveFileReader::DecodeAsString(field.in(body), field.width));
    };
    const auto history = bext::codingHistoryIn(body);
    return {
        {"description", text(bext::Description)},
        {"originator", text(bext::Originator)},
        {"originator_reference", text(bext::OriginatorReference)},
        {"origination_date", text(bext::OriginationDate)},
        {"origination_time", text(bext::OriginationTime)},
        {"time_reference", integer<std::uint64_t>(bext::TimeReference, body)},
        {"version", integer<std::uint16_t>(bext::Version, body)},
        {"umid",
         hex(bext::UniqueMaterialIdentifier.in(body), bext::UniqueMaterialIdentifier.width)},
        {"coding_history", latin1(WaveFileReader::DecodeAsString(history, history.size()))},
    };
}

Json formatObject(const std::string& file, const Export& recording) {
    const WaveFileReader& reader = *recording.reader();
    const WaveHeader header = reader.header();
    const std::uint64_t frames = reader.frameCount();
    Json object = {
        {"file", fileName(file)},
        {"valid", reader.isValidFile()},
        {"supported", recording.IsFileValid()},
        {"raw_ms", reader.isBoMSFormat()},
        {"audio_format", header.AudioFormat},
        {"channels", header.NumChannels},
        {"sample_rate", header.SampleRate},
        {"bits_per_sample", header.BitsPerSample},
        {"block_align", header.BlockAlign},
        {"byte_rate", header.ByteRate},
        {"data_position", header.dataChunkPosition},
        {"data_length", header.dataChunkLength},
        {"frames", frames},
        {"duration", nullptr},
    };
    if (header.SampleRate != 0) {
        object["duration"] = static_cast<double>(frames) / header.SampleRate;
    }
    return object;
}

std::string dumped(const Json& value) {
    return value.dump(-1, ' ', true);
}

void put(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
}

/// Piece by piece: a hostile file can hold a hundred million chunks.
void printChunks(const std::optional<std::vector<ChunkInfo>>& chunks, std::FILE* stream) {
    put(stream, "\"chunks\":[");
    const char* separator = "";
    for (const ChunkInfo& chunk : chunks ? *chunks : std::vector<ChunkInfo>()) {
        put(stream, separator);
        put(stream, dumped({{"id", chunkName(chunk.chunkID)},
                            {"size", chunk.chunkSize},
                            {"offset", chunk.streamPos}}));
        separator = ",";
    }
    put(stream, "]");
}

/// Whether the file gave bytes.
bool printFile(const std::string& file, std::FILE* stream) {
    LoadedFile loaded = readWholeFile(file);
    const Export recording(file, std::move(loaded.bytes));

    std::string start = dumped(formatObject(file, recording));
    start.back() = ','; // the object goes on
    put(stream, start);
    printChunks(recording.reader()->chunks(), stream);
    put(stream, ",\"bext\":");
    put(stream, dumped(bextObject(*recording.reader())));
    if (!loaded.error.empty()) {
        put(stream, ",\"error\":");
        put(stream, dumped(fileName(loaded.error)));
    }
    put(stream, "}\n");
    std::fflush(stream);
    return loaded.error.empty();
}

} // namespace

int printInfo(const std::vector<std::string>& files, std::FILE* stream) {
    bool isGood = true;
    for (const std::string& file : files) {
        isGood = printFile(file, stream) && isGood;
    }
    return isGood && std::ferror(stream) == 0 ? allDone : someFailed;
}

} // namespace deckmate::tools
