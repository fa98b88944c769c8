// A screen of the test's own, which nobody sees.
#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <memory>

namespace deckmate::test {

/// An X server in memory and a window manager on it, both private to this process, which they don't
/// outlive. To be made before the Qt application: changes the environment, so that this process and
/// its children find this display and nothing of the user's: no home, no configuration, no desktop,
/// no bus, no theme.
///
/// The screen is 1600 by 1000 points, or what H8_TEST_SCREEN says ("800x600"), with as many pixels
/// as QT_SCALE_FACTOR asks for.
class Display {
public:
    /// Returns when windows are managed. Throws std::runtime_error if that takes too long.
    Display();

private:
    void startServer();
    void startWindowManager();

    TemporaryFolder folder_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<ChildProcess> windowManager_;
};

} // namespace deckmate::test
