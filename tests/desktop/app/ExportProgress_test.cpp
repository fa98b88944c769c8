#include "desktop/app/ExportSheet.h"
#include "desktop/app/XWindows.h"
#include "desktop/support/XConnection.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <optional>
#include <pthread.h>
#include <thread>
#include <unistd.h>

#include <QMetaObject>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QTimer>

namespace deckmate::test {

namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::IsEmpty;

constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t trackGrey = 0x585858;

std::atomic<int> ends = 0;

/// No thread can be begun, so that an export works on this one alone and tells of each piece.
class NoMoreThreads {
public:
    NoMoreThreads() {
        pthread_getattr_default_np(&before_);
        pthread_attr_t vast = {};
        pthread_attr_init(&vast);
        pthread_attr_setstacksize(&vast, std::size_t{1} << 50); // more than there are addresses
        pthread_setattr_default_np(&vast);
        pthread_attr_destroy(&vast);
    }
    ~NoMoreThreads() {
        pthread_setattr_default_np(&before_);
        pthread_attr_destroy(&before_);
    }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;
    NoMoreThreads(NoMoreThreads&&) = delete;
    NoMoreThreads& operator=(NoMoreThreads&&) = delete;

private:
    pthread_attr_t before_ = {};
};

/// An export of four pieces, which tells of itself four times; the clock moves between them.
class ExportProgressTest : public ExportSheet {
protected:
    static constexpr std::size_t frames = 4 * 512'000; // a piece has 512,000

    ExportProgressTest() {
        open(zeros(frames * 6));
        noteAlerts();
        sheet->chooseTarget = [this](const auto&...) { return target; };
        sheet->now = [this] {
            // The first question is for the start, the others come before each painting.
            if (questions == 0) {
                if (isAlone) {
                    noMoreThreads.emplace();
                }
            } else {
                time += step;
                if (inside) {
                    inside();
                }
            }
            ++questions;
            return time;
        };
    }

    QProgressBar* progress() const { return find<QProgressBar>("progress"); }
    /// Waits until the X server has the colour in the bar, so far from its left end.
    bool barTurns(std::uint32_t colour, double share) const {
        const double ratio = sheet->devicePixelRatio();
        const QPointF place(share * progress()->width(), progress()->height() / 2.0);
        const QPoint pixel = (progress()->mapTo(sheet.get(), place) * ratio).toPoint();
        return turns(*sheet, pixel, colour);
    }
    bool turns(const QWidget& shown, QPoint pixel, std::uint32_t colour) const {
        return becomes([&] { return windows.pixel(idOf(shown), pixel) == colour; });
    }
    static XWindows::Window idOf(const QWidget& shown) {
        return static_cast<XWindows::Window>(shown.winId());
    }
    /// Waits without handling events, for what others do.
    static bool becomes(const std::function<bool()>& condition) {
        const auto limit = std::chrono::steady_clock::now() + aWhile;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > limit) {
                return false;
            }
            std::this_thread::sleep_for(5ms);
        }
        return true;
    }
    bool isComplete() const {
        return std::filesystem::exists(target) &&
               std::filesystem::file_size(target) == headSize + frames * 6;
    }
    void save() {
        clickOn("btnSave");
        noMoreThreads.reset();
    }

    const XWindows windows;
    std::filesystem::path target = folder / "out.WAV";
    std::chrono::steady_clock::time_point time = std::chrono::steady_clock::time_point(1h);
    std::chrono::milliseconds step = 1s;
    int questions = 0;
    bool isAlone = true; ///< else on as many threads as usual
    std::optional<NoMoreThreads> noMoreThreads;
    /// Called in the middle of the export, before what was asked for is painted.
    std::function<void()> inside;
};

TEST_F(ExportProgressTest, ALongExportIsSeenOnTheScreen) {
    std::vector<int> seen;
    inside = [&] {
        if (questions > 1) {
            EXPECT_TRUE(barTurns(white, 0.02));
            EXPECT_TRUE(barTurns(trackGrey, 0.98));
            EXPECT_TRUE(barTurns(white, progress()->value() / 1000.0 - 0.05));
            EXPECT_TRUE(barTurns(trackGrey, progress()->value() / 1000.0 + 0.05));
            seen.push_back(progress()->value());
        }
    };
    show();
    save();
    EXPECT_THAT(seen, testing::ElementsAre(250, 500, 750));
    EXPECT_TRUE(isComplete());
}

