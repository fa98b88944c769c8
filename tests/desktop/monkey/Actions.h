// What a seed makes the monkey do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace deckmate::test {

enum class Deed {
    // By pointer in the main window
    clickAnywhere,
    rightClickAnywhere,
    dragAnywhere,
    clickControl,
    doubleClickControl,
    dragControl,
    holdControl,
    turnWheel,
    clickRow,
    doubleClickRow,
    openMenu,
    drop,
    // By key, wherever the keyboard is
    tap,
    shortcut,
    // In a window or menu in front of it
    clickInFront,
    clickButton,
    escape,
    confirm,
    typeDigit,
    // What happens meanwhile
    plug,
    report,
    muzzle,
    plugOther,
    serverDown,
    serverStalls,
    makeFile,
    removeFile,
    cutFile,
    removeFolder,
    makeFolder,
    wait,
};

std::string_view nameOf(Deed deed);

/// One step. The deed depends on what is in front at the time; the numbers say where and which.
struct Action {
    std::size_t number = 0;
    Deed inWindow = Deed::wait; ///< nothing is in front of the main window
    Deed inMenu = Deed::wait;   ///< a menu or a pop-up is
    Deed inDialog = Deed::wait; ///< a modal window is
    std::uint64_t which = 0;
    double x = 0; ///< this and the next ones from 0 up to 1
    double y = 0;
    double toX = 0;
    double toY = 0;
};

/// The same for the same seed and number, on every machine.
Action actionOf(std::uint32_t seed, std::size_t number);

} // namespace deckmate::test
