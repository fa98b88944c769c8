// Audio files by way of libsndfile, read raw.
#pragma once

#include "platform/AudioFile.h"

namespace deckmate {

/// What AudioFile::open does unless it is told otherwise.
AudioStatus openSndAudioFile(const std::filesystem::path& path, std::unique_ptr<AudioFile>& file);

} // namespace deckmate
