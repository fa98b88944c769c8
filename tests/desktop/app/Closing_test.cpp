// The close button of the main window's title bar while dialogs are in front.
#include "desktop/app/Answers.h"
#include "desktop/app/LookEnvironment.h"
#include "desktop/app/MainWindowTest.h"
#include "desktop/app/XWindows.h"

#include "app/Alert.h"

#include <QApplication>
#include <QPointer>

namespace deckmate::test {
namespace {

class Closing : public MainWindowTest {
protected:
    Closing() {
        start();
        controller->doors.presentModally = [](DialogWindow& dialog) { dialog.exec(); };
        controller->doors.showAlert = [this](const QString& text) {
            showAlert(&windows->window(), text);
        };
    }
    /// By the window manager, as its button would.
    void close() const { xWindows.close(static_cast<XWindows::Window>(windows->window().winId())); }
    bool isClosed() const { return !windows->window().isVisible(); }

    const XWindows xWindows;
    Answers answers;
};

TEST_F(Closing, EndsADialogAndClosesTheWindow) {
    answers.add("AboutVC", [this](QWidget& dialog) {
        close();
        EXPECT_TRUE(Desktop::waitFor([&] { return !dialog.isVisible(); }));
    });
    controller->btnAbout_Click();
    EXPECT_TRUE(Desktop::waitFor([this] { return isClosed(); }));
}

TEST_F(Closing, EndsDialogsThatLieOverEachOther) {
    addTake("take.wav");
    controller->updateFileBrowser();
    doubleClickRow("take.wav");
    answers.add("ExportVC", [this](QWidget& sheet) {
        showAlert(&sheet, "Fail to save.");
        EXPECT_TRUE(Desktop::waitFor([&] { return !sheet.isVisible(); }));
    });
    answers.add("alert", [this](QWidget& alert) {
        close();
        const QPointer<QWidget> shown(&alert);
        EXPECT_TRUE(Desktop::waitFor([&] { return shown == nullptr || !shown->isVisible(); }));
    });
    controller->btnExport_Click();
    EXPECT_TRUE(Desktop::waitFor([this] { return isClosed(); }));
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(Closing, WaitsForADialogThatRefuses) {
    class Refusing : public QDialog {
    public:
        bool refuses = true;

    protected:
        void closeEvent(QCloseEvent* event) override { event->setAccepted(!refuses); }
    };
    Refusing dialog;
    dialog.setObjectName("refusing");
    answers.add("refusing", [&](QWidget& /*window*/) {
        close();
        desktop.settle();
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_FALSE(isClosed());
        dialog.done(0);
    });
    dialog.exec();
    EXPECT_FALSE(isClosed());
}

TEST_F(Closing, OfADialogLeavesTheWindow) {
    answers.add("AboutVC", [this](QWidget& dialog) {
        xWindows.close(static_cast<XWindows::Window>(dialog.winId()));
        EXPECT_TRUE(Desktop::waitFor([&] { return !dialog.isVisible(); }));
    });
    controller->btnAbout_Click();
    desktop.settle();
    EXPECT_FALSE(isClosed());
}

} // namespace
} // namespace deckmate::test
