#include "chart/BarLabelLayer.h"

#include <algorithm>
#include <cmath>

#include "chart/PillLayer.h"

namespace vmr {

namespace {

constexpr double inkShare = 0.45;  // of the font size: what glyphs fill above and below a line's middle
constexpr double gapPoints = 2.0;  // between two texts side by side
constexpr double fadePoints = 4.0;
constexpr Rgba shadowColor{0.04F, 0.04F, 0.04F, 0.9F};

bool isTag(const BarLabel& label) { return !label.value; }

/// 0 for a text that leaves the plot at the top or bottom, 1 for one that is well inside.
double insideShare(const ScreenFrame& frame, const BarLabel& label) {
    const double half = label.fontSize * inkShare;
    const double room = std::min(label.y - half, frame.plot().bottom() - (label.y + half));
    return std::clamp(room / fadePoints, 0.0, 1.0);
}

}  // namespace

BarLabelLayer::BarLabelLayer(GlyphSource& glyphs) : painter_(glyphs) {
    candidates_.reserve(256);
    taken_.reserve(256);
}

bool BarLabelLayer::drawAbove(ScreenFrame& frame) {
    findCandidates(frame);
    if (candidates_.empty()) return false;
    return painter_.paint(frame, [&] { addTexts(frame); });
}

void BarLabelLayer::findCandidates(const ScreenFrame& frame) {
    candidates_.clear();
    for (const BarLabel& label : frame.barLabels) {
        if (!(label.fontSize > 0) || !(insideShare(frame, label) > 0)) continue;
        const double size = std::abs(label.value.value_or(0));
        const int rank = !isTag(label) ? 2 : label.text == "KGS" ? 0 : 1;
        candidates_.push_back({&label, rank, std::isnan(size) ? 0 : size});
    }
    std::sort(candidates_.begin(), candidates_.end(), [](const Candidate& a, const Candidate& b) {
        if (a.rank != b.rank) return a.rank < b.rank;
        return a.size != b.size ? a.size > b.size : a.label < b.label;
    });
}

void BarLabelLayer::addTexts(const ScreenFrame& frame) {
    taken_.clear();
    if (others)
        for (const PointRect& box : others->boxes()) taken_.push_back({box.x, box.y, box.right(), box.bottom()});
    for (const Candidate& candidate : candidates_) {
        const BarLabel& label = *candidate.label;
        const TextStyle style{isTag(label) ? FontFace::semibold : FontFace::regular, label.fontSize};
        const double width = painter_.textWidth(label.text, style);
        const double left = label.alignRight ? label.anchorX - width : label.anchorX;
        const double half = label.fontSize * inkShare;
        const Box box{left, label.y - half, left + width, label.y + half};
        const bool inside = box.left >= 0 && box.right <= frame.plot().right();
        if (inside && takeRoom(box)) addText(frame, label, style, static_cast<float>(insideShare(frame, label)));
    }
}

bool BarLabelLayer::takeRoom(const Box& box) {
    const bool meets = std::any_of(taken_.begin(), taken_.end(), [&](const Box& other) {
        return box.top < other.bottom && other.top < box.bottom && box.left < other.right + gapPoints &&
               other.left < box.right + gapPoints;
    });
    if (!meets) taken_.push_back(box);
    return !meets;
}

void BarLabelLayer::addText(const ScreenFrame& frame, const BarLabel& label, const TextStyle& style, float alpha) {
    const TextAlign align = label.alignRight ? TextAlign::right : TextAlign::left;
    if (isTag(label)) {
        // Tags lie over the bar above theirs.
        const double pixel = 1.0 / frame.pixelRatio;
        Rgba shadow = shadowColor;
        shadow[3] *= alpha;
        painter_.text(label.text, style, label.anchorX + pixel, label.y + pixel, align, shadow);
    }
    painter_.text(label.text, style, label.anchorX, label.y, align,
                  {static_cast<float>(label.r), static_cast<float>(label.g), static_cast<float>(label.b), alpha});
}

}  // namespace vmr
