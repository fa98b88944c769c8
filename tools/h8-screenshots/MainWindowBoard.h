// The main window's views as they look while a recording plays, with nothing behind them.
#pragma once

#include <memory>

#include <QPixmap>

class QWidget;

namespace deckmate {

/// Without the menu bar. Thread: main.
std::unique_ptr<QWidget> makeMainWindowBoard();

/// The board, which is shown, as if each of its views had the keyboard at the same time.
QPixmap focusedEverywhere(QWidget& board);

} // namespace deckmate
