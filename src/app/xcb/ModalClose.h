// Closing the main window while a dialog is in front of it.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QTimer>

class QWidget;

namespace deckmate {

/// The toolkit drops a window manager's request to close a window that a modal one blocks. For this
/// window the dialogs are rejected instead, the foremost first, and then it is closed. On window
/// systems other than X there is nothing to be told. Thread: main.
class ModalClose final : public QAbstractNativeEventFilter {
public:
    /// `window` must outlive it.
    explicit ModalClose(QWidget& window);

    bool nativeEventFilter(const QByteArray& kind, void* message, qintptr* result) override;

private:
    void closeAll();

    QWidget& window_;
    QTimer closing_; ///< not from inside the filter: the dialogs' own event loops run it
    std::uint32_t protocols_ = 0; ///< the atoms WM_PROTOCOLS and WM_DELETE_WINDOW
    std::uint32_t deleteWindow_ = 0;
};

} // namespace deckmate
