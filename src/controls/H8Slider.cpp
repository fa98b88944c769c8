#include "controls/H8Slider.h"

namespace deckmate {

void H8Slider::mouseDown(QPointF place) {
    isSeeking_ = true;
    Slider::mouseDown(place);
}

void H8Slider::trackingEnded() {
    Slider::trackingEnded();
    isSeeking_ = false;
}

} // namespace deckmate
