// Programs that run beside a test.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace deckmate::test {

/// A program that runs beside the test, and is killed at its end or that of its thread.
class ChildProcess {
public:
    /// Its output goes to the file, if one is named. A program that isn't there says so and ends at
    /// once; throws std::system_error if nothing can be started.
    explicit ChildProcess(std::vector<std::string> command, const std::string& output = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ChildProcess(ChildProcess&&) = delete;
    ChildProcess& operator=(ChildProcess&&) = delete;

    void signal(int number) const;
    /// Waits for its end, and says whether that was a good one.
    bool hasSucceeded();

private:
    pid_t id_ = -1;
};

/// Until what a program does at its start has come about. Throws std::runtime_error, with what was
/// waited for, if that takes too long.
void waitUntil(const std::function<bool()>& holds, const std::string& what);

} // namespace deckmate::test
