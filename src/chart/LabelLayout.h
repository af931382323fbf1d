// Keeps the texts that hang on prices apart: of two that would meet, the lesser one steps aside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vmr {

/// What a text tells, by its worth: the first is the most important.
enum class LabelRank : unsigned char { entry, trading, pill, wall, level, strikeName, strike };

/// A text's box in points from the view's top left. It may move up and down, and never sideways.
struct LabelBox {
    double left = 0, right = 0, height = 0;
    double wantedY = 0;  ///< where its price lies: the middle it wants
    LabelRank rank = LabelRank::level;
    bool fixed = false;  ///< it stands where it is whatever else does; others make room

    double y = 0;        ///< the middle that it got
    double opacity = 0;  ///< 0: there is no room for it; fades in before that

    double top() const { return y - height * 0.5; }
    double bottom() const { return y + height * 0.5; }
};

/// Boxes that are not fixed never overlap another one and lie within `reach` of their price. Each takes the free place
/// nearest to its price; the more important choose first. Of a rank, those whose price is free stand there, and then
/// the others choose; of either those that were added first. Keeps its memory. Main thread.
class LabelLayout {
 public:
    static constexpr double reach = 40.0;  ///< points from a text to its price
    static constexpr double gap = 1.0;     ///< points between two boxes, one above the other

    void clear() { boxes_.clear(); }
    /// Tells the number of the box.
    std::size_t add(const LabelBox& box) {
        boxes_.push_back(box);
        return boxes_.size() - 1;
    }
    /// Places all of them between `top` and `bottom`.
    void arrange(double top, double bottom);
    /// In the order of adding.
    std::span<const LabelBox> boxes() const { return boxes_; }

 private:
    bool isFree(const LabelBox& box, double y) const;
    void standAtPrice(LabelBox& box, double top, double bottom) const;
    void stepAside(LabelBox& box, double top, double bottom) const;

    std::vector<LabelBox> boxes_;
    std::vector<std::uint32_t> order_;    // by worth
    std::vector<const LabelBox*> taken_;  // those that have a place
};

}  // namespace vmr
