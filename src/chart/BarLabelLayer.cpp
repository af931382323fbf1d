#include "chart/BarLabelLayer.h"

#include <algorithm>
#include <cmath>

#include "chart/PillLayer.h"

namespace vmr {

namespace {

constexpr double inkShare = 0.45;  // of the font size: what glyphs fill above and below a line's middle
constexpr double gapPoints = 2.0;  // between two texts side by side
constexpr double fadePoints = 4.0;
constexpr double leaderRun = 6.0;  // what the slope of a leader takes, beside the text
constexpr double leaderShare = 0.6;
constexpr double groundMargin = 2.0;
constexpr Rgba groundColor{0.04F, 0.04F, 0.04F, 0.8F};
constexpr Rgba shadowColor{0.04F, 0.04F, 0.04F, 0.9F};

bool isTag(const BarLabel& label) { return !label.value; }

TextStyle styleOf(const BarLabel& label) {
    return {isTag(label) ? FontFace::semibold : FontFace::regular, label.fontSize};
}

Rgba colorOf(const BarLabel& label, double opacity) {
    return {static_cast<float>(label.r), static_cast<float>(label.g), static_cast<float>(label.b),
            static_cast<float>(opacity)};
}

/// 0 for a text that leaves the plot at the top or bottom, 1 for one that is well inside.
double insideShare(const ScreenFrame& frame, const BarLabel& label) {
    const double half = label.fontSize * inkShare;
    const double room = std::min(label.y - half, frame.plot().bottom() - (label.y + half));
    return std::clamp(room / fadePoints, 0.0, 1.0);
}

}  // namespace

BarLabelLayer::BarLabelLayer(GlyphSource& glyphs) : painter_(glyphs) {
    candidates_.reserve(256);
    marks_.reserve(256);
}

bool BarLabelLayer::drawAbove(ScreenFrame& frame) {
    marks_.clear();
    findCandidates(frame);
    if (candidates_.empty()) return false;
    return painter_.paint(frame, [&] {
        layOut(frame);
        for (const Mark& mark : marks_)
            if (mark.moved()) addGround(mark);
        for (const Mark& mark : marks_)
            if (mark.moved()) addLeader(mark);
        for (const Mark& mark : marks_) addText(frame, mark);
    });
}

void BarLabelLayer::findCandidates(const ScreenFrame& frame) {
    candidates_.clear();
    for (const BarLabel& label : frame.barLabels) {
        if (!(label.fontSize > 0) || !(insideShare(frame, label) > 0)) continue;
        const double size = std::abs(label.value.value_or(0));
        const int worth = !isTag(label) ? 2 : label.text == "KGS" ? 0 : 1;
        candidates_.push_back({&label, worth, std::isnan(size) ? 0 : size});
    }
    std::sort(candidates_.begin(), candidates_.end(), [](const Candidate& a, const Candidate& b) {
        if (a.worth != b.worth) return a.worth < b.worth;
        return a.size != b.size ? a.size > b.size : a.label < b.label;
    });
}

void BarLabelLayer::layOut(const ScreenFrame& frame) {
    marks_.clear();
    layout_.clear();
    for (const Candidate& candidate : candidates_) {
        const BarLabel& label = *candidate.label;
        const double width = painter_.textWidth(label.text, styleOf(label)), height = 2 * inkShare * label.fontSize;
        const double left = label.alignRight ? label.anchorX - width : label.anchorX;
        if (!(left >= 0) || !(left + width <= frame.plot().right())) continue;
        marks_.push_back({&label, {left, label.y, width, height}, insideShare(frame, label)});
        layout_.add({.left = left - gapPoints * 0.5,
                     .right = left + width + gapPoints * 0.5,
                     .height = height,
                     .wantedY = label.y,
                     .rank = isTag(label) ? LabelRank::strikeName : LabelRank::strike});
    }
    if (others)
        for (const PointRect& box : others->boxes())
            layout_.add({.left = box.x - gapPoints * 0.5,
                         .right = box.right() + gapPoints * 0.5,
                         .height = box.height,
                         .wantedY = box.y + box.height * 0.5,
                         .fixed = true});
    layout_.arrange(0, frame.plot().bottom());
    for (std::size_t i = 0; i < marks_.size(); ++i) {
        marks_[i].box.y = layout_.boxes()[i].top();
        marks_[i].opacity *= layout_.boxes()[i].opacity;
    }
    std::erase_if(marks_, [](const Mark& mark) { return !(mark.opacity > 0); });
}

// What has moved may lie on another bar.
void BarLabelLayer::addGround(const Mark& mark) {
    Rgba ground = groundColor;
    ground[3] *= static_cast<float>(mark.opacity);
    painter_.roundedBox(mark.box.x - groundMargin, mark.box.y, mark.box.right() + groundMargin, mark.box.bottom(), 2,
                        ground);
}

// From the end of the bar.
void BarLabelLayer::addLeader(const Mark& mark) {
    const BarLabel& label = *mark.label;
    const double edge = label.alignRight ? mark.box.right() : mark.box.x, out = label.alignRight ? 1 : -1;
    painter_.line({edge + out * leaderRun, label.y}, {edge + out, mark.y()}, 1,
                  colorOf(label, mark.opacity * leaderShare));
}

void BarLabelLayer::addText(const ScreenFrame& frame, const Mark& mark) {
    const BarLabel& label = *mark.label;
    const TextAlign align = label.alignRight ? TextAlign::right : TextAlign::left;
    const double y = mark.y();
    if (isTag(label)) {
        // Tags lie over the bar above theirs.
        const double pixel = 1.0 / frame.pixelRatio;
        Rgba shadow = shadowColor;
        shadow[3] *= static_cast<float>(mark.opacity);
        painter_.text(label.text, styleOf(label), label.anchorX + pixel, y + pixel, align, shadow);
    }
    painter_.text(label.text, styleOf(label), label.anchorX, y, align, colorOf(label, mark.opacity));
}

}  // namespace vmr
