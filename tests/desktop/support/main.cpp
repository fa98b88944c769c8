#include "desktop/support/Desktop.h"
#include "desktop/support/Display.h"

#include <gmock/gmock.h>

#include <QApplication>

int main(int count, char** arguments) {
    testing::InitGoogleMock(&count, arguments);
    // Before any thread is there, since it changes the environment.
    const deckmate::test::Display display;
    const QApplication application(count, arguments);
    const deckmate::test::Desktop desktop;
    return RUN_ALL_TESTS();
}
