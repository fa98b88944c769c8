#include "support/SoundServer.h"

#include <gmock/gmock.h>

/// The sound server's client library loses a few bytes when a stream is moved to another sink.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libpulse.so\n";
}

int main(int count, char** arguments) {
    testing::InitGoogleMock(&count, arguments);
    // Before any thread is there, since it changes the environment.
    deckmate::test::SoundServer::hideAll();
    return RUN_ALL_TESTS();
}
