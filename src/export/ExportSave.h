// What saving a decoded recording decides: the proposed name, the ending, and how it went.
#pragma once

#include "export/Export.h"

#include <filesystem>
#include <functional>
#include <string_view>

namespace deckmate {

enum class SaveOutcome { refused, failed, succeeded };

struct SaveChoices {
    bool is24bit = true; ///< 24-bit integer, else 32-bit float
    bool isNormalize = false;
};

/// The file name proposed for a source's export: take.wav gives take_Decode.WAV.
std::filesystem::path proposedName(const std::filesystem::path& source);

/// The path with ".WAV" appended unless it ends so, in any case of letters.
std::filesystem::path withWavEnding(const std::filesystem::path& chosen);

/// Whether both name one file: the same path, or the same file through a link or another spelling.
bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other);

/// Exports to `target` (ending included). The recording's own file is refused and stays untouched.
/// `log` gets one fixed line for each choice that is on, before the export begins.
SaveOutcome saveDecoded(Export& recording, const std::filesystem::path& target,
                        const SaveChoices& choices,
                        const std::function<void(std::string_view)>& log = nullptr);

/// The words for the user; empty when the outcome is success.
std::string_view alertText(SaveOutcome outcome);

} // namespace deckmate
