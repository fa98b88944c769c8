// What the windows' contents are made of, so that all of them look alike.
#pragma once

#include <QString>

class QLabel;
class QLayout;
class QMessageBox;
class QPushButton;
class QWidget;

namespace deckmate {

/// Points; everything in a dialog stands on this grid.
inline constexpr int grid = 8;

/// Text as it stands, never markup. The style sheet knows the roles "heading", "subheading" and
/// "detail".
QLabel* makeLabel(const QString& text, const char* role, QWidget* parent);
/// The same over several lines, as many as it takes at this width.
QLabel* makeParagraph(const QString& text, const char* role, int width, QWidget* parent);

/// The text as a tool tip shows it as it stands: a name like <b>.wav would be taken for markup.
QString asToolTip(const QString& text);

/// A row that ends with the dialog's main button, which Return presses; `beside` may be null.
QLayout* makeButtonRow(QWidget* beside, QPushButton* button);
/// A message box without an icon, with its texts, laid out as the dialogs are; `width` points for
/// the texts or more.
void layOutMessage(QMessageBox& box, int width);
/// The button that Return presses.
QPushButton* makeMainButton(const QString& text, const QString& name, QWidget* parent);

} // namespace deckmate
