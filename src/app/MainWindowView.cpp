#include "app/MainWindowView.h"

#include "app/ClickableArea.h"
#include "app/DialogParts.h"
#include "app/DigitLabel.h"
#include "app/ElidedLabel.h"
#include "app/FileListView.h"
#include "app/ImageView.h"
#include "app/StatusDot.h"
#include "controls/AngleViewer.h"
#include "controls/GainTickTitle.h"
#include "controls/H8GainSlider.h"
#include "controls/H8Slider.h"
#include "controls/LevelMeter.h"
#include "controls/Resources.h"
#include "controls/Slider.h"

#include <tuple>
#include <vector>

#include <QComboBox>
#include <QEvent>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QWheelEvent>

namespace deckmate {

namespace {

/// A menu of settings: what is scrolled over it doesn't change the recorder.
class SettingMenu final : public QComboBox {
protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

constexpr int captionSize = 11;
constexpr int tickSize = 12;
constexpr QSize smallGlyph(16, 16);
constexpr QSize playGlyph(24, 24);
constexpr QSize speakerGlyph(38, 24);

/// What moves a view when the content is larger than it has to be.
enum class Stretch {
    none,       ///< stays where it is, with its size
    right,      ///< keeps its distance from the right edge
    bottom,     ///< from the lower edge
    corner,     ///< from both
    middle,     ///< takes half of what there is more, both ways
    middleLow,  ///< half of it to the right, all of it downward
    tall,       ///< grows downward
    wide,       ///< grows to the right
    wideBottom, ///< grows to the right and keeps its distance from the lower edge
    both,       ///< grows both ways
};

QRect stretched(QRect place, Stretch stretch, QSize more) {
    const int right = more.width();
    const int down = more.height();
    switch (stretch) {
    case Stretch::none:
        return place;
    case Stretch::right:
        return place.translated(right, 0);
    case Stretch::bottom:
        return place.translated(0, down);
    case Stretch::corner:
        return place.translated(right, down);
    case Stretch::middle:
        return place.translated(right / 2, down / 2);
    case Stretch::middleLow:
        return place.translated(right / 2, down);
    case Stretch::tall:
        return place.adjusted(0, 0, 0, down);
    case Stretch::wide:
        return place.adjusted(0, 0, right, 0);
    case Stretch::wideBottom:
        return place.adjusted(0, 0, right, 0).translated(0, down);
    case Stretch::both:
        return place.adjusted(0, 0, right, down);
    }
    return place;
}

/// Makes the views one after the other, the later ones above the earlier ones, and keeps their
/// places.
class Builder final : public QObject {
public:
    explicit Builder(QWidget& content) : QObject(&content), content_(content) {
        content.setMinimumSize(smallestContent);
        content.installEventFilter(this);
    }

    template <class View>
    View* add(View* view, const char* name, const QRect& place, Stretch stretch = Stretch::none) {
        static_cast<QWidget*>(view)->setParent(&content_); // one view has another parent, too
        view->setObjectName(name);
        places_.push_back({view, place, stretch});
        return view;
    }

    template <class View>
    View* add(View* view, const char* name, const char* spokenName, const QRect& place,
              Stretch stretch = Stretch::none) {
        view->setAccessibleName(spokenName);
        return add(view, name, place, stretch);
    }

    QFrame* addPanel(const char* name, const char* role, const QRect& place, Stretch stretch) {
        auto* const panel = new QFrame;
        panel->setProperty("role", role);
        return add(panel, name, place, stretch);
    }

    QLabel* addDigits(const char* name, const QString& subject, const QRect& place, Stretch stretch,
                      Qt::Alignment side) {
        return addText(new DigitLabel(subject), name, place, stretch, side);
    }

    QLabel* addLabel(const char* name, const char* role, const QString& text, const QRect& place,
                     Stretch stretch, Qt::Alignment side = Qt::AlignLeft) {
        return addText(makeLabel(text, role, &content_), name, place, stretch, side);
    }

    QLabel* addText(QLabel* label, const char* name, const QRect& place, Stretch stretch,
                    Qt::Alignment side) {
        label->setTextFormat(Qt::PlainText);
        label->setAlignment(side | Qt::AlignVCenter);
        return add(label, name, place, stretch);
    }

    QToolButton* addImageButton(const char* name, const char* spokenName, const char* image,
                                QSize glyph, const QRect& place, Stretch stretch) {
        auto* const button = new QToolButton;
        button->setIcon(icon(image));
        button->setIconSize(glyph);
        button->setToolTip(spokenName);
        return add(button, name, spokenName, place, stretch);
    }

