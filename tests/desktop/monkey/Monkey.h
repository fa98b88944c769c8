// A user who does anything at all, while anything happens.
#pragma once

#include "desktop/monkey/Actions.h"
#include "desktop/monkey/MainThread.h"
#include "desktop/monkey/Scene.h"
#include "desktop/monkey/Stage.h"
#include "desktop/monkey/World.h"
#include "desktop/support/XConnection.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace deckmate::test {

/// Something that has to hold doesn't.
class Broken final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Runs on a thread of its own, so that it goes on inside the event loops of dialogs. Each action
/// is a line on standard output before it happens.
class Monkey {
public:
    Monkey(MainThread& main, Stage& stage, World& world, std::uint32_t seed);

    /// Reads the introduction, and plays and exports a first recording. Throws Broken or Hang, as
    /// the others do.
    void begin();
    /// The actions from the first one on, at this rate; what was checked before each and after it
    /// held.
    void play(std::chrono::seconds duration, unsigned actionsPerMinute);
    /// Back to a window without recording, recorder or anything in front of it.
    void end();
    std::size_t actions() const { return actions_; }

private:
    void act(const Action& action);
    void perform(Deed deed, const Action& action, const Scene& scene);
    bool performWithPointer(Deed deed, const Action& action, const Scene& scene);
    bool performWithKeys(Deed deed, const Action& action);
    void performMeanwhile(Deed deed, const Action& action);
    static Deed deedOf(const Action& action, const Scene& scene);

    void moveTo(const Place& place, double x, double y);
    void click(const Place& place, const Action& action, unsigned button = 1, int times = 1);
    void drag(const Place& place, const Action& action);
    void letGo();
    void tap(const std::string& key, const char* held = nullptr);
    void pause(const Action& action);

    Scene scene() const;
    void drop(const std::filesystem::path& path);
    void comeHome();
    void closeAll();
    void closeRecording();
    void waitForKeyboard(const char* window);
    void waitUntil(const std::function<bool()>& holds, const std::string& what);
    void check() const;
    static void require(const std::vector<std::string>& broken);

    MainThread& main_;
    Stage& stage_;
    World& world_;
    std::uint32_t seed_;
    XConnection connection_;
    bool isHolding_ = false;
    std::size_t actions_ = 0;
};

} // namespace deckmate::test
