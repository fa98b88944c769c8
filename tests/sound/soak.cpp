// sound-soak RECORDING: plays all of it on a sound server of its own, with width and gain turned 40
// times a second and a core kept busy. Fails if the sound was interrupted even once.
#include "export/Export.h"
#include "platform/SoundSystem.h"
#include "platform/qt/QtRunLoop.h"
#include "support/LogLines.h"
#include "support/PlayerWindow.h"
#include "support/SoundServer.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <random>
#include <thread>

namespace {

using namespace deckmate;
using namespace std::chrono_literals;

class Window final : public test::PlayerWindow {
public:
    explicit Window(const std::filesystem::path& path) : PlayerWindow(path) {
        player->setReader(Export(path).reader());
    }

    void notify(const Notification& notification) override {
        handedOver = aqData().queue->framesHandedOver();
        PlayerWindow::notify(notification);
    }

    std::uint64_t handedOver = 0;
};

int play(const std::filesystem::path& recording) {
    const test::LogLines quiet;
    test::SoundServer server(96000);
    QtRunLoop loop;
    SoundSystem sound;
    std::atomic<bool> isEnding = false;
    std::thread busy([&isEnding] {
        while (!isEnding) {
        }
    });

    Window window(recording);
    WavePlayer& player = *window.player;
    const auto limit =
        std::chrono::milliseconds(static_cast<std::int64_t>(player.duration() * 1000 + 30000));
    std::mt19937 random(1);
    std::uint64_t turns = 0;
    const std::unique_ptr<Timer> hand = loop.makeTimer();
    hand->startRepeating(25ms, [&] {
        ++turns;
        player.setAngle(static_cast<std::int64_t>(random() % 151));
        player.setGain(static_cast<std::int64_t>(random() % 60) - 30);
    });
    player.play();
    const bool hasFinished =
        loop.runUntil([&] { return player.play_state() == PLAY_STATE_FINISH; }, limit);
    hand->stop();
    isEnding = true;
    busy.join();

    const std::uint64_t underruns = aqData().queue->underruns();
    const bool isWhole = window.handedOver == aqData().packetCount;
    std::printf("%.0f s played, %llu of %llu frames, %llu turns, %llu interruptions\n",
                player.curremtTime(), static_cast<unsigned long long>(window.handedOver),
                static_cast<unsigned long long>(aqData().packetCount),
                static_cast<unsigned long long>(turns), static_cast<unsigned long long>(underruns));
    return hasFinished && isWhole && !player.getIsError() && underruns == 0 ? 0 : 1;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: sound-soak RECORDING\n", stderr);
        return 2;
    }
    try {
        return play(arguments[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sound-soak: %s\n", error.what());
        return 1;
    }
}
