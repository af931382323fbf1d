// Prices on the grid of a root, exactly as the feed prints them.
#pragma once

namespace vmr::sim {

/// A price step as a fraction of whole numbers. `tick × n` gives 4104.400000000001 for a tick of 0.1, a step of the
/// double beside the printed 4104.4, and a print at the price would then miss the order. A division of two whole
/// numbers rounds once and gives the printed decimal itself.
class TickGrid {
 public:
    /// `tick` in points. One that is not above 0, or is no short decimal fraction, is used as it is.
    explicit TickGrid(double tick);

    /// The nearest price on the grid, halves away from zero; unchanged without a tick above 0.
    double nearest(double price) const;

    /// `price` moved by so many half ticks. Half a tick is the finest step that a price of the account may lie on;
    /// from any other price the plain sum is given.
    double moved(double price, double halfTicks) const;

 private:
    double tick_;
    double steps_ = 1;  // the tick is steps_ / parts_
    double parts_ = 0;  // 0: no such fraction is known
};

}  // namespace vmr::sim
