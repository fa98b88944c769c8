#include "app/ElidedLabel.h"
#include "app/FileListCell.h"
#include "app/FolderHelper.h"
#include "app/ImageView.h"
#include "app/PathViewer.h"
#include "controls/Resources.h"

#include "desktop/app/LookEnvironment.h"
#include "desktop/support/Desktop.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QScreen>
#include <QStandardItemModel>
#include <QTableView>
#include <QTemporaryDir>
#include <QToolTip>

namespace deckmate {
namespace {

using test::colourAt;
using test::Desktop;

/// The smallest rectangle, in pixels, of all that isn't of the first pixel's colour.
QRect inkIn(const QImage& image) {
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != image.pixel(0, 0)) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

// ---- The last part of a path

/// Shows paths on white.
QImage shownPath(const QString& text, const QSize& size) {
    PathViewer viewer(QRect(QPoint(), size));
    viewer.setPalette(QPalette(Qt::white));
    viewer.setAutoFillBackground(true);
    viewer.setText(text);
    return Desktop::painted(viewer);
}

TEST(PathViewer, AtFirstItShowsNothing) {
    EXPECT_TRUE(PathViewer().text().isEmpty());
    EXPECT_TRUE(inkIn(shownPath("", {200, 40})).isEmpty());
}

TEST(PathViewer, OnlyTheLastComponentIsShown) {
    const QImage whole = shownPath("/a/b/Recordings", {200, 40});
    EXPECT_FALSE(inkIn(whole).isEmpty());
    EXPECT_EQ(whole, shownPath("Recordings", {200, 40}));
}

TEST(PathViewer, ANameThatFitsStandsAtTheLeftEdge) {
    const QImage image = shownPath("/HHH", {200, 40});
    // An H has hardly any room beside its stem.
    EXPECT_LT(inkIn(image).left(), 3 * image.devicePixelRatio());
    EXPECT_LT(inkIn(image).right(), 100 * image.devicePixelRatio());
}

TEST(PathViewer, OfANameThatIsTooWideTheEndIsSeen) {
    const QString name = QString(30, 'I') + QString(10, 'H');
    const QImage narrow = shownPath("/" + name, {40, 40});
    const QRect ink = inkIn(shownPath("/HHHHHHHHHH", {200, 40}));
    EXPECT_GT(inkIn(narrow).right(), narrow.width() - 1 - 3 * narrow.devicePixelRatio());
    EXPECT_EQ(inkIn(narrow).height(), ink.height());
    EXPECT_NE(narrow, shownPath("/" + QString(40, 'I'), {40, 40}));
}

TEST(PathViewer, TheNameIsCentredFromTopToBottom) {
    const QImage low = shownPath("/HHH", {200, 40});
    const QImage high = shownPath("/HHH", {200, 60});
    // To the pixel, and exactly where 10 points are whole pixels.
    EXPECT_LT(std::abs(inkIn(high).top() - inkIn(low).top() - 10 * low.devicePixelRatio()), 1);
    EXPECT_NEAR((inkIn(low).top() + inkIn(low).bottom()) / 2.0, low.height() / 2.0,
                3 * low.devicePixelRatio());
}

TEST(PathViewer, TheTextIsBlackWhateverThePaletteSays) {
    const QImage image = shownPath("/HHH", {200, 40});
    int darkest = 255;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            darkest = std::min(darkest, qGray(image.pixel(x, y)));
        }
    }
    EXPECT_LT(darkest, 64);
}

TEST(PathViewer, AnotherTextIsDrawnAtOnce) {
    PathViewer viewer(QRect(0, 0, 200, 40));
    viewer.setPalette(QPalette(Qt::white));
    viewer.setAutoFillBackground(true);
    viewer.setText("/first");
    Desktop::get().show(viewer);
    viewer.setText("/second");
    EXPECT_TRUE(
        Desktop::waitFor([&] { return Desktop::shown(viewer) == Desktop::painted(viewer); }));
    EXPECT_EQ(viewer.text(), "/second");
}

