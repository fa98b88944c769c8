#include "controls/H8GainSlider.h"

namespace deckmate {

void H8GainSlider::mouseDown(QPointF place) {
    if (clickCount() < 2) {
        Slider::mouseDown(place);
        return;
    }
    setDoubleValue(valueForDoubleClick_);
    if (parent_ != nullptr) {
        parent_->sliderGainValueChanged(*this);
    }
}

} // namespace deckmate
