#include "desktop/monkey/Monkey.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <thread>

namespace deckmate::test {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 30s;
constexpr auto askingInterval = 5ms;
constexpr int dragSteps = 4;
/// Of a control's size, how far beyond it a hand may slip.
constexpr double slip = 0.2;

constexpr std::array keys = {"space", "space",  "Return", "Tab",   "Tab",    "Up",
                             "Down",  "Left",   "Right",  "Prior", "Next",   "Home",
                             "End",   "Escape", "r",      "p",     "Delete", "Alt_L"};
constexpr std::array digits = {"1", "2", "3"};

template <class Things>
const auto& one(const Things& things, std::uint64_t which) {
    return things[which % things.size()];
}

} // namespace

Monkey::Monkey(MainThread& main, Stage& stage, World& world, std::uint32_t seed)
    : main_(main), stage_(stage), world_(world), seed_(seed) {}

// Before and after

void Monkey::begin() {
    waitForKeyboard("IntroductionVC");
    closeAll();
    drop(world_.good());
    waitUntil([this] { return stage_.rules().isPlaying(); }, "a recording plays");
    tap("e", "Control_L");
    waitForKeyboard("ExportVC");
    tap("Return");
    waitForKeyboard("saveDialog");
    closeAll();
    closeRecording();
}

void Monkey::end() {
    letGo();
    closeAll();
    world_.haveServer();
    main_.call([this] { stage_.recorder().pullAllOut(); });
    drop(world_.good());
    waitUntil([this] { return stage_.rules().isPlaying(); }, "a recording plays at the end");
    closeRecording();
    bool isAnyLeft = true;
    main_.call([&] { isAnyLeft = Stage::hasDialogs(); });
    if (isAnyLeft) {
        throw Broken("a closed dialog is still there");
    }
}

void Monkey::closeAll() {
    const auto latest = std::chrono::steady_clock::now() + patience;
    for (;;) {
        main_.settle(connection_);
        const Scene now = scene();
        if (!now.hasMenu && !now.hasDialog) {
            waitForKeyboard("mainWindow");
            return;
        }
        if (std::chrono::steady_clock::now() > latest) {
            throw Broken("Escape doesn't close " + now.front.name);
        }
        tap("Escape");
    }
}

void Monkey::closeRecording() {
    drop(world_.bad());
    waitForKeyboard("alert");
    closeAll();
    waitUntil([this] { return !stage_.rules().isOpen(); }, "the recording is closed");
}

void Monkey::waitForKeyboard(const char* window) {
    waitUntil([window] { return Stage::hasKeyboard(window); },
              std::string("the keyboard in ") + window);
}

void Monkey::waitUntil(const std::function<bool()>& holds, const std::string& what) {
    const auto latest = std::chrono::steady_clock::now() + patience;
    bool isThere = false;
    for (;;) {
        main_.call([&] { isThere = holds(); });
        if (isThere) {
            main_.settle(connection_);
            return;
        }
        if (std::chrono::steady_clock::now() > latest) {
            throw Broken("doesn't come: " + what + "; in front is " + scene().front.name);
        }
        std::this_thread::sleep_for(askingInterval);
    }
}

// One action after the other

void Monkey::play(std::chrono::seconds duration, unsigned actionsPerMinute) {
    check();
    const auto interval = std::chrono::nanoseconds(1min) / actionsPerMinute;
    const auto begin = std::chrono::steady_clock::now();
    for (auto due = begin; due < begin + duration; due += interval) {
        act(actionOf(seed_, actions_));
        ++actions_;
        std::this_thread::sleep_until(due + interval);
        // What is late stays late: hurry isn't the point.
        due = std::max(due, std::chrono::steady_clock::now() - interval);
    }
}

void Monkey::require(const std::vector<std::string>& broken) {
    if (broken.empty()) {
        return;
    }
    std::string all;
    for (const std::string& rule : broken) {
        all += (all.empty() ? "" : "; ") + rule;
    }
    throw Broken(all);
}

Scene Monkey::scene() const {
    Scene found;
    main_.call([&] { found = stage_.scene(); });
    return found;
}

