// How often a plot is drawn while nobody has a hand on it, where drawing is the processor's work.
#pragma once

namespace vmr {

/// Without a graphics card a frame costs much of a core, so frames that only new data asks for wait their turn: drawing
/// takes a tenth of one core, and a change still shows within a quarter of a second. Times are seconds.
class CalmPace {
 public:
    static constexpr double share = 0.1;     ///< of one core
    static constexpr double longest = 0.22;  ///< from one frame to the next, which leaves some time for drawing

    /// A frame was recorded; `now` is monotonic.
    void begun(double now) { last_ = now; }
    /// It is on the screen, and took so much processor time.
    void shown(double cost);
    /// How long the next frame is to wait; 0 when it is due.
    double wait(double now) const;

 private:
    double cost_ = 0;  ///< of the frames before, the newer the more
    double last_ = 0;
};

}  // namespace vmr
