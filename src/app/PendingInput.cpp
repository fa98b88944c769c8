#include "app/PendingInput.h"

#include "app/xcb/ServerEcho.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

namespace deckmate {

namespace {

bool isInput(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::ContextMenu:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
        return true;
    default:
        return false;
    }
}

/// Deletes itself when nothing can be left of what waited when it was made.
class InputFilter final : public QObject {
public:
    InputFilter()
        : QObject(QCoreApplication::instance()), echo_([this] {
              QCoreApplication::instance()->removeEventFilter(this);
              deleteLater();
          }) {
        QCoreApplication::instance()->installEventFilter(this);
    }

protected:
    // Only on their way into widgets: a window keeps account of the buttons that are held.
    bool eventFilter(QObject* receiver, QEvent* event) override {
        return receiver->isWidgetType() && isInput(event->type());
    }

private:
    ServerEcho echo_;
};

} // namespace

void dropPendingInput() {
    new InputFilter;
}

} // namespace deckmate