void Monkey::act(const Action& action) {
    std::vector<std::string> broken;
    Scene now;
    main_.callLate([&] {
        broken = stage_.brokenSince();
        now = stage_.scene();
        stage_.setChosenFolder(action.which % 4 == 0
                                   ? std::nullopt
                                   : std::optional(world_.anyFolder(action.which / 4)));
    });
    require(broken);
    const Deed deed = deedOf(action, now);
    std::printf("%zu: %s %llu at %.3f %.3f to %.3f %.3f%s%s\n", action.number,
                std::string(nameOf(deed)).c_str(),
                static_cast<unsigned long long>(action.which % 1000), action.x, action.y,
                action.toX, action.toY, now.hasMenu ? ", in a menu" : "",
                now.hasDialog ? (", in " + now.dialog).c_str() : "");
    perform(deed, action, now);
    main_.settle(connection_);
    comeHome();
    check();
}

void Monkey::check() const {
    std::vector<std::string> broken;
    main_.call([&] {
        stage_.rules().setHeld(isHolding_);
        broken = stage_.broken();
    });
    require(broken);
}

/// In the dialog that saves, a hand that slips could rename or remove what is no test's.
Deed Monkey::deedOf(const Action& action, const Scene& scene) {
    if (scene.hasMenu) {
        return scene.dialog == "saveDialog" ? Deed::escape : action.inMenu;
    }
    if (!scene.hasDialog) {
        return action.inWindow;
    }
    if (scene.dialog == "saveDialog") {
        switch (action.inDialog) {
        case Deed::clickInFront:
        case Deed::clickButton:
        case Deed::tap:
            return action.which % 2 == 0 ? Deed::confirm : Deed::typeDigit;
        default:
            break;
        }
    }
    return action.inDialog;
}

/// Whoever climbs out of the tree would list, and save into, folders that are no test's.
void Monkey::comeHome() {
    bool isAway = false;
    main_.call([&] {
        const std::filesystem::path last = stage_.lastFolder();
        isAway = last.string().rfind(world_.root().string(), 0) != 0;
        if (isAway) {
            stage_.setChosenFolder(world_.takes());
        }
    });
    if (isAway) {
        main_.post([this] { stage_.openFolder(); });
        main_.settle(connection_);
    }
}

void Monkey::perform(Deed deed, const Action& action, const Scene& scene) {
    if (!performWithPointer(deed, action, scene) && !performWithKeys(deed, action)) {
        performMeanwhile(deed, action);
    }
}

bool Monkey::performWithPointer(Deed deed, const Action& action, const Scene& scene) {
    const auto clickOneOf = [&](const std::vector<Place>& places, int times) {
        if (!places.empty()) {
            click(one(places, action.which), action, 1, times);
        }
    };
    switch (deed) {
    case Deed::clickAnywhere:
        click(scene.window, action);
        return true;
    case Deed::rightClickAnywhere:
        click(scene.window, action, action.which % 2 == 0 ? 3 : 2);
        return true;
    case Deed::dragAnywhere:
        drag(scene.window, action);
        return true;
    case Deed::clickControl:
        clickOneOf(scene.controls, 1);
        return true;
    case Deed::doubleClickControl:
        clickOneOf(scene.controls, 2);
        return true;
    case Deed::dragControl:
        drag(one(action.which % 8 == 0 ? scene.controls : scene.handles, action.which / 8), action);
        return true;
    case Deed::holdControl:
        letGo();
        moveTo(one(scene.handles, action.which), action.x, action.y);
        connection_.button(1, true);
        isHolding_ = true;
        return true;
    case Deed::turnWheel:
        moveTo(one(scene.controls, action.which), action.x, action.y);
        for (int notch = 0; notch < 1 + action.toX * 4; ++notch) {
            const unsigned direction = 4 + static_cast<unsigned>(action.toY * 4);
            connection_.button(direction, true);
            connection_.button(direction, false);
        }
        return true;
    case Deed::clickRow:
        clickOneOf(scene.rows, 1);
        return true;
    case Deed::doubleClickRow:
        clickOneOf(scene.rows, 2);
        return true;
    case Deed::openMenu:
        clickOneOf(scene.menus, 1);
        return true;
    case Deed::clickInFront:
        click(scene.front, action);
        return true;
    case Deed::clickButton:
        clickOneOf(scene.buttons, 1);
        return true;
    default:
        return false;
    }
}

