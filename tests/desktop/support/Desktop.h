// Hands and eyes of a desktop test: pointer, keyboard, pixels and patience.
#pragma once

#include <chrono>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QString>

class QWidget;

namespace deckmate::test {

/// Long enough for whatever is to happen; a test that gets there has failed.
inline constexpr std::chrono::seconds aWhile{30};

/// One user before one screen. Each action is a device's event to the X server, and returns when
/// the application has dealt with all that the server sent because of it. Places are points of a
/// widget that is shown, y downward. Exists while main() of a desktop test runs. Thread: main.
class Desktop {
public:
    enum class Button : unsigned { Left = 1, Middle = 2, Right = 3 };

    static Desktop& get();

    Desktop();
    /// Lets everything go.
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    Desktop(Desktop&&) = delete;
    Desktop& operator=(Desktop&&) = delete;

    /// Shows a window and waits until it is on the screen and has the keyboard.
    void show(QWidget& window);
    /// Runs the event loop until the condition holds; NO if it doesn't in a while.
    static bool waitFor(const std::function<bool()>& condition,
                        std::chrono::milliseconds limit = aWhile);
    /// Until the application has dealt with all that the server has sent.
    void settle();

    void moveTo(const QWidget& widget, QPointF place);
    /// Away from every window, into the lower right corner.
    void moveAway();
    void press(Button button = Button::Left);
    void release(Button button = Button::Left);
    /// A single click, however soon after another one.
    void click(const QWidget& widget, QPointF place, Button button = Button::Left);
    /// As many clicks as quickly as they count as one: 2 for a double click.
    void clicks(const QWidget& widget, QPointF place, int count);
    void doubleClick(const QWidget& widget, QPointF place) { clicks(widget, place, 2); }
    /// Press, some steps on the way, release.
    void drag(const QWidget& widget, QPointF from, QPointF to);
    /// Notches of the wheel, positive away from the user.
    void wheel(const QWidget& widget, QPointF place, int notches);
    /// The same of a wheel that is tilted or turned sideways, positive to the right.
    void wheelSideways(const QWidget& widget, QPointF place, int notches);

    /// A key by its X symbol's name ("Tab", "Right", "Page_Up", "F1", "a"), while others are held
    /// ("Shift_L", "Control_L", "Alt_L").
    void tap(const std::string& key, std::initializer_list<const char*> held = {});
    void keyDown(const std::string& key);
    void keyUp(const std::string& key);
    /// Letters and digits, and what `tap` names.
    void type(const std::string& text);

    /// What the widget paints, one pixel of the image for each of the device.
    static QImage painted(QWidget& widget);
    /// What the X server shows at the widget's place, whoever painted it.
    static QImage shown(const QWidget& widget);
    /// What the X server shows on the whole screen.
    static QImage screen();

private:
    /// `direction` is the X button that a notch is.
    void turnWheel(const QWidget& widget, QPointF place, unsigned direction, int notches);

    struct Impl;

    std::unique_ptr<Impl> impl_;
};

/// The colour of the pixel in the middle of the point; `image` as Desktop::painted gives it.
QColor colourAt(const QImage& image, QPointF place);

/// The colour of the nearest pixel that lies wholly on one side of an edge through the place. At
/// some ratios an edge on a whole point runs through the middle of a pixel, which is of either
/// side's colour or a blend.
QColor colourAbove(const QImage& image, QPointF place);
QColor colourBelow(const QImage& image, QPointF place);
QColor colourLeftOf(const QImage& image, QPointF place);
QColor colourRightOf(const QImage& image, QPointF place);

/// What the widget tells of itself when the pointer rests there.
QString toolTipAt(QWidget& widget, QPoint place);

} // namespace deckmate::test
