// A recording played on a real sound server, as the main window plays it.
#pragma once

#include "platform/SoundSystem.h"
#include "platform/qt/QtRunLoop.h"
#include "sound/ExpectedSound.h"
#include "support/LogLines.h"
#include "support/PlayerWindow.h"
#include "support/SoundServer.h"
#include "support/TemporaryFolder.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <vector>

namespace deckmate::test {

using namespace std::chrono_literals;

/// Long enough for whatever is to happen; a test that gets there has failed.
inline constexpr auto aWhile = 30s;

class SoundTest : public testing::Test, public PlayerWindow {
protected:
    SoundTest() = default;
    ~SoundTest() override { player.reset(); }
    SoundTest(const SoundTest&) = delete;
    SoundTest& operator=(const SoundTest&) = delete;
    SoundTest(SoundTest&&) = delete;
    SoundTest& operator=(SoundTest&&) = delete;

    /// A server for the recording's rate, unless there is one, and the recording opened.
    void open(const NoiseRecording& recording);
    void open(const std::filesystem::path& path);
    /// From the next buffer on.
    void turn(int angle, int gain);
    /// NO if it doesn't come true in a while.
    bool wait(const std::function<bool()>& isDone) { return loop.runUntil(isDone, aWhile); }
    void let(std::chrono::milliseconds pass) {
        loop.runUntil([] { return false; }, pass);
    }
    /// Waits for so many frames that are no silence, and a little for more.
    std::vector<float> heard(std::size_t frames);
    bool hasFinished() const { return player->play_state() == PLAY_STATE_FINISH; }
    void startServer(std::uint32_t rate);

    TemporaryFolder folder;
    LogLines log;
    std::unique_ptr<SoundServer> server;
    std::unique_ptr<Capture> capture;
    QtRunLoop loop;
    SoundSystem sound;
    std::vector<Turn> turns;
};

} // namespace deckmate::test
