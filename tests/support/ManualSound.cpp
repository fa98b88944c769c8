#include "support/ManualSound.h"

#include <utility>

namespace deckmate::test {

class ManualSound::Backend final : public OutputBackend {
public:
    explicit Backend(ManualSound& sound) : sound_(sound) {}
    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) override {
        return std::make_unique<ManualStream>(sound_, format, source);
    }

private:
    ManualSound& sound_;
};

ManualSound::ManualSound()
    : system_(std::make_unique<SoundSystem>(std::make_unique<Backend>(*this),
                                            [](const std::function<void()>& task) { task(); })) {}

ManualSound::~ManualSound() = default;

ManualStream* ManualSound::stream() const {
    return stream_;
}

std::vector<float> ManualSound::pull(std::size_t frames) {
    if (stream_ == nullptr || !stream_->isPlaying || stream_->isDrained) {
        return {};
    }
    ManualStream& stream = *stream_;
    std::vector<float> taken(frames * stream.format.channels);
    const std::size_t got = stream.source_.fill(taken.data(), frames);
    taken.resize(got * stream.format.channels);
    heard.insert(heard.end(), taken.begin(), taken.end());
    if (stream.heardFrames) {
        *stream.heardFrames += got;
    }
    if (got < frames) {
        stream.isDrained = true;
        stream.source_.drained();
    }
    return taken;
}

ManualStream::ManualStream(ManualSound& sound, const OutputFormat& outputFormat,
                           OutputSource& source)
    : format(outputFormat), sound_(sound), source_(source) {
    sound.stream_ = this;
    ++sound.opened;
    ++sound.open;
}

ManualStream::~ManualStream() {
    --sound_.open;
    if (sound_.stream_ == this) {
        sound_.stream_ = nullptr;
    }
}

bool ManualStream::start() {
    isPlaying = sound_.canStart;
    return isPlaying;
}

bool ManualStream::stop() {
    isPlaying = false;
    return true;
}

} // namespace deckmate::test
