// What an assistive program is told of a window.
#pragma once

#include <string>
#include <vector>

class QWidget;

namespace deckmate::test {

/// The names of what has nothing inside it, in the order in which they are read. Thread: main.
std::vector<std::string> spokenNames(QWidget& window);

} // namespace deckmate::test
