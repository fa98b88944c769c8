// The file browser as assistive programs see it.
#pragma once

class QAccessibleInterface;
class QObject;
class QString;

namespace deckmate {

/// A table whose children are its rows' cells, each with the actions "Press", which opens it, and
/// "SetFocus", which selects it; null for anything but a FileListView. The toolkit's own cells can
/// only be selected. To be installed as a factory. Thread: main.
QAccessibleInterface* makeAccessibleFileList(const QString& className, QObject* object);

} // namespace deckmate
