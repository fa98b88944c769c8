#include "desktop/support/Desktop.h"

#include <gmock/gmock.h>
#include <vector>

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <QWidget>

namespace deckmate::test {

namespace {

using testing::ElementsAre;

/// Writes down what comes to it.
class Sheet final : public QWidget {
public:
    Sheet() {
        setFixedSize(200, 100);
        setMouseTracking(true);
    }

    std::vector<QEvent::Type> types;
    std::vector<QPointF> places;
    int wheel = 0;

protected:
    void mousePressEvent(QMouseEvent* event) override { note(*event); }
    void mouseReleaseEvent(QMouseEvent* event) override { note(*event); }
    void mouseDoubleClickEvent(QMouseEvent* event) override { note(*event); }
    void mouseMoveEvent(QMouseEvent* event) override { places.push_back(event->position()); }
    void wheelEvent(QWheelEvent* event) override { wheel += event->angleDelta().y(); }
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.fillRect(0, 0, 100, 100, Qt::red);
        painter.fillRect(100, 0, 100, 100, Qt::blue);
    }

private:
    void note(const QMouseEvent& event) {
        EXPECT_TRUE(event.spontaneous());
        types.push_back(event.type());
        places.push_back(event.position());
    }
};

class DesktopSupport : public testing::Test {
protected:
    DesktopSupport() { desktop.show(sheet); }

    Desktop& desktop = Desktop::get();
    Sheet sheet;
};

TEST_F(DesktopSupport, AClickComesFromTheServerAtItsPlace) {
    desktop.click(sheet, {30, 40});
    EXPECT_THAT(sheet.types, ElementsAre(QEvent::MouseButtonPress, QEvent::MouseButtonRelease));
    EXPECT_EQ(sheet.places.back(), QPointF(30, 40));
}

TEST_F(DesktopSupport, TwoClicksInARowAreNoDoubleClick) {
    desktop.click(sheet, {30, 40});
    desktop.click(sheet, {30, 40});
    EXPECT_THAT(sheet.types, ElementsAre(QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                         QEvent::MouseButtonPress, QEvent::MouseButtonRelease));
}

TEST_F(DesktopSupport, ADoubleClickIsOne) {
    desktop.doubleClick(sheet, {30, 40});
    EXPECT_THAT(sheet.types, ElementsAre(QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                         QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease));
}

TEST_F(DesktopSupport, ADragPassesBetweenAndEndsAtItsTarget) {
    desktop.drag(sheet, {10, 10}, {90, 50});
    EXPECT_THAT(sheet.places, testing::IsSupersetOf({QPointF(30, 20), QPointF(50, 30),
                                                     QPointF(70, 40), QPointF(90, 50)}));
    EXPECT_EQ(sheet.types.back(), QEvent::MouseButtonRelease);
}

TEST_F(DesktopSupport, TheWheelTurnsByNotches) {
    desktop.wheel(sheet, {30, 40}, 3);
    EXPECT_EQ(sheet.wheel, 360);
    desktop.wheel(sheet, {30, 40}, -1);
    EXPECT_EQ(sheet.wheel, 240);
}

TEST_F(DesktopSupport, ShownIsWhatTheServerHas) {
    ASSERT_TRUE(Desktop::waitFor([&] {
        return colourAt(Desktop::shown(sheet), {99.5, 50}) == QColor(Qt::red);
    }));
    EXPECT_EQ(colourAt(Desktop::shown(sheet), {100, 50}), QColor(Qt::blue));
}

TEST_F(DesktopSupport, PaintedHasThePixelsOfTheDevice) {
    const QImage image = Desktop::painted(sheet);
    EXPECT_EQ(image.width(), 200 * sheet.devicePixelRatio());
    EXPECT_EQ(colourAt(image, {99.5, 50}), QColor(Qt::red));
    EXPECT_EQ(colourAt(image, {100, 50}), QColor(Qt::blue));
}

/// Of a red, a green and a blue pixel in each direction, green where they cross.
QImage threePixels(double ratio) {
    QImage image(3, 3, QImage::Format_RGB32);
    image.fill(Qt::green);
    image.setPixelColor(1, 0, Qt::red);
    image.setPixelColor(0, 1, Qt::red);
    image.setPixelColor(1, 2, Qt::blue);
    image.setPixelColor(2, 1, Qt::blue);
    image.setDevicePixelRatio(ratio);
    return image;
}

TEST(Edges, BesideAnEdgeBetweenPixelsLieItsNeighbours) {
    const QImage image = threePixels(1);
    EXPECT_EQ(colourAbove(image, {1, 1}), QColor(Qt::red));
    EXPECT_EQ(colourBelow(image, {1, 2}), QColor(Qt::blue));
    EXPECT_EQ(colourLeftOf(image, {1, 1}), QColor(Qt::red));
    EXPECT_EQ(colourRightOf(image, {2, 1}), QColor(Qt::blue));
}

TEST(Edges, ThePixelThatAnEdgeRunsThroughIsOnNeitherSide) {
    const QImage image = threePixels(1.5); // a point is in the middle of the second pixel
    EXPECT_EQ(colourAbove(image, {1, 1}), QColor(Qt::red));
    EXPECT_EQ(colourBelow(image, {1, 1}), QColor(Qt::blue));
    EXPECT_EQ(colourLeftOf(image, {1, 1}), QColor(Qt::red));
    EXPECT_EQ(colourRightOf(image, {1, 1}), QColor(Qt::blue));
}

TEST_F(DesktopSupport, AWaitGivesUp) {
    EXPECT_FALSE(Desktop::waitFor([] { return false; }, std::chrono::milliseconds(20)));
}

TEST_F(DesktopSupport, TextIsTypedInBothCases) {
    QLineEdit line;
    desktop.show(line);
    desktop.type("aB9");
    EXPECT_EQ(line.text(), "aB9");
}

TEST_F(DesktopSupport, AHeldKeyChangesWhatAnotherOneMeans) {
    QLineEdit line("all");
    desktop.show(line);
    desktop.tap("a", {"Control_L"});
    EXPECT_EQ(line.selectedText(), "all");
}

TEST_F(DesktopSupport, NothingOfTheUserIsThere) {
    EXPECT_TRUE(qEnvironmentVariable("HOME").startsWith(QDir::tempPath()));
    EXPECT_EQ(QApplication::platformName(), "xcb");
}

} // namespace

} // namespace deckmate::test
