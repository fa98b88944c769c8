#include "support/SoundServer.h"

#include <gmock/gmock.h>

int main(int count, char** arguments) {
    testing::InitGoogleMock(&count, arguments);
    // Before any thread is there, since it changes the environment.
    deckmate::test::SoundServer::hideAll();
    return RUN_ALL_TESTS();
}
