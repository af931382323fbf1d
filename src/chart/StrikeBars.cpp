#include "chart/StrikeBars.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace vmr {

namespace {

using BarEntry = StrikeMap<BarDisp>::Entry;

double thicknessOf(std::span<const BarEntry> bars, std::size_t i) {
    if (bars.size() == 1) return barHMaxPx;
    double gap = std::numeric_limits<double>::infinity();
    if (i > 0) gap = bars[i].disp.py - bars[i - 1].disp.py;
    if (i + 1 < bars.size()) gap = std::min(gap, bars[i + 1].disp.py - bars[i].disp.py);
    return std::clamp(gap * barFillFactor, barHMinPx, barHMaxPx);
}

/// The strike and a trailing blank, which keeps the text off the bar.
void nameStrike(std::string& text, double strike) {
    char digits[32];
    char* const end = digits + sizeof digits - 1;
    constexpr double exactWholes = 9e15;
    std::to_chars_result written{};
    if (strike == std::trunc(strike) && std::abs(strike) < exactWholes) {
        written = std::to_chars(digits, end, static_cast<long long>(strike));
    } else {
        written = std::to_chars(digits, end, strike, std::chars_format::fixed);
        if (written.ec != std::errc{}) written = std::to_chars(digits, end, strike);
    }
    *written.ptr++ = ' ';
    text.assign(digits, written.ptr);
}

BarLabel& addLabel(BarLabelList& labels, double x, double y, double fontSize, bool alignRight) {
    BarLabel& label = labels.add();
    label.anchorX = x;
    label.y = y;
    label.fontSize = fontSize;
    label.alignRight = alignRight;
    label.value.reset();
    return label;
}

void paint(BarLabel& label, double r, double g, double b) {
    label.r = r;
    label.g = g;
    label.b = b;
}

void addLabels(const BarEntry& bar, double thickness, const BarLook& look, const EdgeStage& stage,
               BarLabelList& labels) {
    const double fontSize = std::clamp(std::round(thickness * 0.75), 9.0, 13.0);
    const double x = look.fromRight ? stage.axisX() - bar.disp.w - 3.0 : bar.disp.w + 3.0;
    BarLabel& strike = addLabel(labels, x, bar.disp.py, fontSize, look.fromRight);
    nameStrike(strike.text, bar.strike);
    paint(strike, 0.53, 0.53, 0.53);
    strike.value = bar.disp.net;
    if (!look.fromRight) return;

    const double y = bar.disp.py - thickness * 0.5 - 4.0;
    const bool key = look.kgsStrike == bar.strike;
    if (key) {
        BarLabel& tag = addLabel(labels, x, y, fontSize, true);
        tag.text = "KGS";
        paint(tag, 1.0, 1.0, 1.0);
    }
    if (look.flipStrike == bar.strike) {
        BarLabel& tag = addLabel(labels, x, key ? y - (fontSize + 2.0) : y, fontSize, true);
        tag.text = "Gamma Flip";
        paint(tag, 1.0, 0.843, 0.0);
    }
}

}  // namespace

std::optional<double> keyGammaStrike(std::span<const StrikeRow> rows) {
    std::optional<double> strike;
    double most = 0;
    for (const StrikeRow& row : rows) {
        const double size = std::abs(row.callGex - row.putGex);
        if (!(size > most) || std::isnan(row.strike)) continue;
        most = size;
        strike = row.strike;
    }
    return strike;
}

std::optional<double> nearestStrike(std::span<const StrikeRow> rows, std::optional<double> flipStrike) {
    std::optional<double> strike;
    if (!flipStrike) return strike;
    double least = std::numeric_limits<double>::infinity();
    for (const StrikeRow& row : rows) {
        const double distance = std::abs(row.strike - *flipStrike);
        if (!(distance < least)) continue;
        least = distance;
        strike = row.strike;
    }
    return strike;
}

bool steppedBars(StrikeMap<BarDisp>& display, std::span<const StrikeRow> rows, std::span<const PlacedRow> placed,
                 StrikeMetric metric, const EdgeStage& stage) {
    const double maxAbs = greatest(rows, metric);
    const double maxW = stage.maxW();
    bool animating = false;
    const auto seen = [&](const PlacedRow& row, const BarDisp* old, BarDisp& next) {
        const double net = metric(*row.row);
        if (!std::isfinite(net)) return false;
        next = {maxW * std::min(std::abs(net) / maxAbs, 1.0), row.py, net};
        if (old != nullptr && !stage.snapLerps) {
            animating |= ease(next.w, old->w, stage.alphaX);
            animating |= ease(next.py, old->py, stage.alphaY);
        }
        return true;
    };
    const auto unseen = [&](BarDisp& bar) {
        if (stage.snapLerps) return false;
        bar.w -= bar.w * stage.alphaX;
        if (bar.w < pixelSettle) return false;
        animating = true;
        return true;
    };
    display.merge(scales(maxAbs) ? placed : placed.first(0), seen, unseen);
    return animating;
}

BoxVertex* writeBars(StrikeMap<BarDisp>& display, const BarLook& look, const EdgeStage& stage, BoxVertex* out,
                     BarLabelList& labels) {
    constexpr double thinnest = 0.5;  // a bar under this width is not drawn
    const std::span<const BarEntry> bars = display.byRow();
    const double axisX = stage.axisX();
    for (std::size_t i = 0; i < bars.size(); ++i) {
        const BarDisp& bar = bars[i].disp;
        if (bar.w < thinnest) continue;
        const double thickness = thicknessOf(bars, i);
        const double left = look.fromRight ? axisX - bar.w : 0.0;
        const double right = look.fromRight ? axisX : bar.w;
        const double half = thickness * 0.5;
        out = writeBox(out, stage.clipX(left), stage.clipY(bar.py - half), stage.clipX(right),
                       stage.clipY(bar.py + half), bar.net >= 0 ? look.pos : look.neg);
        if (look.showLabels && thickness >= barLabelMinHeightPx) addLabels(bars[i], thickness, look, stage, labels);
    }
    return out;
}

}  // namespace vmr
