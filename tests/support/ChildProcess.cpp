#include "support/ChildProcess.h"

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace deckmate::test {

namespace {

using namespace std::chrono_literals;

constexpr auto startingLimit = 30s;
constexpr auto askingInterval = 5ms;

} // namespace

ChildProcess::ChildProcess(std::vector<std::string> command, const std::string& output) {
    // A test that a sanitizer ends would leave it running, and its runner waiting for its output.
    command.insert(command.begin(), {"setpriv", "--pdeathsig", "KILL"});
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    if (!output.empty()) {
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, output.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
    }
    const int error =
        posix_spawnp(&id_, arguments.front(), &files, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), command.front());
    }
}

ChildProcess::~ChildProcess() {
    if (id_ > 0) {
        ::kill(id_, SIGKILL);
        waitpid(id_, nullptr, 0);
    }
}

void ChildProcess::signal(int number) const {
    ::kill(id_, number);
}

bool ChildProcess::hasSucceeded() {
    int status = 0;
    waitpid(id_, &status, 0);
    id_ = -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void waitUntil(const std::function<bool()>& holds, const std::string& what) {
    const auto limit = std::chrono::steady_clock::now() + startingLimit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > limit) {
            throw std::runtime_error(what + " takes too long");
        }
        std::this_thread::sleep_for(askingInterval);
    }
}

} // namespace deckmate::test
