#include "desktop/support/Desktop.h"
#include "desktop/support/Display.h"

#include <gmock/gmock.h>

#include <QApplication>

/// The keyboard library copies texts that end where their buffer does.
extern "C" const char* __asan_default_suppressions() {
    return "interceptor_via_lib:libxkbcommon-x11.so\n";
}

/// Qt is built without the sanitizer, which doesn't see how Qt's threads wait for each other.
extern "C" const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1";
}

int main(int count, char** arguments) {
    testing::InitGoogleMock(&count, arguments);
    // Before any thread is there, since it changes the environment.
    const deckmate::test::Display display;
    const QApplication application(count, arguments);
    const deckmate::test::Desktop desktop;
    return RUN_ALL_TESTS();
}
