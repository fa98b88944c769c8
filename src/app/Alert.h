// The one kind of message that the application has for its user.
#pragma once

class QString;
class QWidget;

namespace deckmate {

/// A small modal window with the text and a button "Ok". Returns when it is closed. `parent` may be
/// null. Thread: main.
void showAlert(QWidget* parent, const QString& informativeText);

} // namespace deckmate
