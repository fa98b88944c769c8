// What a player needs of the main window.
#pragma once

#include "playback/WavePlayer.h"
#include "services/EB.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace deckmate::test {

/// Tells its player of the end of a recording, and notes what it hears of it. The player has to be
/// gone before the main loop and the sound system. Thread: main.
class PlayerWindow : public WavePlayerDelegate {
public:
    PlayerWindow() {
        EB::initData();
        EB::SUBSCRIBE(this, &PlayerWindow::notify, "EB_PLAY_FINISH");
    }
    explicit PlayerWindow(const std::filesystem::path& recording) : PlayerWindow() {
        open(recording);
    }
    ~PlayerWindow() override { NotificationCenter::defaultCenter().removeObserver(this); }
    PlayerWindow(const PlayerWindow&) = delete;
    PlayerWindow& operator=(const PlayerWindow&) = delete;
    PlayerWindow(PlayerWindow&&) = delete;
    PlayerWindow& operator=(PlayerWindow&&) = delete;

    void open(const std::filesystem::path& recording) {
        player = std::make_unique<WavePlayer>(recording);
        player->setDelegate(this);
    }

    virtual void notify(const Notification& /*notification*/) {
        ++finishes;
        if (hearsEvents && player) {
            player->playFinish();
        }
    }
    void WavePlayerStateChanged() override {
        states.push_back(player->play_state());
        if (onChange) {
            onChange();
        }
    }
    void WavePlayerLevelChanged(double /*left*/, double /*right*/) override {}

    std::unique_ptr<WavePlayer> player;
    bool hearsEvents = true;
    int finishes = 0; ///< heard of
    std::vector<std::uint32_t> states;
    std::function<void()> onChange;
};

} // namespace deckmate::test