TEST(PathViewer, AHostileNameIsDrawnAllTheSame) {
    EXPECT_FALSE(inkIn(shownPath(QString(100'000, 'x'), {40, 40})).isEmpty());
    EXPECT_FALSE(inkIn(shownPath("/one\ntwo", {200, 40})).isEmpty());
}

// ---- A label that shows both ends

/// In 120 by 24 points, white on black.
QImage shownElided(const QString& text) {
    QWidget window;
    window.setPalette(QPalette(Qt::black));
    window.setFixedSize(120, 24);
    ElidedLabel label(&window);
    label.setFixedSize(120, 24);
    label.setText(text);
    return Desktop::painted(window);
}

TEST(ElidedLabel, OfATextThatIsTooLongBothEndsAreSeenAndTheMiddleIsNot) {
    const auto text = [](char first, char middle, char last) {
        return QChar(first) + QString(60, 'H') + QChar(middle) + QString(60, 'H') + QChar(last);
    };
    const QImage shown = shownElided(text('A', 'M', 'Z'));
    EXPECT_NE(shown, shownElided(text('B', 'M', 'Z')));
    EXPECT_NE(shown, shownElided(text('A', 'M', 'Y')));
    EXPECT_EQ(shown, shownElided(text('A', 'N', 'Z')));
}

TEST(ElidedLabel, OfATextThatFitsAllIsSeen) {
    EXPECT_NE(shownElided("HHHMHHH"), shownElided("HHHNHHH"));
}

TEST(ElidedLabel, MarkupIsShownAsItStands) {
    EXPECT_NE(shownElided("<i>H</i>"), shownElided("H"));
}

TEST(ElidedLabel, ALongTextIsToldInFullAndNeverAsMarkup) {
    ElidedLabel label;
    label.setFixedSize(120, 24);
    label.setText("<b>" + QString(240, 'm') + ".wav");
    Desktop::get().show(label);
    EXPECT_EQ(test::toolTipAt(label, {4, 4}),
              "<span>&lt;b&gt;" + QString(240, 'm') + ".wav</span>");
}

// ---- A row of the file browser

class FileList : public testing::Test {
protected:
    static constexpr auto longName =
        "<b>Interview</b> with the organist in the loft, before the concert.WAV";

    FileList() {
        const FileIcons icons = FileIcons::ofTheme();
        model.appendRow(new QStandardItem(icons.folder, "Rehearsals"));
        model.appendRow(new QStandardItem(icons.recording, "H8_0001.WAV"));
        model.appendRow(new QStandardItem(icons.recording, longName));
        table.setModel(&model);
        table.setItemDelegate(&cell);
        table.setShowGrid(false);
        table.setSelectionBehavior(QAbstractItemView::SelectRows);
        table.horizontalHeader()->hide();
        table.verticalHeader()->hide();
        table.verticalHeader()->setDefaultSectionSize(FileListCell::height);
        table.setColumnWidth(0, 288);
        table.setFixedSize(300, 120);
        Desktop::get().show(table);
    }

    QString toolTipAt(int row) {
        return test::toolTipAt(*table.viewport(), table.visualRect(model.index(row, 0)).center());
    }

    QStandardItemModel model;
    FileListCell cell;
    QTableView table;
};

TEST_F(FileList, TheIconStandsWhereItShould) {
    const QImage image = Desktop::painted(*table.viewport());
    // The middle stroke of the waveform, in the second row.
    EXPECT_EQ(colourAt(image, {12 + 11, 28 + 14}), QColor(0x9A, 0xD0, 0xB4));
    // The folder's body, in the first one.
    EXPECT_EQ(colourAt(image, {12 + 8, 14 + 2}), QColor(0x8F, 0xA3, 0xBF));
}

TEST_F(FileList, ASelectedRowIsMarkedWithRoundCorners) {
    table.selectRow(1);
    const QImage image = Desktop::painted(*table.viewport());
    const QColor marked(0x3A, 0x40, 0x49);
    EXPECT_EQ(colourAt(image, {5, 28 + 14}), marked);
    EXPECT_EQ(colourAt(image, {280, 28 + 14}), marked);
    EXPECT_NE(colourAt(image, {0.2, 28.2}), marked);
    EXPECT_NE(colourAt(image, {5, 14}), marked);
}

TEST_F(FileList, OnlyTheKeyboardsFocusFramesARow) {
    const QColor focus(0x8F, 0xA3, 0xBF);
    const auto edge = [&] { // of the second row, where it is straight
        return test::colourBelow(Desktop::painted(*table.viewport()), {140, 28});
    };
    Desktop::get().click(*table.viewport(), {140, 28 + 14});
    EXPECT_NE(edge(), focus);
    QWidget window;
    QWidget before(&window);
    before.setFocusPolicy(Qt::StrongFocus);
    before.setFocus();
    table.setParent(&window);
    Desktop::get().show(window);
    Desktop::get().tap("Tab");
    EXPECT_TRUE(table.hasFocus());
    EXPECT_EQ(edge(), focus);
    table.setParent(nullptr);
}

TEST_F(FileList, ANameThatIsTooLongEndsInsideItsCell) {
    const QImage image = Desktop::painted(*table.viewport());
    const double ratio = image.devicePixelRatio();
    const QRect row = QRectF(QPointF(0, 56) * ratio, QSizeF(300, 28) * ratio).toRect();
    const QRect ink = inkIn(image.copy(row));
    EXPECT_LE(ink.right(), (288 - 6) * ratio);
    EXPECT_GT(ink.right(), (288 - 30) * ratio);
}

TEST_F(FileList, ALongNameIsToldInFullAndNeverAsMarkup) {
    const QString text = toolTipAt(2);
    EXPECT_TRUE(text.contains("&lt;b&gt;Interview&lt;/b&gt; with the organist"));
    EXPECT_FALSE(text.contains("<b>"));
}

TEST_F(FileList, ANameThatFitsNeedsNoToolTip) {
    toolTipAt(2);
    EXPECT_TRUE(QToolTip::isVisible());
    toolTipAt(1);
    EXPECT_TRUE(Desktop::waitFor([] { return !QToolTip::isVisible(); }));
}

TEST_F(FileList, ARowIsAsHighAsTheLayoutSays) {
    EXPECT_EQ(cell.sizeHint({}, model.index(0, 0)).height(), 28);
}

// ---- Images

TEST(ImageView, ItHasAsManyPixelsAsTheScreen) {
    ImageView view("orlo", QSize(152, 40), "ORLO");
    Desktop::get().show(view);
    EXPECT_EQ(view.pixmap(Qt::ReturnByValue).size(),
              QSize(152, 40) * view.screen()->devicePixelRatio());
}

TEST(ImageView, DisabledItIsFaded) {
    QWidget window;
    window.setPalette(QPalette(Qt::black));
    window.setFixedSize(152, 40);
    ImageView view("orlo", QSize(152, 40), "ORLO", &window);
    // On the stem of the L.
    EXPECT_EQ(colourAt(Desktop::painted(window), {88, 20}), QColor(Qt::white));
    view.setEnabled(false);
    EXPECT_NEAR(colourAt(Desktop::painted(window), {88, 20}).red(), 102, 1); // 0.4 x 255
}

/// A theme of images of that name, in which folders are red, is the one in use as long as it lives.
class RedFolders {
public:
    explicit RedFolders(const QString& name) {
        const QDir root(folder_.path());
        EXPECT_TRUE(root.mkpath(name + "/16x16/places"));
        QFile index(root.filePath(name + "/index.theme"));
        EXPECT_TRUE(index.open(QIODevice::WriteOnly));
        index.write("[Icon Theme]\nName=Red\nComment=Red\nDirectories=16x16/places\n"
                    "[16x16/places]\nSize=16\nContext=Places\nType=Fixed\n");
        QPixmap red(16, 16);
        red.fill(Qt::red);
        EXPECT_TRUE(red.save(root.filePath(name + "/16x16/places/folder.png")));
        QIcon::setThemeSearchPaths(QStringList{folder_.path()} + pathsBefore_);
        QIcon::setThemeName(name);
    }
    ~RedFolders() {
        QIcon::setThemeName(nameBefore_);
        QIcon::setThemeSearchPaths(pathsBefore_);
    }
    RedFolders(const RedFolders&) = delete;
    RedFolders& operator=(const RedFolders&) = delete;
    RedFolders(RedFolders&&) = delete;
    RedFolders& operator=(RedFolders&&) = delete;

private:
    QTemporaryDir folder_;
    QString nameBefore_ = QIcon::themeName();
    QStringList pathsBefore_ = QIcon::themeSearchPaths();
};

TEST(FileIcons, AreTheThemesWhereTheUserChoseOne) {
    const RedFolders theme("red");
    const FileIcons icons = FileIcons::ofTheme();
    EXPECT_EQ(icons.folder.pixmap(16).toImage().pixelColor(8, 8), QColor(Qt::red));
    EXPECT_EQ(icons.recording.pixmap(16).toImage(), icon("recording").pixmap(16).toImage());
}

TEST(FileIcons, AreTheProjectsOwnWhereNoThemeIsChosen) {
    const RedFolders theme("hicolor");
    const FileIcons icons = FileIcons::ofTheme();
    EXPECT_EQ(icons.folder.pixmap(16).toImage(), icon("folder").pixmap(16).toImage());
    EXPECT_EQ(icons.recording.pixmap(16).toImage(), icon("recording").pixmap(16).toImage());
}

TEST(FileIcons, EachKindHasItsOwn) {
    const FileIcons icons = FileIcons::ofTheme();
    ASSERT_FALSE(icons.folder.isNull());
    ASSERT_FALSE(icons.recording.isNull());
    EXPECT_NE(icons.folder.pixmap(16).toImage(), icons.recording.pixmap(16).toImage());
}

} // namespace
} // namespace deckmate