TEST_F(ExportProgressTest, AShortExportShowsNone) {
    step = 70ms; // 280 in all
    std::vector<bool> hidden;
    inside = [&] { hidden.push_back(progress()->isHidden()); };
    show();
    save();
    hidden.push_back(progress()->isHidden());
    EXPECT_THAT(hidden, testing::SizeIs(5));
    EXPECT_THAT(hidden, Each(true));
}

TEST_F(ExportProgressTest, OnSeveralThreadsItRisesToTheEndAndTheFileIsTheSame) {
    Bytes samples(frames * 6);
    std::uint32_t noise = 1;
    for (auto& byte : samples) {
        noise = noise * 1664525 + 1013904223;
        byte = static_cast<Bytes::value_type>(noise >> 24);
    }
    open(samples);
    isAlone = false;
    std::vector<int> seen;
    QObject::connect(progress(), &QProgressBar::valueChanged,
                     [&](int perMille) { seen.push_back(perMille); });
    show();
    clickOn("checkboxNormalize");
    save();
    EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end(), std::greater_equal<>()), seen.end());
    // Two readings of all frames, the end of each of which is told whoever did the last piece.
    EXPECT_THAT(seen, testing::Contains(500));
    ASSERT_THAT(seen, testing::Not(IsEmpty()));
    EXPECT_EQ(seen.back(), 1000);
    const NoMoreThreads alone;
    ASSERT_TRUE(recording_->export2File(folder / "alone.WAV", true, true));
    EXPECT_TRUE(samplesOf(target) == samplesOf(folder / "alone.WAV")); // too long to be printed
    EXPECT_TRUE(isComplete());
}

TEST_F(ExportProgressTest, NothingMovesWhenItAppears) {
    show();
    const QImage before = Desktop::painted(*find<QWidget>("lblFileName"));
    const QRect place = find<QWidget>("btnSave")->geometry();
    const QSize size = sheet->size();
    inside = [&] {
        EXPECT_EQ(find<QWidget>("btnSave")->geometry(), place);
        EXPECT_EQ(sheet->size(), size);
        EXPECT_EQ(Desktop::painted(*find<QWidget>("lblFileName")), before);
    };
    save();
    EXPECT_EQ(questions, 5);
}

TEST_F(ExportProgressTest, ControlsThatCannotActAreDisabled) {
    inside = [&] {
        for (const char* const name :
             {"radio24", "radio32", "checkboxNormalize", "btnCancel", "btnSave"}) {
            EXPECT_EQ(find<QWidget>(name)->isEnabled(), questions == 1) << name;
        }
    };
    show();
    save();
    EXPECT_EQ(questions, 5);
}

TEST_F(ExportProgressTest, TheWindowBelowTheSaveDialogIsWhole) {
    sheet->chooseTarget = ExportVC().chooseTarget;
    QWidget red(&window);
    red.setGeometry(window.rect());
    red.setAutoFillBackground(true);
    red.setPalette(QPalette(Qt::red, Qt::red));
    show();
    XWindows::Window frame = 0;
    QPoint place; // in the window, beside the sheet, below the dialog
    answers.add("saveDialog", [&](QWidget& dialog) {
        ASSERT_TRUE(Desktop::waitFor(
            [&] { return dialog.geometry().left() + 10 < sheet->geometry().left(); }));
        frame = windows.frame(idOf(dialog));
        ASSERT_TRUE(windows.isFrameShown(frame));
        const QPoint onScreen(dialog.geometry().left() + 5, dialog.geometry().center().y());
        place = window.mapFromGlobal(onScreen);
        ASSERT_TRUE(window.rect().contains(place));
        desktop.tap("Return");
    });
    inside = [&] {
        if (questions == 1) {
            EXPECT_TRUE(becomes([&] { return !windows.isFrameShown(frame); }));
        } else {
            const double ratio = window.devicePixelRatio();
            EXPECT_TRUE(turns(window, (QPointF(place) * ratio).toPoint(), 0xFF0000));
        }
    };
    save();
    EXPECT_EQ(questions, 5);
}

TEST_F(ExportProgressTest, NothingElseRunsInBetween) {
    int calls = 0;
    bool isExporting = false;
    const auto count = [&] { calls += isExporting ? 1 : 0; };
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, count);
    timer.start(0ms);
    show();
    inside = [&] {
        isExporting = true;
        QMetaObject::invokeMethod(&timer, count, Qt::QueuedConnection);
    };
    QObject::connect(sheet.get(), &QDialog::finished, [&] {
        EXPECT_EQ(calls, 0);
        isExporting = false;
    });
    save();
    EXPECT_FALSE(isExporting);
    EXPECT_TRUE(isComplete());
}

