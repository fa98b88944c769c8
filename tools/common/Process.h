// What a command-line program does first and last, so that its surroundings can't harm its files.
#pragma once

namespace deckmate::tools {

/// Exit statuses of every tool.
enum ExitStatus { allDone = 0, someFailed = 1, wrongUsage = 2 };

/// Runs a program's work and returns its exit status. A reader that has gone away and a file-size
/// limit become failed writes instead of signals. Closed standard streams are opened on /dev/null
/// first, so that no file that is opened later takes their place and receives messages. What is
/// thrown, such as for want of memory, ends in one line on standard error and someFailed.
int runProgram(const char* name, int argc, char** argv,
               int (*work)(int argc, char** argv)) noexcept;

} // namespace deckmate::tools
