// What a command-line program does first, so that its surroundings can't harm it or its files.
#pragma once

namespace deckmate::tools {

/// Exit statuses of every tool.
enum ExitStatus { allDone = 0, someFailed = 1, wrongUsage = 2 };

/// A reader that has gone away and a file-size limit become failed writes instead of signals, and
/// closed standard streams are opened on /dev/null, so that no file that is opened later takes
/// their place and receives messages. Call first in `main`.
void prepareProcess();

} // namespace deckmate::tools
