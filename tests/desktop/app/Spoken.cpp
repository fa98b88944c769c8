#include "desktop/app/Spoken.h"

#include <QAccessible>
#include <QWidget>

namespace deckmate::test {

namespace {

void collect(const QAccessibleInterface& root, std::vector<std::string>& names) {
    if (root.childCount() == 0) {
        names.push_back(root.text(QAccessible::Name).toStdString());
    }
    for (int i = 0; i < root.childCount(); ++i) {
        collect(*root.child(i), names);
    }
}

} // namespace

std::vector<std::string> spokenNames(QWidget& window) {
    std::vector<std::string> names;
    collect(*QAccessible::queryAccessibleInterface(&window), names);
    return names;
}

} // namespace deckmate::test
