// A window with every control in every state.
#pragma once

#include "controls/H8GainSlider.h"

#include <QString>
#include <QWidget>

namespace deckmate::tools {

/// Live controls, in the places that they have beside each other in the main window; each one has
/// an object name and a name for assistive programs.
class Gallery final : public QWidget, public H8GainSliderParent {
public:
    Gallery();

    /// One control of each kind as if the keyboard were on it, for a picture.
    void showFocus();
    void sliderGainValueChanged(H8GainSlider& slider) override;

private:
    void addDial(const QRect& place, const QString& title, double angle, bool isEnabled);
    void addGain(QPoint place, const QString& title, double gain, bool isEnabled);
    void addMeters(QPoint place, const QString& title, int left, int right);
    void addSlider(QPoint place, int width, const QString& title, double value, bool isEnabled);
    void addCaption(const QRect& place, const QString& text);
    void name(QWidget& widget, const QString& name);
};

} // namespace deckmate::tools