    void placeAll() {
        const QSize more = (content_.size() - smallestContent).expandedTo(QSize(0, 0));
        for (const Placed& placed : places_) {
            placed.view->setGeometry(stretched(placed.place, placed.stretch, more));
        }
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == &content_ && event->type() == QEvent::Resize) {
            placeAll();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    struct Placed {
        QWidget* view;
        QRect place; ///< in content of the smallest size
        Stretch stretch;
    };

    QWidget& content_;
    std::vector<Placed> places_;
};

void setTextSize(QWidget& widget, int size) {
    QFont font = widget.font();
    font.setPixelSize(size);
    widget.setFont(font);
}

void buildBrowser(Builder& builder, MainWindowView& view) {
    view.viewLeftBG = builder.addPanel("viewLeftBG", "pane", {12, 0, 300, 398}, Stretch::tall);
    view.viewPathBG = builder.addPanel("viewPathBG", "strip", {22, 10, 280, 34}, Stretch::none);
    view.btnGoUp = builder.addImageButton("btnGoUp", "Enclosing folder", "go_up", smallGlyph,
                                          {26, 15, 24, 24}, Stretch::none);
    view.lblFolder = builder.add(new ClickableArea, "lblFolder", {54, 14, 212, 26});
    QFont strong = view.lblFolder->font();
    strong.setWeight(QFont::DemiBold);
    view.lblFolder->setFont(strong);
    view.btnOpenFolder = builder.addImageButton("btnOpenFolder", "Open folder", "open_folder",
                                                smallGlyph, {274, 15, 24, 24}, Stretch::none);
    view.tableFile =
        builder.add(new FileListView, "tableFile", "Recordings", {18, 56, 288, 334}, Stretch::tall);
}

void buildRecorder(Builder& builder, MainWindowView& view) {
    constexpr auto low = Stretch::bottom;
    view.viewDeviceBG = builder.addPanel("viewDeviceBG", "pane", {12, 408, 300, 220}, low);
    view.imgH8 = builder.add(new ImageView("device_panel", {48, 178}, "The recorder"), "imgH8",
                             {29, 410, 48, 178}, low);
    view.statusDot = builder.add(new StatusDot, "statusDot", {99, 431, 10, 10}, low);
    view.lblConnect = builder.addLabel("lblConnect", "subheading", "", {114, 426, 100, 20}, low);
    view.lblVersion =
        builder.addLabel("lblVersion", "detail", "", {214, 426, 82, 20}, low, Qt::AlignRight);
    view.lblUsed = builder.addLabel("lblUsed", "", "", {98, 453, 198, 20}, low);
    builder.addLabel("captionRemain", "detail", "Remaining", {98, 475, 90, 20}, low);
    view.lblRemain = builder.addDigits("lblRemain", {}, {188, 475, 108, 20}, low, Qt::AlignRight);

    constexpr QRect batteryPlace(98, 523, 198, 26);
    constexpr QRect powerPlace(98, 569, 198, 26);
    setTextSize(*builder.addLabel("captionBattery", "detail", "Battery", {98, 506, 198, 16}, low),
                captionSize);
    view.popupBattery = builder.add(new SettingMenu, "popupBattery", "Battery", batteryPlace, low);
    view.popupBattery->addItems({"Alkaline", "Ni-MH", "Lithium"});
    setTextSize(
        *builder.addLabel("captionAutoPow", "detail", "Auto power off", {98, 552, 198, 16}, low),
        captionSize);
    view.popupAutoPow =
        builder.add(new SettingMenu, "popupAutoPow", "Auto power off", powerPlace, low);
    view.popupAutoPow->addItems({"10 min", "30 min", "60 min", "Never"});
    view.listBatteryCover = builder.add(new ClickableArea, "listBatteryCover",
                                        "Battery: no recorder is connected", batteryPlace, low);
    view.listAutoPowOffCover =
        builder.add(new ClickableArea, "listAutoPowOffCover",
                    "Auto power off: no recorder is connected", powerPlace, low);
}

void buildRecording(Builder& builder, MainWindowView& view) {
    view.viewRightBG = builder.addPanel("viewRightBG", "pane", {324, 0, 714, 628}, Stretch::both);
    view.lblFileName =
        builder.add(new ElidedLabel, "lblFileName", {348, 18, 540, 28}, Stretch::wide);
    view.lblFileName->setProperty("role", "heading");
    view.btnExport = builder.add(new QPushButton("Export\u2026"), "btnExport", "Export",
                                 {910, 14, 104, 36}, Stretch::right);
}

void buildStereo(Builder& builder, MainWindowView& view) {
    view.sliderStereo = builder.add(new AngleViewer, "sliderStereo", "Stereo width",
                                    {340, 74, 380, 380}, Stretch::middle);
    view.imgDevice = builder.add(new ImageView("device", {140, 206}), "imgDevice",
                                 {460, 150, 140, 206}, Stretch::middle);
    view.imgDevice->setAttribute(Qt::WA_TransparentForMouseEvents);
    view.lblStereo = builder.addLabel("lblStereo", "", "Stereo width", {430, 447, 200, 20},
                                      Stretch::middle, Qt::AlignHCenter);
    view.lblStereo->setAttribute(Qt::WA_TransparentForMouseEvents);
}

/// The middles of the first and the last label lie where the ends of the gain slider's way and of
/// the meters are.
void buildGainAndLevels(Builder& builder, MainWindowView& view) {
    constexpr auto right = Stretch::right;
    view.lblGain =
        builder.addLabel("lblGain", "", "Gain (dB)", {752, 51, 120, 20}, right, Qt::AlignHCenter);
    view.tickOfGain =
        builder.add(new GainTickTitle, "tickOfGain", "Gain scale", {744, 84, 60, 360}, right);
    setTextSize(*view.tickOfGain, tickSize);
    view.sliderGain =
        builder.add(new H8GainSlider, "sliderGain", "Gain in decibels", {814, 104, 24, 320}, right);
    view.sliderGain->setVertical(true);
    view.sliderGain->setStep(1);

    builder.addLabel("captionLevel", "", "Level (dB)", {890, 51, 120, 20}, right, Qt::AlignHCenter);
    view.tickOfLevel =
        builder.add(new GainTickTitle, "tickOfLevel", "Level scale", {854, 84, 60, 360}, right);
    setTextSize(*view.tickOfLevel, tickSize);
    view.lvlLeft = builder.add(new LevelMeter, "lvlLeft", "Left level", {930, 114, 18, 300}, right);
    view.lvlRight =
        builder.add(new LevelMeter, "lvlRight", "Right level", {960, 114, 18, 300}, right);
    for (const auto& [name, text, x] :
         {std::tuple("captionLeft", "L", 924), std::tuple("captionRight", "R", 954)}) {
        setTextSize(
            *builder.addLabel(name, "detail", text, {x, 422, 30, 16}, right, Qt::AlignHCenter),
            captionSize);
    }
}

void buildTransport(Builder& builder, MainWindowView& view) {
    view.sliderTime = builder.add(new H8Slider, "sliderTime", "Position", {344, 500, 674, 24},
                                  Stretch::wideBottom);
    view.lblTimeCurrent = builder.addDigits("lblTimeCurrent", "Current time", {348, 526, 120, 20},
                                            Stretch::bottom, Qt::AlignLeft);
    view.lblTimeTotal = builder.addDigits("lblTimeTotal", "Duration", {894, 526, 120, 20},
                                          Stretch::corner, Qt::AlignRight);
    view.btnPlayPause = builder.addImageButton("btnPlayPause", "Play", "play_play", playGlyph,
                                               {653, 546, 56, 56}, Stretch::middleLow);
    view.btnPlayPause->setProperty("role", "round");
    view.btnVolume = builder.addImageButton("btnVolume", "Mute", "speaker_2", speakerGlyph,
                                            {834, 558, 44, 32}, Stretch::corner);
    view.sliderVolume =
        builder.add(new Slider, "sliderVolume", "Volume", {882, 562, 136, 24}, Stretch::corner);
}

void setTabOrder(const MainWindowView& view) {
    const std::vector<QWidget*> order = {
        view.btnGoUp,          view.lblFolder,    view.btnOpenFolder,      view.tableFile,
        view.btnExport,        view.sliderStereo, view.sliderGain,         view.sliderTime,
        view.btnPlayPause,     view.btnVolume,    view.sliderVolume,       view.popupBattery,
        view.listBatteryCover, view.popupAutoPow, view.listAutoPowOffCover};
    for (std::size_t i = 1; i < order.size(); ++i) {
        QWidget::setTabOrder(order[i - 1], order[i]);
    }
}

} // namespace

void buildMainWindow(QWidget& content, MainWindowView& view) {
    auto* const builder = new Builder(content); // the content owns it
    buildBrowser(*builder, view);
    buildRecorder(*builder, view);
    buildRecording(*builder, view);
    buildStereo(*builder, view);
    buildGainAndLevels(*builder, view);
    buildTransport(*builder, view);
    setTabOrder(view);
    builder->placeAll();
}

} // namespace deckmate
