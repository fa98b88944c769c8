// A slider that says whether the user has taken hold of it.
#pragma once

#include "controls/Slider.h"

namespace deckmate {

/// Thread: main.
class H8Slider final : public Slider {
public:
    using Slider::Slider;

    /// Set by each press; whoever acts on the new value clears it. Cleared also when the press is
    /// cut short, because nobody will act on it.
    bool isSeeking() const { return isSeeking_; }
    void setIsSeeking(bool isSeeking) { isSeeking_ = isSeeking; }

    void mouseDown(QPointF place) override;

protected:
    void trackingEnded() override;

private:
    bool isSeeking_ = false;
};

} // namespace deckmate
