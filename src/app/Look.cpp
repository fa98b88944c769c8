#include "app/Look.h"

#include "controls/Resources.h"

#include <QApplication>
#include <QFile>
#include <QFont>
#include <QPalette>
#include <QProxyStyle>

namespace deckmate {

namespace {

constexpr int textSize = 13; ///< points of the window, not of a printer
constexpr QColor selection(0x3A, 0x40, 0x49);

/// Fusion, but for one image: that of the button behind a menu bar that is too narrow, dark and a
/// file of a kind for whose sake every image plugin would be loaded before the window is there.
class Style final : public QProxyStyle {
public:
    Style() : QProxyStyle("Fusion") {}

    QIcon standardIcon(StandardPixmap image, const QStyleOption* option,
                       const QWidget* widget) const override {
        return image == SP_ToolBarHorizontalExtensionButton
                   ? icon("arrow_right")
                   : QProxyStyle::standardIcon(image, option, widget);
    }
};

QFont textFont() {
    QFont font = QApplication::font();
    font.setFamilies(QStringList{"Inter"} + font.families());
    font.setPixelSize(textSize);
    return font;
}

QColor faded(QColor base, qreal opacity) {
    base.setAlphaF(static_cast<float>(opacity));
    return base;
}

QPalette colours() {
    const QColor text = colour("WHITE");
    QPalette palette(text, colour("ControlColor"), selection, colour("AppBG").darker(),
                     colour("ControlColor"), text, text, colour("AppBGLight"), colour("AppBG"));
    palette.setColor(QPalette::AlternateBase, colour("AppBGLight"));
    palette.setColor(QPalette::Highlight, selection);
    palette.setColor(QPalette::HighlightedText, text);
    palette.setColor(QPalette::ToolTipBase, colour("ControlColor"));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, faded(text, 0.5));
    palette.setColor(QPalette::Link, colour("Focus"));
    palette.setColor(QPalette::LinkVisited, colour("Focus"));
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText}) {
        palette.setColor(QPalette::Disabled, role, faded(text, 0.35));
    }
    return palette;
}

/// The sheet with its names of colours ("@AppBG") replaced by what they mean.
QString styleSheet() {
    QFile file(":/style.qss");
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QString sheet = QString::fromUtf8(file.readAll());
    // The longer name before the one that it begins with.
    for (const char* const name : {"AppBGLight", "AppBG", "ControlColor", "WHITE", "Focus"}) {
        sheet.replace(QStringLiteral("@") + name, colour(name).name());
    }
    return sheet.replace("@Selection", selection.name());
}

} // namespace

void applyLook(QApplication& application) {
    QApplication::setStyle(new Style);
    QApplication::setPalette(colours());
    QApplication::setFont(textFont());
    QApplication::setWindowIcon(icon("orlo-h8-deckmate"));
    application.setStyleSheet(styleSheet());
}

} // namespace deckmate