bool Monkey::performWithKeys(Deed deed, const Action& action) {
    switch (deed) {
    case Deed::tap:
        if (action.which % 8 == 0) {
            tap("Tab", "Shift_L");
        } else {
            tap(one(keys, action.which / 8));
        }
        return true;
    case Deed::shortcut:
        switch (action.which % 4) {
        case 0:
            tap("o", "Control_L");
            return true;
        case 1:
            tap("F1");
            return true;
        default:
            tap("e", "Control_L");
            return true;
        }
    case Deed::escape:
        tap("Escape");
        return true;
    case Deed::confirm:
        tap("Return");
        return true;
    case Deed::typeDigit:
        tap(one(digits, action.which));
        return true;
    default:
        return false;
    }
}

void Monkey::performMeanwhile(Deed deed, const Action& action) {
    const std::uint64_t which = action.which;
    switch (deed) {
    case Deed::drop:
        drop(which % 5 == 0 ? world_.anyFolder(which / 5) : world_.anyFile(which / 5));
        break;
    case Deed::plug:
        main_.call([this] { stage_.recorder().plug(); });
        break;
    case Deed::report:
        main_.call([this, which] { stage_.recorder().report(which); });
        break;
    case Deed::muzzle:
        main_.call([this, which] { stage_.recorder().muzzle(which % 3 == 0); });
        break;
    case Deed::plugOther:
        main_.call([this] { stage_.recorder().plugOther(); });
        break;
    case Deed::serverDown:
        world_.turnServer();
        break;
    case Deed::serverStalls:
        world_.stallServer();
        break;
    case Deed::makeFile:
        world_.makeFile(which);
        break;
    case Deed::removeFile:
        world_.removeFile(which);
        break;
    case Deed::cutFile:
        world_.cutFile(which);
        break;
    case Deed::removeFolder:
        world_.removeFolder(which);
        break;
    case Deed::makeFolder:
        world_.makeFolder(which);
        break;
    default:
        break;
    }
}

void Monkey::drop(const std::filesystem::path& path) {
    main_.post([this, path] { stage_.drop(path); });
}

// Hands

void Monkey::moveTo(const Place& place, double x, double y) {
    const QPointF point = place.at(x, y);
    connection_.movePointerIn(place.window, static_cast<int>(std::lround(point.x())),
                              static_cast<int>(std::lround(point.y())));
}

void Monkey::pause(const Action& action) {
    if (action.which / 2 % 2 == 0) {
        main_.settle(connection_);
    }
}

void Monkey::click(const Place& place, const Action& action, unsigned button, int times) {
    letGo();
    moveTo(place, action.x, action.y);
    for (int i = 0; i < times; ++i) {
        pause(action);
        connection_.button(button, true);
        connection_.button(button, false);
    }
}

void Monkey::drag(const Place& place, const Action& action) {
    letGo();
    moveTo(place, action.x, action.y);
    connection_.button(1, true);
    const double toX = action.toX * (1 + 2 * slip) - slip;
    const double toY = action.toY * (1 + 2 * slip) - slip;
    for (int step = 1; step <= dragSteps; ++step) {
        pause(action);
        moveTo(place, std::lerp(action.x, toX, static_cast<double>(step) / dragSteps),
               std::lerp(action.y, toY, static_cast<double>(step) / dragSteps));
    }
    connection_.button(1, false);
}

void Monkey::letGo() {
    if (isHolding_) {
        connection_.button(1, false);
        isHolding_ = false;
    }
}

void Monkey::tap(const std::string& key, const char* held) {
    if (held != nullptr) {
        connection_.key(held, true);
    }
    connection_.key(key, true);
    connection_.key(key, false);
    if (held != nullptr) {
        connection_.key(held, false);
    }
}

} // namespace deckmate::test