TEST_F(ExportProgressTest, ARequestToCloseTheWindowIsServedWhenTheFileIsComplete) {
    show();
    inside = [&] {
        windows.close(idOf(window));
        EXPECT_TRUE(window.isVisible());
    };
    QObject::connect(sheet.get(), &QDialog::finished, [&] {
        EXPECT_TRUE(window.isVisible());
        EXPECT_TRUE(isComplete());
    });
    save();
    EXPECT_TRUE(Desktop::waitFor([&] { return !window.isVisible(); }));
    EXPECT_TRUE(isComplete());
}

TEST_F(ExportProgressTest, KeysPressedMeanwhileNeitherCancelNorSaveAgain) {
    int asked = 0;
    sheet->chooseTarget = [&](const auto&...) {
        ++asked;
        return target;
    };
    show();
    inside = [&] {
        const XConnection keyboard;
        for (const char* const key : {"Return", "Escape", "space"}) {
            keyboard.key(key, true);
            keyboard.key(key, false);
        }
        EXPECT_TRUE(sheet->isVisible());
    };
    save();
    desktop.settle();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(eventsFired(), 1);
    EXPECT_TRUE(isComplete());
}

/// The main window under the sheet, with a button in its upper left corner.
class OtherWindow : public ExportProgressTest {
protected:
    OtherWindow() {
        button.setGeometry(0, 0, 120, 40);
        QObject::connect(&button, &QPushButton::clicked, [this] { ++clicks; });
        inside = [this] {
            if (questions == 1) {
                user.movePointerIn(static_cast<std::uint32_t>(idOf(window)), 20, 20);
                meanwhile();
            }
        };
    }
    void clickMeanwhile() const {
        user.button(1, true);
        user.button(1, false);
    }

    const XConnection user;
    QPushButton button{"Play", &window};
    int clicks = 0;
    std::function<void()> meanwhile = [this] { clickMeanwhile(); };
};

TEST_F(OtherWindow, AClickMeanwhileDoesNothingAfterwards) {
    show();
    save();
    desktop.settle();
    EXPECT_EQ(clicks, 0);
    EXPECT_FALSE(button.isDown());
    EXPECT_TRUE(isComplete());
}

TEST_F(OtherWindow, AClickInItsLastInstantDoesNothingAfterwards) {
    inside = [this] {
        if (questions == 4) {
            user.movePointerIn(static_cast<std::uint32_t>(idOf(window)), 20, 20);
            clickMeanwhile();
        }
    };
    show();
    save();
    desktop.settle();
    EXPECT_EQ(clicks, 0);
    EXPECT_FALSE(button.isDown());
}

TEST_F(OtherWindow, AClickMeanwhileDoesNothingWhenTheSheetWasModal) {
    desktop.show(window);
    sheet->setParentFrame(window.geometry());
    answers.add("ExportVC", [&](QWidget& /*window*/) { save(); });
    sheet->exec();
    desktop.settle();
    EXPECT_EQ(clicks, 0);
    EXPECT_TRUE(isComplete());
}

TEST_F(OtherWindow, TheWheelTurnedMeanwhileDoesNothingAfterwards) {
    QSlider slider(Qt::Horizontal, &window);
    slider.setGeometry(button.geometry());
    slider.setValue(50);
    meanwhile = [this] {
        user.button(4, true);
        user.button(4, false);
    };
    show();
    save();
    desktop.settle();
    EXPECT_EQ(slider.value(), 50);
}

TEST_F(OtherWindow, TheNextClickCounts) {
    show();
    save();
    desktop.settle();
    desktop.click(button, {20, 20});
    EXPECT_EQ(clicks, 1);
}

TEST_F(ExportProgressTest, ARequestToEndTheProgramWaitsForTheFile) {
    ends = 0;
    auto* const before = std::signal(SIGTERM, [](int /*number*/) { ++ends; });
    show();
    inside = [&] {
        kill(getpid(), SIGTERM);
        EXPECT_EQ(ends, 0);
    };
    save();
    std::signal(SIGTERM, before);
    EXPECT_EQ(ends, 1);
    EXPECT_TRUE(isComplete());
}

} // namespace

} // namespace deckmate::test
