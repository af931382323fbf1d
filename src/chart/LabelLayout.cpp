#include "chart/LabelLayout.h"

#include <algorithm>
#include <cmath>

namespace vmr {

namespace {

constexpr double fadePoints = 4.0;  // before the end of its reach
constexpr double slack = 1e-6;      // what rounding may leave between boxes that touch

bool meetsSideways(const LabelBox& a, const LabelBox& b) { return a.left < b.right && b.left < a.right; }

}  // namespace

void LabelLayout::arrange(double top, double bottom) {
    order_.clear();
    taken_.clear();
    for (std::uint32_t i = 0; i < boxes_.size(); ++i) order_.push_back(i);
    std::sort(order_.begin(), order_.end(), [this](std::uint32_t a, std::uint32_t b) {
        const LabelBox &one = boxes_[a], &other = boxes_[b];
        if (one.fixed != other.fixed) return one.fixed;
        return one.rank != other.rank ? one.rank < other.rank : a < b;
    });
    for (auto at = order_.begin(); at != order_.end();) {
        const auto equal = [&first = boxes_[*at]](const LabelBox& box) {
            return box.rank == first.rank && box.fixed == first.fixed;
        };
        const auto next = std::find_if(at, order_.end(), [&](std::uint32_t i) { return !equal(boxes_[i]); });
        const auto take = [&](LabelBox& box) {
            if (box.opacity > 0) taken_.push_back(&box);
        };
        for (auto one = at; one != next; ++one) {
            LabelBox& box = boxes_[*one];
            standAtPrice(box, top, bottom);
            take(box);
        }
        for (; at != next; ++at) {
            LabelBox& box = boxes_[*at];
            if (box.opacity > 0) continue;
            stepAside(box, top, bottom);
            take(box);
        }
    }
}

bool LabelLayout::isFree(const LabelBox& box, double y) const {
    return std::none_of(taken_.begin(), taken_.end(), [&](const LabelBox* other) {
        const double apart = (box.height + other->height) * 0.5 + gap - slack;
        return meetsSideways(box, *other) && std::abs(y - other->y) < apart;
    });
}

void LabelLayout::standAtPrice(LabelBox& box, double top, double bottom) const {
    box.y = box.wantedY;
    const bool inside = box.wantedY >= top + box.height * 0.5 && box.wantedY <= bottom - box.height * 0.5;
    box.opacity = box.fixed || (inside && isFree(box, box.y)) ? 1 : 0;
}

// The nearest free place is the edge of the view or one that touches a box in the way.
void LabelLayout::stepAside(LabelBox& box, double top, double bottom) const {
    const double half = box.height * 0.5, highest = top + half, lowest = bottom - half;
    if (!std::isfinite(box.wantedY) || !(highest <= lowest)) return;
    double least = reach;
    const auto tryAt = [&](double y) {
        const double moved = std::abs(y - box.wantedY);
        if (y < highest || y > lowest || !(moved < least) || !isFree(box, y)) return;
        least = moved;
        box.y = y;
    };
    tryAt(std::clamp(box.wantedY, highest, lowest));
    for (const LabelBox* other : taken_) {
        if (!meetsSideways(box, *other)) continue;
        const double apart = half + other->height * 0.5 + gap;
        tryAt(other->y - apart);
        tryAt(other->y + apart);
    }
    box.opacity = std::clamp((reach - least) / fadePoints, 0.0, 1.0);
}

}  // namespace vmr
