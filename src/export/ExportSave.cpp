#include "export/ExportSave.h"

#include <string>
#include <system_error>

namespace deckmate {

namespace {

constexpr std::string_view ending = ".WAV";

char upperCased(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                                : character;
}

bool endsAsWav(std::string_view path) {
    if (path.size() <= ending.size()) {
        return false;
    }
    const std::string_view last = path.substr(path.size() - ending.size());
    for (std::size_t i = 0; i < ending.size(); ++i) {
        if (upperCased(last[i]) != ending[i]) {
            return false;
        }
    }
    return true;
}

} // namespace

std::filesystem::path proposedName(const std::filesystem::path& source) {
    return source.stem().native() + "_Decode" + std::string(ending);
}

std::filesystem::path withWavEnding(const std::filesystem::path& chosen) {
    return endsAsWav(chosen.native())
               ? chosen
               : std::filesystem::path(chosen.native() + std::string(ending));
}

bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other) {
    std::error_code ignored;
    return one == other || std::filesystem::equivalent(one, other, ignored);
}

SaveOutcome saveDecoded(Export& recording, const std::filesystem::path& target,
                        const SaveChoices& choices,
                        const std::function<void(std::string_view)>& log) {
    if (isSameFile(target, recording.filePath())) {
        return SaveOutcome::refused;
    }
    if (log && choices.is24bit) {
        log("24 bit is = ON");
    }
    if (log && choices.isNormalize) {
        log("Normalize is = ON");
    }
    const bool isSaved = recording.IsFileValid() &&
                         recording.export2File(target, choices.is24bit, choices.isNormalize);
    return isSaved ? SaveOutcome::succeeded : SaveOutcome::failed;
}

std::string_view alertText(SaveOutcome outcome) {
    switch (outcome) {
    case SaveOutcome::refused:
        return "Fail to open.";
    case SaveOutcome::failed:
        return "Fail to save.";
    case SaveOutcome::succeeded:
        break;
    }
    return "";
}

} // namespace deckmate
