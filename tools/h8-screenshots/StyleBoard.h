// Everything that the style sheet and the images decide, on one board.
#pragma once

#include <memory>

class QWidget;

namespace deckmate {

/// Thread: main.
std::unique_ptr<QWidget> makeStyleBoard();

} // namespace deckmate
