#include "desktop/monkey/Actions.h"

#include <array>
#include <cmath>
#include <random>
#include <span>

namespace deckmate::test {

namespace {

struct Weight {
    Deed deed;
    unsigned weight;
};

constexpr std::array meanwhile = {
    Weight{Deed::plug, 30},        Weight{Deed::report, 30},     Weight{Deed::muzzle, 8},
    Weight{Deed::plugOther, 5},    Weight{Deed::serverDown, 6},  Weight{Deed::serverStalls, 6},
    Weight{Deed::makeFile, 45},    Weight{Deed::removeFile, 25}, Weight{Deed::cutFile, 15},
    Weight{Deed::removeFolder, 5}, Weight{Deed::makeFolder, 10}, Weight{Deed::wait, 35},
};

constexpr std::array inWindow = {
    Weight{Deed::clickAnywhere, 120},
    Weight{Deed::rightClickAnywhere, 10},
    Weight{Deed::dragAnywhere, 20},
    Weight{Deed::clickControl, 170},
    Weight{Deed::doubleClickControl, 20},
    Weight{Deed::dragControl, 90},
    Weight{Deed::holdControl, 60},
    Weight{Deed::turnWheel, 40},
    Weight{Deed::clickRow, 40},
    Weight{Deed::doubleClickRow, 100},
    Weight{Deed::openMenu, 15},
    Weight{Deed::drop, 20},
    Weight{Deed::tap, 130},
    Weight{Deed::shortcut, 50},
};

constexpr std::array inMenu = {
    Weight{Deed::clickInFront, 30}, Weight{Deed::clickAnywhere, 15}, Weight{Deed::tap, 35},
    Weight{Deed::escape, 15},       Weight{Deed::confirm, 15},       Weight{Deed::plug, 10},
};

constexpr std::array inDialog = {
    Weight{Deed::clickInFront, 15}, Weight{Deed::clickButton, 30}, Weight{Deed::clickAnywhere, 5},
    Weight{Deed::tap, 15},          Weight{Deed::typeDigit, 10},   Weight{Deed::escape, 20},
    Weight{Deed::confirm, 30},
};

/// Of a hundred actions, those that are not the user's.
constexpr std::uint64_t meanwhilePercent = 22;

Deed drawn(std::span<const Weight> weights, std::uint64_t number) {
    std::uint64_t total = 0;
    for (const Weight& each : weights) {
        total += each.weight;
    }
    std::uint64_t rest = number % total;
    for (const Weight& each : weights) {
        if (rest < each.weight) {
            return each.deed;
        }
        rest -= each.weight;
    }
    return Deed::wait;
}

} // namespace

std::string_view nameOf(Deed deed) {
    static constexpr std::array<std::string_view, static_cast<std::size_t>(Deed::wait) + 1> names =
        {"click anywhere",
         "right click anywhere",
         "drag anywhere",
         "click",
         "double click",
         "drag",
         "hold",
         "wheel",
         "click row",
         "double click row",
         "menu",
         "drop",
         "key",
         "shortcut",
         "click in front",
         "click button",
         "escape",
         "confirm",
         "digit",
         "recorder in or out",
         "card report",
         "recorder silent or not",
         "other device",
         "sound server down or up",
         "sound server stalls or goes on",
         "make file",
         "remove file",
         "cut file",
         "remove folder",
         "make folder",
         "wait"};
    return names.at(static_cast<std::size_t>(deed));
}

Action actionOf(std::uint32_t seed, std::size_t number) {
    std::seed_seq sequence{seed, static_cast<std::uint32_t>(number)};
    std::mt19937_64 random(sequence);
    const auto fraction = [&random] {
        return std::ldexp(static_cast<double>(random() >> 11U), -53);
    };
    Action action;
    action.number = number;
    const bool isMeanwhile = random() % 100 < meanwhilePercent;
    action.inWindow = drawn(inWindow, random());
    action.inMenu = drawn(inMenu, random());
    action.inDialog = drawn(inDialog, random());
    if (const Deed deed = drawn(meanwhile, random()); isMeanwhile) {
        action.inWindow = action.inMenu = action.inDialog = deed;
    }
    action.which = random();
    action.x = fraction();
    action.y = fraction();
    action.toX = fraction();
    action.toY = fraction();
    return action;
}

} // namespace deckmate::test
