#include "common/Process.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <initializer_list>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

namespace deckmate::tools {

namespace {

void prepareProcess() {
    // Large blocks go back to the system at once, and threads keep no memory to themselves: what is
    // decoded beside others has as much of it as what is decoded alone.
    constexpr int smallestMapping = 128 * 1024;
    mallopt(M_MMAP_THRESHOLD, smallestMapping);
    mallopt(M_ARENA_MAX, 1);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open() gives the lowest free number: `stream`, since all below it are open.
        if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) != stream) {
            std::_Exit(someFailed);
        }
    }
}

} // namespace

int runProgram(const char* name, int argc, char** argv,
               int (*work)(int argc, char** argv)) noexcept {
    prepareProcess();
    try {
        return work(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", name, error.what());
        return someFailed;
    }
}

} // namespace deckmate::tools
