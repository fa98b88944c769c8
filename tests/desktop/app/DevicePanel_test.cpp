// The device panel and the dialogs of the main window.
#include "desktop/app/LookEnvironment.h"
#include "desktop/app/MainWindowTest.h"

#include <QAbstractItemView>
#include <QComboBox>

namespace deckmate::test {
namespace {

using testing::ElementsAre;

class DevicePanel : public MainWindowTest {
protected:
    void plugIn() {
        recorder = &midi.addDevice("H8 ORLO MIDI 1");
        recorder->onMessage = [this](const Bytes&) {
            if (next < reply::all().size()) {
                recorder->answerLater(reply::all()[next++]);
            }
        };
        EXPECT_TRUE(Desktop::waitFor([this] { return text("lblConnect") == "Connected"; }));
    }
    QComboBox& menu(const char* name) { return view<QComboBox>(name); }

    InProcessDevice* recorder = nullptr;
    std::size_t next = 0;
};

TEST_F(DevicePanel, WithoutARecorderItShowsPlaceholders) {
    start();
    EXPECT_EQ(text("lblConnect"), "Disconnected");
    EXPECT_EQ(text("lblVersion"), "");
    EXPECT_EQ(text("lblUsed"), "-- GB / -- GB Used");
    EXPECT_EQ(text("lblRemain"), "--:--:--");
    for (const char* const name : {"popupBattery", "popupAutoPow"}) {
        EXPECT_FALSE(menu(name).isEnabled()) << name;
        EXPECT_EQ(menu(name).currentText(), "") << name;
    }
}

TEST_F(DevicePanel, AClickOnACoverTellsThatThereIsNoRecorder) {
    start();
    desktop.click(view<QWidget>("listBatteryCover"), {20, 13});
    desktop.click(view<QWidget>("listAutoPowOffCover"), {20, 13});
    EXPECT_THAT(presented, ElementsAre("NodeviceVC", "NodeviceVC"));
}

TEST_F(DevicePanel, AConnectedRecorderIsShown) {
    start();
    plugIn();
    EXPECT_EQ(text("lblVersion"), "Ver. 1.05");
    EXPECT_EQ(text("lblUsed"), "8.00 MB / 32.0 GB Used");
    EXPECT_EQ(text("lblRemain"), "01:02:03");
    EXPECT_EQ(menu("popupBattery").currentIndex(), 2);
    EXPECT_EQ(menu("popupAutoPow").currentIndex(), 2);
    EXPECT_TRUE(menu("popupBattery").isEnabled());
    EXPECT_FALSE(view<QWidget>("listBatteryCover").isVisible());
}

TEST_F(DevicePanel, TheWheelOverAMenuLeavesTheRecorderAlone) {
    start();
    plugIn();
    desktop.wheel(menu("popupBattery"), {20, 13}, 1);
    desktop.wheel(menu("popupAutoPow"), {20, 13}, -1);
    EXPECT_EQ(menu("popupBattery").currentIndex(), 2);
    EXPECT_EQ(menu("popupAutoPow").currentIndex(), 2);
}

TEST_F(DevicePanel, AReportChangesIt) {
    start();
    plugIn();
    Bytes removed = reply::cardState;
    removed[6] = 0;
    recorder->answerLater(removed);
    EXPECT_TRUE(Desktop::waitFor([this] { return text("lblRemain") == "--:--:--"; }));
    EXPECT_EQ(text("lblUsed"), "-- GB / -- GB Used");
}

TEST_F(DevicePanel, PulledOutItIsDisconnected) {
    start();
    plugIn();
    midi.removeDevice(*recorder);
    EXPECT_TRUE(Desktop::waitFor([this] { return text("lblConnect") == "Disconnected"; }));
    EXPECT_FALSE(menu("popupAutoPow").isEnabled());
    EXPECT_TRUE(view<QWidget>("listAutoPowOffCover").isVisible());
}

TEST_F(DevicePanel, AnOpenMenuClosesWhenItIsPulledOut) {
    start();
    plugIn();
    menu("popupBattery").setFocus();
    desktop.tap("space");
    EXPECT_TRUE(Desktop::waitFor([this] { return menu("popupBattery").view()->isVisible(); }));
    midi.removeDevice(*recorder);
    EXPECT_TRUE(Desktop::waitFor([this] { return !menu("popupBattery").view()->isVisible(); }));
}

TEST_F(DevicePanel, AMenuSetsTheRecorder) {
    start();
    plugIn();
    const std::size_t before = recorder->messages.size();
    menu("popupBattery").setFocus();
    desktop.tap("Up");
    EXPECT_TRUE(Desktop::waitFor([&] { return recorder->messages.size() == before + 1; }));
    EXPECT_EQ(menu("popupBattery").currentIndex(), 1);
    EXPECT_EQ(MIDISequenceManager::getDeviceInfo().batteryType, 1);
}

TEST_F(DevicePanel, ChoosingWhatIsSetSendsNothing) {
    start();
    plugIn();
    const std::size_t before = recorder->messages.size();
    controller->popupBattery_SelectionChanged();
    controller->popupAutoPow_SelectionChanged();
    desktop.settle();
    EXPECT_EQ(recorder->messages.size(), before);
}

TEST_F(DevicePanel, TheFourthItemTurnsAutoPowerOffOff) {
    start();
    plugIn();
    menu("popupAutoPow").setFocus();
    desktop.tap("End");
    EXPECT_TRUE(
        Desktop::waitFor([] { return MIDISequenceManager::getDeviceInfo().autoPowOffType == 0; }));
    EXPECT_EQ(menu("popupAutoPow").currentIndex(), 3);
}

TEST_F(DevicePanel, MenusLeadToTheDialogsAndTheDocumentation) {
    start();
    desktop.tap("F1");
    EXPECT_FALSE(opened.isEmpty());
    controller->btnAbout_Click();
    controller->showIntroduction();
    EXPECT_THAT(presented, ElementsAre("AboutVC", "IntroductionVC"));
}

} // namespace
} // namespace deckmate::test
