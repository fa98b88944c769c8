// When a key is really let go.
#pragma once

#include "app/xcb/ServerEcho.h"

#include <memory>

#include <QKeyEvent>
#include <QObject>
#include <QPointer>

namespace deckmate {

/// An X server repeats a key that is held by releasing and pressing it at one time. The toolkit
/// tells these releases from the last one only if it has the press by then. For as long as this
/// exists, whatever has the focus gets a release of this key only once no such press can follow:
/// a button that is held by it is clicked once. Thread: main.
class HeldKey final : public QObject {
public:
    explicit HeldKey(Qt::Key key);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void withhold(QObject& receiver, const QKeyEvent& release);
    void letGo();

    Qt::Key key_;
    std::unique_ptr<QKeyEvent> release_; ///< that may be of a repetition; null for none
    QPointer<QObject> receiver_;         ///< of the release
    std::unique_ptr<ServerEcho> echo_;
    unsigned withheld_ = 0; ///< so far
};

} // namespace deckmate
