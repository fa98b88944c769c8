#include "app/HeldKey.h"

#include <utility>

#include <QCoreApplication>
#include <QKeyEvent>

namespace deckmate {

HeldKey::HeldKey(std::function<void()> onRelease) : onRelease_(std::move(onRelease)) {}

void HeldKey::release(const QKeyEvent& event) {
    fire();
    if (event.isAutoRepeat()) {
        return;
    }
    isPending_ = true;
    key_ = event.key();
    releasedAt_ = event.timestamp();
    QCoreApplication::instance()->installEventFilter(this);
    echo_ = std::make_unique<ServerEcho>([this] { fire(); });
}

bool HeldKey::eventFilter(QObject* /*watched*/, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto& press = *static_cast<QKeyEvent*>(event);
        if (press.key() == key_ && press.timestamp() == releasedAt_) {
            wasPending();
        } else {
            fire();
        }
    }
    return false;
}

bool HeldKey::wasPending() {
    QCoreApplication::instance()->removeEventFilter(this);
    return std::exchange(isPending_, false);
}

void HeldKey::fire() {
    if (wasPending()) {
        onRelease_();
    }
}

} // namespace deckmate
