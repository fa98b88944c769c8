// When a key is really let go.
#pragma once

#include "app/xcb/ServerEcho.h"

#include <functional>
#include <memory>

#include <QObject>

class QKeyEvent;

namespace deckmate {

/// An X server repeats a key that is held by releasing and pressing it at one time. The toolkit
/// tells these releases from the last one only if it has the press by then; this waits for it,
/// whichever widget it goes to. Thread: main.
class HeldKey final : public QObject {
public:
    explicit HeldKey(std::function<void()> onRelease);

    void release(const QKeyEvent& event);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The end of the waiting.
    bool wasPending();
    void fire();

    std::function<void()> onRelease_;
    std::unique_ptr<ServerEcho> echo_;
    int key_ = 0;            ///< that was released last
    quint64 releasedAt_ = 0; ///< the server's time
    bool isPending_ = false;
};

} // namespace deckmate
