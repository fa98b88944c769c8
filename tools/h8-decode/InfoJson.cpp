#include "InfoJson.h"

#include "common/Process.h"
#include "export/BextLayout.h"
#include "export/Export.h"
#include "recording/LittleEndian.h"
#include "recording/RecordingFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

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

/// A number field of up to eight bytes.
std::uint64_t number(const bext::Field& field, std::span<const std::uint8_t> body) {
    std::array<std::uint8_t, sizeof(std::uint64_t)> bytes = {};
    const auto found = field.in(body);
    std::copy(found.begin(), found.end(), bytes.begin());
    return loadU64(bytes.data());
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
        {"time_reference", number(bext::TimeReference, body)},
        {"version", number(bext::Version, body)},
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

/// A character of a chunk's identifier, which may be any byte.
void putCharacter(std::uint32_t code, std::FILE* stream) {
    if (code == '"' || code == '\\') {
        std::fprintf(stream, "\\%c", static_cast<int>(code));
    } else if (code < 0x20 || code >= 0x7F) {
        std::fprintf(stream, "\\u%04x", code);
    } else {
        std::fputc(static_cast<int>(code), stream);
    }
}

/// Piece by piece and without memory: a hostile file can hold a hundred million chunks.
void putChunks(std::span<const ChunkInfo> chunks, std::FILE* stream) {
    const char* separator = "";
    put(stream, "\"chunks\":[");
    for (const ChunkInfo& chunk : chunks) {
        std::fprintf(stream, R"(%s{"id":")", separator);
        for (int shift = 0; shift < 32; shift += 8) {
            putCharacter(chunk.chunkID >> shift & 0xFF, stream);
        }
        std::fprintf(stream, R"(","size":%u,"offset":%u})", chunk.chunkSize, chunk.streamPos);
        separator = ",";
    }
    put(stream, "]");
}

/// The whole line; all that may fail for want of memory comes before its first character.
void putLine(const std::string& file, const Export& recording, const std::string& error,
             std::FILE* stream) {
    const auto& chunks = recording.reader()->chunks();
    std::string start = dumped(formatObject(file, recording));
    start.back() = ','; // the object goes on
    std::string end = ",\"bext\":";
    end += dumped(bextObject(*recording.reader()));
    if (!error.empty()) {
        end += ",\"error\":";
        end += dumped(fileName(error));
    }
    end += "}\n";
    put(stream, start);
    putChunks(chunks ? std::span<const ChunkInfo>(*chunks) : std::span<const ChunkInfo>(), stream);
    put(stream, end);
    std::fflush(stream);
}

/// Whether the file gave bytes.
bool printFile(const std::string& file, std::FILE* stream) {
    std::string error;
    try {
        LoadedFile loaded = readWholeFile(file);
        error = loaded.error;
        putLine(file, Export(file, std::move(loaded.bytes)), error, stream);
    } catch (const std::bad_alloc&) {
        error = std::generic_category().message(ENOMEM);
        putLine(file, Export(file, WavArray()), error, stream);
    }
    return error.empty();
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
