#include "common/Process.h"

#include <csignal>
#include <cstdlib>
#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace deckmate::tools {

void prepareProcess() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open() gives the lowest free number: `stream`, since all below it are open.
        if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) != stream) {
            std::_Exit(someFailed);
        }
    }
}

} // namespace deckmate::tools
