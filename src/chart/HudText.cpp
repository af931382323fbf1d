#include "chart/HudText.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "chart/ChartContent.h"
#include "chart/LabelFormat.h"

namespace vmr {

namespace {

constexpr std::string_view dash = "\u2013";

AxisScale::Label dashLabel() { return formatLabel("{}", dash); }

// "-0" says nothing that "0" does not.
AxisScale::Label whole(double v) { return formatLabel("{:.0f}", std::abs(v) <= 0.5 ? 0.0 : v); }

// More digits than these would not fit, nor mean anything.
constexpr double readable = 1e18;

HudTone toneOf(double change) { return change < 0 ? HudTone::fall : HudTone::rise; }

HudSegment price(std::string_view name, double value, HudTone tone) {
    if (!std::isfinite(value)) return {name, dashLabel(), HudTone::none};
    return {name, AxisScale::fmtPrice(value), tone};
}

HudSegment changeOf(const Candle& bar) {
    const double change = bar.close - bar.open;
    if (!std::isfinite(change)) return {{}, dashLabel(), HudTone::none};
    const char* sign = change < 0 ? "" : "+";
    const auto points = AxisScale::fmtPrice(change);
    const double share = change / std::abs(bar.open) * 100;
    if (!std::isfinite(share)) return {{}, formatLabel("{}{}", sign, points.text()), toneOf(change)};
    return {{}, formatLabel("{}{} ({}{:.2f}%)", sign, points.text(), sign, share), toneOf(change)};
}

void tellBar(const Candle* bar, HudText& out) {
    if (!bar) {
        constexpr std::array<std::string_view, 4> names{"O", "H", "L", "C"};
        for (std::size_t i = 0; i < names.size(); ++i) out.segments[i] = {names[i], dashLabel(), HudTone::none};
        return;
    }
    const HudTone tone = toneOf(bar->close - bar->open);
    out.segments[0] = price("O", bar->open, tone);
    out.segments[1] = price("H", bar->high, tone);
    out.segments[2] = price("L", bar->low, tone);
    out.segments[3] = price("C", bar->close, tone);
    out.segments[4] = changeOf(*bar);
}

void tellOptions(const std::optional<HudMetrics>& known, HudText& out) {
    const auto tell = [&](std::size_t at, std::string_view name, double HudMetrics::*part, HudTone tone) {
        const bool there = known && std::isfinite((*known).*part);
        out.segments[at] = {name, there ? fmtNum((*known).*part) : dashLabel(), there ? tone : HudTone::none};
    };
    tell(5, "OI C", &HudMetrics::callOI, HudTone::rise);
    tell(6, "P", &HudMetrics::putOI, HudTone::fall);
    tell(7, "GEX C", &HudMetrics::callGex, HudTone::rise);
    tell(8, "P", &HudMetrics::putGex, HudTone::fall);
    const double hf = known ? known->hf : 0;
    const HudTone tone = !std::isfinite(hf) || hf == 0 ? HudTone::none : hf > 0 ? HudTone::hfBlue : HudTone::hfRed;
    out.segments[9] = {"HF", fmtHF(hf), tone};
}

const Candle* barUnder(const ChartContent& content, const std::optional<ChartSpot>& pointer) {
    if (content.candles.empty()) return nullptr;
    if (pointer) {
        const double place = std::round(placeOfTime(content.candles, content.timeframe, pointer->time));
        if (place >= 0 && place < static_cast<double>(content.candles.size()))
            return &content.candles[static_cast<std::size_t>(place)];
    }
    return &content.candles.back();
}

}  // namespace

AxisScale::Label fmtNum(double v) {
    const double size = std::abs(v);
    if (!std::isfinite(v)) return dashLabel();
    if (size >= readable) return formatLabel("{:.1e}", v);
    if (size >= 1e9) return formatLabel("{:.1f}B", v / 1e9);
    if (size >= 1e6) return formatLabel("{:.1f}M", v / 1e6);
    if (size >= 1000) return formatLabel("{:.1f}K", v / 1000);
    return whole(v);
}

AxisScale::Label fmtHF(double v) {
    const double size = std::abs(v);
    if (!std::isfinite(v) || v == 0) return dashLabel();
    if (size >= readable) return formatLabel("{:.1e}", v);
    if (size >= 1e9) return formatLabel("{:.2f}B", v / 1e9);
    if (size >= 1e6) return formatLabel("{:.2f}M", v / 1e6);
    if (size >= 1000) return formatLabel("{:.0f}k", v / 1000);
    return whole(v);
}

const StrikeRow* strikeNear(std::span<const StrikeRow> rows, double ratio, double price) {
    const StrikeRow* nearest = nullptr;
    double distance = std::numeric_limits<double>::infinity();
    for (const StrikeRow& row : rows) {
        const double away = std::abs(row.strike * ratio - price);
        if (!(away <= distance)) continue;
        distance = away;
        nearest = &row;
    }
    if (!nearest || !std::isfinite(distance)) return nullptr;
    double step = std::numeric_limits<double>::infinity();  // to the strike beside it; of a lone one there is none
    for (const StrikeRow& row : rows) {
        const double gap = std::abs(row.strike - nearest->strike) * std::abs(ratio);
        if (gap > 0 && gap < step) step = gap;
    }
    return distance == 0 || (std::isfinite(step) && distance <= step) ? nearest : nullptr;
}

HudText hudText(const ChartContent& content, const std::optional<ChartSpot>& pointer) {
    HudText out;
    const Candle* bar = barUnder(content, pointer);
    tellBar(bar, out);
    const StrikeRow* row = pointer ? strikeNear(content.strikes, content.etfRatio, pointer->price) : nullptr;
    if (row) {
        tellOptions(HudMetrics{row->callOI, row->putOI, row->callGex, row->putGex, row->callHf + row->putHf}, out);
        out.strike = row->strike;
    } else {
        tellOptions(content.totals == HudMetrics{} ? std::nullopt : std::optional(content.totals), out);
    }
    if (bar && std::isfinite(bar->volume) && bar->volume > 0)
        out.segments[10] = {"VOL", fmtNum(bar->volume), HudTone::plain};
    return out;
}

std::string HudText::text() const {
    std::string out;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const HudSegment& segment = segments[i];
        if (segment.value.size == 0) continue;
        const bool group = i == ofBar || i == 7 || i >= 9;
        if (!out.empty()) out += group ? "    " : "  ";
        if (!segment.label.empty()) (out += segment.label) += ' ';
        out += segment.value.text();
    }
    return out;
}

}  // namespace vmr
