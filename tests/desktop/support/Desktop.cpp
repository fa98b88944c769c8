#include "desktop/support/Desktop.h"

#include "desktop/support/PingFilter.h"
#include "desktop/support/XConnection.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <stdexcept>

#include <QApplication>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QToolTip>
#include <QWidget>
#include <QWindow>

namespace deckmate::test {

namespace {

constexpr int askingInterval = 5;
/// Of a click that is to count as the next of several, however slow the machine.
constexpr int patientInterval = 60'000;
constexpr int dragSteps = 4;

Desktop* theDesktop = nullptr;

/// How soon clicks must follow each other, for as long as this exists.
class ClickInterval {
public:
    explicit ClickInterval(int milliseconds) : before_(QApplication::doubleClickInterval()) {
        QApplication::setDoubleClickInterval(milliseconds);
    }
    ~ClickInterval() { QApplication::setDoubleClickInterval(before_); }
    ClickInterval(const ClickInterval&) = delete;
    ClickInterval& operator=(const ClickInterval&) = delete;
    ClickInterval(ClickInterval&&) = delete;
    ClickInterval& operator=(ClickInterval&&) = delete;

private:
    int before_;
};

/// The pixel that begins at or before a place counted in pixels, and the one at or behind it.
int pixelFrom(double place) {
    return static_cast<int>(std::floor(place));
}

int pixelBehind(double place) {
    return static_cast<int>(std::ceil(place));
}

} // namespace

struct Desktop::Impl {
    Impl() {
        pinged.create();
        QApplication::instance()->installNativeEventFilter(&filter);
    }

