// How round the window's panels are, by what they paint.
#include "desktop/app/LookEnvironment.h"
#include "desktop/app/MainWindowTest.h"

#include <cmath>
#include <numbers>

namespace deckmate::test {
namespace {

constexpr QColor windowColour(0x17, 0x19, 0x1C);
constexpr QColor paneColour(0x21, 0x24, 0x29);
constexpr QColor controlColour(0x2E, 0x32, 0x38);

int lightness(const QColor& colour) {
    return colour.red() + colour.green() + colour.blue();
}

class Panels : public MainWindowTest {
protected:
    /// The radius of its upper left corner, in points. A quarter of a circle leaves 1 - pi / 4 of
    /// the square around it to what is behind. Nothing else is in the square that is looked at.
    double radiusOf(const char* name, const QColor& colour, const QColor& behind,
                    double square = 4) {
        QWidget& content = *windows->window().centralWidget();
        const QImage image = Desktop::painted(content);
        const double ratio = image.devicePixelRatio();
        const QPointF corner = QPointF(view<QWidget>(name).mapTo(&content, QPoint())) * ratio;
        const int left = static_cast<int>(std::lround(corner.x()));
        const int top = static_cast<int>(std::lround(corner.y()));
        const int side = static_cast<int>(std::lround(square * ratio));
        double free = 0; // pixels
        for (int y = top; y < top + side; ++y) {
            for (int x = left; x < left + side; ++x) {
                free += static_cast<double>(lightness(colour) - lightness(image.pixelColor(x, y))) /
                        (lightness(colour) - lightness(behind));
            }
        }
        return std::sqrt(free / (1 - std::numbers::pi / 4)) / ratio;
    }
};

TEST_F(Panels, ThePanesAreRoundedByTwoPoints) {
    start();
    EXPECT_NEAR(radiusOf("viewLeftBG", paneColour, windowColour), 2, 0.25);
    EXPECT_NEAR(radiusOf("viewRightBG", paneColour, windowColour), 2, 0.25);
}

TEST_F(Panels, TheFoldersStripIsRoundedByThree) {
    start();
    EXPECT_NEAR(radiusOf("viewPathBG", controlColour, paneColour), 3, 0.25);
}

TEST_F(Panels, TheExportButtonIsRoundedByEightAndOfTheStripsColour) {
    addTake("take.wav");
    start();
    doubleClickRow("take.wav");
    ASSERT_TRUE(
        Desktop::waitFor([this] { return view<QAbstractButton>("btnExport").isEnabled(); }));
    EXPECT_NEAR(radiusOf("btnExport", controlColour, paneColour, 8), 8, 0.25);
}

} // namespace
} // namespace deckmate::test
