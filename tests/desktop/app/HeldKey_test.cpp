// A space bar that is held, when the toolkit reads the two halves of a repetition apart.
#include "desktop/app/LookEnvironment.h"
#include "desktop/app/MainWindowTest.h"

#include "app/IntroductionVC.h"
#include "desktop/support/XConnection.h"

#include <cstdint>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLineEdit>

namespace deckmate::test {
namespace {

constexpr auto space = "space";
constexpr std::uint32_t pressedAt = 1'000;
constexpr std::uint32_t interval = 30;
constexpr int repetitions = 5;

/// Presses the key again as of the time of its release, once the application has got the release.
class LatePress : public QObject {
public:
    LatePress(const XConnection& keyboard, QWidget& window)
        : keyboard_(keyboard), window_(static_cast<std::uint32_t>(window.winId())) {
        qApp->installEventFilter(this);
    }

    bool hasCome = false;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyRelease && watched->isWindowType()) {
            const auto& release = *static_cast<QKeyEvent*>(event);
            EXPECT_FALSE(release.isAutoRepeat());
            if (!hasCome) {
                hasCome = true;
                keyboard_.tellKey(window_, space, true,
                                  static_cast<std::uint32_t>(release.timestamp()));
            }
        }
        return false;
    }

private:
    const XConnection& keyboard_;
    std::uint32_t window_;
};

/// Gives another widget the focus as soon as the window has got a release.
class FocusThief : public QObject {
public:
    explicit FocusThief(QWidget& other) : other_(other) { qApp->installEventFilter(this); }

    bool hasCome = false;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        // Queued: whoever is to get the release first has it by then.
        if (event->type() == QEvent::KeyRelease && watched->isWindowType() && !hasCome) {
            QMetaObject::invokeMethod(
                this,
                [this] {
                    other_.setFocus();
                    hasCome = true;
                },
                Qt::QueuedConnection);
        }
        return false;
    }

private:
    QWidget& other_;
};

class HeldKeyTest : public MainWindowTest {
protected:
    void send(const QWidget& window, bool isDown, std::uint32_t time) {
        keyboard.tellKey(static_cast<std::uint32_t>(window.winId()), space, isDown, time);
    }
    void tell(const QWidget& window, bool isDown, std::uint32_t time) {
        send(window, isDown, time);
        desktop.settle();
    }
    /// Down, and some repetitions.
    void hold(QWidget& window) {
        tell(window, true, pressedAt);
        for (int i = 1; i <= repetitions; ++i) {
            const LatePress late(keyboard, window);
            tell(window, false, pressedAt + static_cast<std::uint32_t>(i) * interval);
            ASSERT_TRUE(late.hasCome);
            waitForReleases();
        }
    }
    void letGo(QWidget& window) {
        tell(window, false, pressedAt + (repetitions + 1) * interval);
        waitForReleases();
    }
    bool isMuted() { return view<QWidget>("btnVolume").accessibleName() == "Unmute"; }

    XConnection keyboard;
};

TEST_F(HeldKeyTest, AButtonIsClickedOnceWhenItIsLetGo) {
    start();
    auto& button = view<QAbstractButton>("btnVolume");
    button.setFocus();
    int clicks = 0;
    QObject::connect(&button, &QAbstractButton::clicked, [&] { ++clicks; });
    hold(windows->window());
    EXPECT_EQ(clicks, 0);
    EXPECT_TRUE(button.isDown());
    letGo(windows->window());
    EXPECT_EQ(clicks, 1);
    EXPECT_FALSE(button.isDown());
}

TEST_F(HeldKeyTest, ADialogsBoxIsTickedOnceWhenItIsLetGo) {
    start();
    IntroductionVC dialog(&windows->window());
    desktop.show(dialog);
    auto& box = *dialog.findChild<QCheckBox*>("toggleShow");
    box.setFocus();
    hold(dialog);
    EXPECT_FALSE(box.isChecked());
    letGo(dialog);
    EXPECT_TRUE(box.isChecked());
}

TEST_F(HeldKeyTest, InTheListItPausesOnceWhenItIsLetGo) {
    addTake("take.wav", 480'000);
    start();
    doubleClickRow("take.wav");
    const auto& button = view<QWidget>("btnPlayPause");
    ASSERT_EQ(button.accessibleName(), "Pause");
    hold(windows->window());
    EXPECT_EQ(button.accessibleName(), "Pause");
    letGo(windows->window());
    EXPECT_EQ(button.accessibleName(), "Play");
}

TEST_F(HeldKeyTest, AFieldGetsEachRepetition) {
    start();
    QLineEdit field;
    desktop.show(field);
    hold(field);
    letGo(field);
    EXPECT_EQ(field.text(), QString(repetitions + 1, ' '));
}

TEST_F(HeldKeyTest, AKeyThatFollowsAtOnceComesAfterTheClick) {
    start();
    view<QWidget>("btnVolume").setFocus();
    for (const char* const key : {"space", "Tab"}) {
        keyboard.key(key, true);
        keyboard.key(key, false);
    }
    desktop.settle();
    EXPECT_TRUE(isMuted());
    EXPECT_EQ(QApplication::focusWidget(), &view<QWidget>("sliderVolume"));
}

TEST_F(HeldKeyTest, AFocusThatMovesAtOnceDoesSoAfterTheClick) {
    start();
    auto& button = view<QAbstractButton>("btnVolume");
    button.setFocus();
    send(windows->window(), true, pressedAt);
    ASSERT_TRUE(Desktop::waitFor([&] { return button.isDown(); }));
    const FocusThief thief(view<QWidget>("tableFile"));
    send(windows->window(), false, pressedAt);
    EXPECT_TRUE(Desktop::waitFor([&] { return thief.hasCome; }));
    waitForReleases();
    EXPECT_TRUE(isMuted());
}

TEST_F(HeldKeyTest, AMouseButtonThatFollowsAtOnceComesAfterTheClick) {
    start();
    view<QWidget>("btnVolume").setFocus();
    desktop.moveTo(view<QWidget>("tableFile"), {100, 100});
    keyboard.key(space, true);
    keyboard.key(space, false);
    keyboard.button(1, true);
    keyboard.button(1, false);
    desktop.settle();
    EXPECT_TRUE(isMuted());
}

} // namespace
} // namespace deckmate::test
