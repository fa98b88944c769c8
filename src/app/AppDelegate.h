// What the application's loop asks the program.
#pragma once

namespace deckmate {

class AppDelegate {
public:
    static void applicationDidFinishLaunching() {}
    static void applicationWillTerminate() {}
    static bool applicationSupportsSecureRestorableState() { return true; }
    /// Closing the main window ends the program.
    static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }
};

} // namespace deckmate
