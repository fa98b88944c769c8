#include "platform/AudioFile.h"

#include "platform/sndfile/SndAudioFile.h"

#include <utility>

namespace deckmate {

namespace {

AudioFile::Opener& installedOpener() {
    static AudioFile::Opener opener;
    return opener;
}

} // namespace

AudioStatus AudioFile::open(const std::filesystem::path& path, std::unique_ptr<AudioFile>& file) {
    file.reset();
    return installedOpener() ? installedOpener()(path, file) : openSndAudioFile(path, file);
}

void AudioFile::setOpener(Opener opener) {
    installedOpener() = std::move(opener);
}

} // namespace deckmate
