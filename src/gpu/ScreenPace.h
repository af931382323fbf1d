// How often a plot that moves is drawn, where drawing is the processor's work.
#pragma once

#include <algorithm>

namespace vmr {

/// A graphics card waits for the screen; a software rasteriser draws as many frames as it can, most of which nobody
/// sees. So frames begin a little more often than the screen shows them: each refresh finds a new one. Times are
/// seconds.
class ScreenPace {
 public:
    static constexpr double share = 0.9;       ///< of the screen's interval, from one frame to the next
    static constexpr double usualRate = 60.0;  ///< Hz, of a screen that does not tell, or tells nonsense

    /// A frame was recorded; `now` is monotonic. One that was late lets the next one come the sooner.
    void begun(double now, double refreshRate) {
        const double period = share / (refreshRate >= 20 && refreshRate <= 1000 ? refreshRate : usualRate);
        due_ = std::max(due_, now - period) + period;
    }
    /// How long the next frame is to wait; 0 when it is due.
    double wait(double now) const { return std::max(0.0, due_ - now); }

 private:
    double due_ = 0;
};

}  // namespace vmr
