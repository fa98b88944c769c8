// How many clicks in a row a press is the newest of.
#pragma once

#include "controls/ViewGeometry.h"

#include <cmath>
#include <cstdint>

namespace deckmate {

/// Counts on past two, where Qt begins anew: the third press of a triple click is no single one.
class ClickCounter {
public:
    /// `time` in milliseconds of the system's clock; a press belongs to the row if it comes within
    /// `interval` of the one before and no further than `distance` away. Returns 1 for the first.
    int press(std::uint64_t time, ViewPoint place, std::uint64_t interval, double distance) {
        const bool continues = count_ > 0 && time >= time_ && time - time_ < interval &&
                               std::abs(place.x - place_.x) <= distance &&
                               std::abs(place.y - place_.y) <= distance;
        count_ = continues ? count_ + 1 : 1;
        time_ = time;
        place_ = place;
        return count_;
    }

    /// Of the newest press, and so of the release that follows it; 0 before the first.
    int count() const { return count_; }

private:
    int count_ = 0;
    std::uint64_t time_ = 0;
    ViewPoint place_;
};

} // namespace deckmate
