#include "app/HeldKey.h"

#include <utility>

#include <QCoreApplication>

namespace deckmate {

HeldKey::HeldKey(Qt::Key key) : key_(key) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool HeldKey::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::KeyPress: {
        const auto& press = *static_cast<QKeyEvent*>(event);
        if (release_ != nullptr && press.key() == key_ &&
            press.timestamp() == release_->timestamp()) {
            release_ = nullptr;
        }
        letGo();
        return false;
    }
    case QEvent::MouseButtonPress:
    case QEvent::FocusOut: // a button that has lost the focus isn't clicked any more
        letGo();
        return false;
    case QEvent::KeyRelease: {
        const auto& release = *static_cast<QKeyEvent*>(event);
        // Not what letGo() sends, and nothing that is dropped on its way from window to widget.
        if (release.key() != key_ || release.isAutoRepeat() || !release.spontaneous() ||
            !watched->isWidgetType()) {
            return false;
        }
        withhold(*watched, release);
        return true;
    }
    default:
        return false;
    }
}

void HeldKey::withhold(QObject& receiver, const QKeyEvent& release) {
    letGo();
    release_.reset(release.clone());
    receiver_ = &receiver;
    if (echo_) {
        echo_.release()->deleteLater(); // it may be the one that is calling
    }
    echo_ = std::make_unique<ServerEcho>([self = QPointer(this), number = ++withheld_] {
        if (self && number == self->withheld_) {
            self->letGo();
        }
    });
}

void HeldKey::letGo() {
    if (const auto release = std::exchange(release_, nullptr); release && receiver_) {
        QCoreApplication::sendEvent(receiver_, release.get());
    }
}

} // namespace deckmate
