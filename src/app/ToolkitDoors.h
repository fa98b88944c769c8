// What the main window's controller asks of the toolkit beside its views.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

class QString;
class QWidget;

namespace deckmate {

class DialogWindow;

/// Real ones by makeToolkitDoors(); tests put answers in their place.
struct ToolkitDoors {
    /// The folder that the user chooses, to begin in the given one; nothing if none is chosen.
    std::function<std::optional<std::filesystem::path>(const std::filesystem::path&)> chooseFolder;
    /// Returns when the user has read it.
    std::function<void(const QString& informativeText)> showAlert;
    /// Returns when the dialog is closed.
    std::function<void(DialogWindow&)> presentModally;
    std::function<void(const QString& address)> openInBrowser;
};

/// `window` outlives them, and is what their dialogs stand over. Thread: main.
ToolkitDoors makeToolkitDoors(QWidget& window);

} // namespace deckmate