    XConnection connection;
    PingFilter filter{connection.pingType()};
    QWindow pinged; ///< never shown
    std::uint32_t pings = 0;
    std::set<Button> buttons; ///< those that are down
    std::set<std::string> keys;
};

Desktop& Desktop::get() {
    return *theDesktop;
}

Desktop::Desktop() : impl_(std::make_unique<Impl>()) {
    theDesktop = this;
    moveAway();
}

Desktop::~Desktop() {
    for (const Button button : impl_->buttons) {
        impl_->connection.button(static_cast<unsigned>(button), false);
    }
    for (const std::string& key : impl_->keys) {
        impl_->connection.key(key, false);
    }
    theDesktop = nullptr;
}

void Desktop::show(QWidget& window) {
    window.show();
    window.raise();
    window.activateWindow();
    const bool isShown = waitFor([&] {
        return window.windowHandle() != nullptr && window.windowHandle()->isExposed() &&
               window.isActiveWindow();
    });
    if (!isShown) {
        throw std::runtime_error("a window doesn't come up");
    }
    settle();
}

bool Desktop::waitFor(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    QElapsedTimer clock;
    clock.start();
    QTimer ask; // what other processes change comes without an event
    ask.start(askingInterval);
    while (!condition()) {
        if (clock.hasExpired(limit.count())) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

void Desktop::settle() {
    const std::uint32_t token = ++impl_->pings;
    impl_->connection.ping(static_cast<std::uint32_t>(impl_->pinged.winId()), token);
    if (!waitFor([&] { return impl_->filter.newest >= token; })) {
        throw std::runtime_error("the application doesn't hear the X server");
    }
    // The events before the ping may wait in Qt's own queue.
    QCoreApplication::processEvents();
}

void Desktop::moveTo(const QWidget& widget, QPointF place) {
    // Not by the global place: Qt rounds that of a window on odd pixels at two pixels a point.
    const QWidget& window = *widget.window();
    const QPointF pixel = widget.mapTo(&window, place) * window.devicePixelRatio();
    impl_->connection.movePointerIn(static_cast<std::uint32_t>(window.winId()),
                                    static_cast<int>(std::lround(pixel.x())),
                                    static_cast<int>(std::lround(pixel.y())));
    settle();
}

void Desktop::moveAway() {
    constexpr int beyond = 32767; // the server keeps the pointer on its screen
    impl_->connection.movePointer(beyond, beyond);
    settle();
}

void Desktop::press(Button button) {
    impl_->buttons.insert(button);
    impl_->connection.button(static_cast<unsigned>(button), true);
    settle();
}

void Desktop::release(Button button) {
    impl_->buttons.erase(button);
    impl_->connection.button(static_cast<unsigned>(button), false);
    settle();
}

void Desktop::click(const QWidget& widget, QPointF place, Button button) {
    const ClickInterval none(0);
    moveTo(widget, place);
    press(button);
    release(button);
}

void Desktop::clicks(const QWidget& widget, QPointF place, int count) {
    click(widget, place);
    const ClickInterval patient(patientInterval);
    for (int i = 1; i < count; ++i) {
        press();
        release();
    }
}

void Desktop::drag(const QWidget& widget, QPointF from, QPointF to) {
    const ClickInterval none(0);
    moveTo(widget, from);
    press();
    for (int i = 1; i <= dragSteps; ++i) {
        moveTo(widget, from + (to - from) * i / dragSteps);
    }
    release();
}

void Desktop::turnWheel(const QWidget& widget, QPointF place, unsigned direction, int notches) {
    moveTo(widget, place);
    for (int i = 0; i < notches; ++i) {
        impl_->connection.button(direction, true);
        impl_->connection.button(direction, false);
        settle();
    }
}

void Desktop::wheel(const QWidget& widget, QPointF place, int notches) {
    turnWheel(widget, place, notches > 0 ? 4 : 5, std::abs(notches));
}

void Desktop::wheelSideways(const QWidget& widget, QPointF place, int notches) {
    turnWheel(widget, place, notches > 0 ? 7 : 6, std::abs(notches));
}

void Desktop::tap(const std::string& key, std::initializer_list<const char*> held) {
    for (const char* other : held) {
        keyDown(other);
    }
    keyDown(key);
    keyUp(key);
    for (const char* other : held) {
        keyUp(other);
    }
}

void Desktop::keyDown(const std::string& key) {
    impl_->connection.key(key, true);
    impl_->keys.insert(key);
    settle();
}

void Desktop::keyUp(const std::string& key) {
    impl_->keys.erase(key);
    impl_->connection.key(key, false);
    settle();
}

void Desktop::type(const std::string& text) {
    for (const char character : text) {
        const std::string key(1, character);
        if (impl_->connection.needsShift(key)) {
            tap(key, {"Shift_L"});
        } else {
            tap(key);
        }
    }
}

QImage Desktop::painted(QWidget& widget) {
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

QImage Desktop::shown(const QWidget& widget) {
    const QWidget& window = *widget.window();
    const QPoint place = widget.mapTo(&window, QPoint());
    return QApplication::primaryScreen()
        ->grabWindow(window.winId(), place.x(), place.y(), widget.width(), widget.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

QImage Desktop::screen() {
    return QApplication::primaryScreen()->grabWindow(0).toImage().convertToFormat(
        QImage::Format_RGB32);
}

QColor colourAt(const QImage& image, QPointF place) {
    const QPointF pixel = place * image.devicePixelRatio();
    return image.pixelColor(pixelFrom(pixel.x()), pixelFrom(pixel.y()));
}

QColor colourAbove(const QImage& image, QPointF place) {
    const QPointF pixel = place * image.devicePixelRatio();
    return image.pixelColor(pixelFrom(pixel.x()), pixelFrom(pixel.y()) - 1);
}

QColor colourBelow(const QImage& image, QPointF place) {
    const QPointF pixel = place * image.devicePixelRatio();
    return image.pixelColor(pixelFrom(pixel.x()), pixelBehind(pixel.y()));
}

QColor colourLeftOf(const QImage& image, QPointF place) {
    const QPointF pixel = place * image.devicePixelRatio();
    return image.pixelColor(pixelFrom(pixel.x()) - 1, pixelFrom(pixel.y()));
}

QColor colourRightOf(const QImage& image, QPointF place) {
    const QPointF pixel = place * image.devicePixelRatio();
    return image.pixelColor(pixelBehind(pixel.x()), pixelFrom(pixel.y()));
}

QString toolTipAt(QWidget& widget, QPoint place) {
    QHelpEvent event(QEvent::ToolTip, place, widget.mapToGlobal(place));
    QApplication::sendEvent(&widget, &event);
    return QToolTip::text();
}

} // namespace deckmate::test
