// The look that all windows of the application have in common.
#pragma once

class QApplication;

namespace deckmate {

/// Font, colours, style sheet and icon; to be called once, before the first window is made, so
/// that every desktop shows the same. Thread: main.
void applyLook(QApplication& application);

} // namespace deckmate
