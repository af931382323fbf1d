// How far the values of a frame move towards their goals.
#pragma once

#include <algorithm>
#include <cmath>

namespace vmr {

/// A value eases by a share of its way in each frame of 60 Hz, and by as much in the same time at any other rate.
struct Easing {
    static constexpr double candleLerp = 0.3;  ///< of the forming close per frame of 60 Hz
    static constexpr double lerpX = 0.25;      ///< of widths and x positions
    static constexpr double lerpY = 0.2;       ///< of y positions

    double alphaX = lerpX, alphaY = lerpY, alphaClose = candleLerp;  ///< shares of the newest frame
    double at = 0;                                                   ///< when that frame was, seconds; 0 for none yet

    /// A frame at `now`. A pause counts as four frames at most, so that nothing jumps after it; with `whole` all goes
    /// the whole way at once.
    void step(double now, bool whole) {
        double frames = 1.0;
        if (at > 0) {
            const double dt = now - at;
            frames = dt <= 1.0 / 240.0 ? 0.25 : std::min(dt, 1.0 / 15.0) * 60.0;
        }
        at = now;
        if (whole) {
            alphaX = alphaY = alphaClose = 1;
            return;
        }
        alphaX = 1.0 - std::pow(1.0 - lerpX, frames);
        alphaY = 1.0 - std::pow(1.0 - lerpY, frames);
        alphaClose = 1.0 - std::pow(1.0 - candleLerp, frames);
    }
};

}  // namespace vmr
