// The main window with everything behind it, of which a monkey has the other ends.
#pragma once

#include "app/ViewController.h"
#include "app/WindowController.h"
#include "desktop/monkey/Recorder.h"
#include "desktop/monkey/Scene.h"
#include "desktop/monkey/WindowRules.h"
#include "platform/SoundSystem.h"
#include "platform/qt/QtRunLoop.h"
#include "support/InProcessMidi.h"
#include "support/LinkEnd.h"
#include "support/MemoryUserDefaults.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace deckmate::test {

/// Real are the window, its dialogs and the sound. Thread: main.
class Stage {
public:
    /// Shows the window, with this folder as the last one. Every other one has recorders that speak
    /// in event lists.
    Stage(const std::filesystem::path& folder, bool hasEventLists);

    /// Whether the window of this name does.
    static bool hasKeyboard(const char* name);
    Scene scene() { return sceneOf(windows_->window()); }
    std::vector<std::string> broken();
    std::vector<std::string> brokenSince();
    WindowRules& rules() { return *rules_; }
    Recorder& recorder() { return recorder_; }
    /// Whether there are any, hidden ones too.
    static bool hasDialogs();
    /// As the file manager does it.
    void drop(const std::filesystem::path& path);
    /// The next answers of whoever is asked for a folder.
    void setChosenFolder(std::optional<std::filesystem::path> folder) {
        chosen_ = std::move(folder);
    }
    void openFolder() { controller_->btnOpenFolder_Click(); }
    std::filesystem::path lastFolder() const;

private:
    void tellRules();

    QtRunLoop loop_;
    MemoryUserDefaults defaults_;
    SoundSystem sound_;
    InProcessMidi midi_;
    Recorder recorder_{midi_};
    LinkEnd linkEnd_;
    std::optional<std::filesystem::path> chosen_;
    std::unique_ptr<WindowController> windows_;
    std::unique_ptr<ViewController> controller_;
    std::unique_ptr<WindowRules> rules_;
};

} // namespace deckmate::test
