#include "sound/SoundTest.h"

#include "export/Export.h"

namespace deckmate::test {

void SoundTest::startServer(std::uint32_t rate) {
    server = std::make_unique<SoundServer>(rate);
    capture = std::make_unique<Capture>(*server);
}

void SoundTest::open(const NoiseRecording& recording) {
    if (!server) {
        startServer(recording.rate);
    }
    open(folder.file("take.wav", recording.file()));
    ASSERT_EQ(player->reader()->isBoMSFormat(), recording.isRaw);
}

void SoundTest::open(const std::filesystem::path& path) {
    PlayerWindow::open(path);
    player->setReader(Export(path).reader());
    turns.clear();
}

void SoundTest::turn(int angle, int gain) {
    player->setAngle(angle);
    player->setGain(gain);
    const bool isPlaying = player->play_state() != PLAY_STATE_INIT;
    turns.push_back({isPlaying ? aqData().currentPacket : 0, angle, gain});
}

std::vector<float> SoundTest::heard(std::size_t frames) {
    const auto limit = std::chrono::steady_clock::now() + aWhile;
    while (capture->heard().size() < 2 * frames && std::chrono::steady_clock::now() < limit) {
        let(50ms);
    }
    let(150ms);
    return capture->heard();
}

} // namespace deckmate::test
