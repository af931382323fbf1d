#include "chart/AxisLayer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace vmr {

namespace {

constexpr Rgba areaColor{0.04F, 0.04F, 0.04F, 1.0F};
constexpr Rgba separatorColor{1.0F, 1.0F, 1.0F, 0.09F};
constexpr Rgba gridColor{1.0F, 1.0F, 1.0F, 0.035F};
constexpr Rgba risingColor{0.149F, 0.651F, 0.604F, 1.0F};
constexpr Rgba fallingColor{0.937F, 0.325F, 0.314F, 1.0F};
constexpr Rgba tagTextColor{1.0F, 1.0F, 1.0F, 1.0F};
constexpr TextStyle axisStyle{FontFace::regular, 11.0};

constexpr double tagHeight = 18.0;
constexpr double tagRadius = 3.0;
constexpr double labelPoints = 64.0;  // the room that one time label gets
constexpr double timeLabelGap = 10.0;
constexpr double fadePoints = 8.0;
constexpr std::int64_t daySeconds = 86400;

Rgba textColor(double alpha) { return {0.72F, 0.72F, 0.72F, static_cast<float>(alpha)}; }

/// 0 at `distance` 0 and below, 1 from `fadePoints` on.
double fade(double distance) { return std::clamp(distance / fadePoints, 0.0, 1.0); }

bool fits(const ScreenFrame& frame) { return frame.plot().bottom() > tagHeight && frame.plot().right() > tagHeight; }

}  // namespace

AxisLayer::AxisLayer(GlyphSource& glyphs, SessionTime& session) : session_(session), text_(glyphs) {
    shapes_.reserve(1024);
    timeTicks_.reserve(512);
    timeLabels_.reserve(512);
}

void AxisLayer::drawBelow(ScreenFrame& frame) {
    if (!fits(frame)) return;
    text_.begin(frame.pixelRatio);
    findPriceTicks(frame);
    findTimeTicks(frame);
    const double hair = 1.0 / frame.pixelRatio;
    const double right = frame.plot().right(), bottom = frame.plot().bottom();
    for (const double price : priceTicks_.span()) {
        const double y = AxisScale::yFor(frame.viewport, price, frame.height);
        if (y >= 0 && y < bottom) rect(frame, 0, y, right, y + hair, gridColor);
    }
    for (const TimeLabel& tick : timeLabels_) {
        if (tick.x >= 0 && tick.x < right) rect(frame, tick.x, 0, tick.x + hair, bottom, gridColor);
    }
    flush(frame);
}

bool AxisLayer::drawAbove(ScreenFrame& frame) {
    if (!fits(frame)) return false;
    const double hair = 1.0 / frame.pixelRatio;
    const double right = frame.plot().right(), bottom = frame.plot().bottom();
    rect(frame, right, 0, frame.width, frame.height, areaColor);
    rect(frame, 0, bottom, right, frame.height, areaColor);
    rect(frame, right, 0, right + hair, bottom, separatorColor);
    rect(frame, 0, bottom, frame.width, bottom + hair, separatorColor);
    const Box box = tagBox(frame);
    if (box.shown) roundedBox(frame, right + 1.0, frame.width - 3.0, box, frame.rising ? risingColor : fallingColor);
    flush(frame);

    // Rasterising a new glyph may rebuild the atlas and move the others.
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        text_.begin(frame.pixelRatio);
        addPriceLabels(frame, box);
        addTimeLabels(frame);
        if (box.shown) {
            addPrice(frame, frame.candles.back().close, FontFace::semibold, (box.top + box.bottom) * 0.5, tagTextColor);
        }
        if (!text_.stale()) break;
    }
    text_.draw(frame);
    return text_.stale();
}

void AxisLayer::findPriceTicks(const ScreenFrame& frame) {
    priceTicks_ = AxisScale::priceTicks(frame.viewport, frame.height);
    std::size_t count = 0;
    for (const double value : priceTicks_.span()) {
        const double cents = value * 100.0;
        const bool exact = std::abs(cents - std::round(cents)) < 0.01;  // else two labels could read the same
        if (exact) priceTicks_.values[count++] = value;
    }
    priceTicks_.count = count;
}

void AxisLayer::findTimeTicks(const ScreenFrame& frame) {
    timeTicks_.clear();
    timeLabels_.clear();
    const Viewport& view = frame.viewport;
    const AxisScale::IndexRange range = AxisScale::visibleRange(view, frame.candles.size());
    if (range.begin == range.end) return;
    std::int64_t step = AxisScale::timeTickStep(view, frame.width, timeframe_);
    const double pointsPerSecond = frame.width / view.count / (std::max(timeframe_, 1.0) * 60.0);
    if (view.count * std::max(timeframe_, 1.0) * 60.0 < 2.0 * static_cast<double>(step)) {
        for (const std::int64_t finer : {900, 600, 300, 120, 60}) {
            if (pointsPerSecond * static_cast<double>(finer) < labelPoints) break;
            step = finer;
        }
        for (std::size_t i = range.begin; i < range.end; ++i) {
            if (frame.candles[i].time % step == 0) timeTicks_.push_back(i);
        }
    } else {
        AxisScale::timeTickIndices(view, frame.width, frame.candles, timeframe_, timeTicks_);
        while (pointsPerSecond * static_cast<double>(step) < labelPoints && step < 512 * daySeconds) step *= 2;
        std::erase_if(timeTicks_, [&](std::size_t i) { return frame.candles[i].time % step != 0; });
    }
    if (timeTicks_.empty() && step >= daySeconds / 2) {
        findDays(frame);
    } else {
        nameTimeTicks(frame, step);
    }
    keepApart();
}

void AxisLayer::nameTimeTicks(const ScreenFrame& frame, std::int64_t step) {
    if (timeTicks_.empty()) return;
    const auto dayOf = [&](std::size_t i) { return AxisScale::dayNumber(session_, frame.candles[i].time); };
    std::int64_t previousDay = dayOf(timeTicks_.front()) - 1;
    for (std::size_t i = timeTicks_.front(); i-- > 0;) {
        if (frame.candles[i].time % step != 0) continue;
        previousDay = dayOf(i);
        break;
    }
    for (const std::size_t i : timeTicks_) {
        const std::int64_t day = dayOf(i);
        const bool date = day != previousDay;
        previousDay = day;
        const auto label = AxisScale::fmtTime(session_, frame.candles[i].time, date);
        timeLabels_.push_back({label, AxisScale::xForIndex(frame.viewport, static_cast<double>(i), frame.width),
                               text_.width(label.text(), axisStyle), date});
    }
}

void AxisLayer::findDays(const ScreenFrame& frame) {
    const auto range = AxisScale::visibleRange(frame.viewport, frame.candles.size());
    const auto dayOf = [&](std::size_t i) { return AxisScale::dayNumber(session_, frame.candles[i].time); };
    std::int64_t previousDay = range.begin > 0 ? dayOf(range.begin - 1) : dayOf(range.begin) - 1;
    for (std::size_t i = range.begin; i < range.end; ++i) {
        const std::int64_t day = dayOf(i);
        if (day != previousDay) timeTicks_.push_back(i);
        previousDay = day;
    }
    std::int64_t every = 1;
    const double pointsPerDay = frame.width / static_cast<double>(std::max<std::size_t>(timeTicks_.size(), 1));
    while (pointsPerDay * static_cast<double>(every) < labelPoints) every *= 2;
    for (const std::size_t i : timeTicks_) {
        if (dayOf(i) % every != 0) continue;
        const auto label = AxisScale::fmtTime(session_, frame.candles[i].time, true);
        timeLabels_.push_back({label, AxisScale::xForIndex(frame.viewport, static_cast<double>(i), frame.width),
                               text_.width(label.text(), axisStyle), true});
    }
}

void AxisLayer::keepApart() {
    // Bars leave out nights and weekends, so ticks can come closer than their step; a date then wins over a time.
    std::size_t kept = 0;
    for (const TimeLabel& next : timeLabels_) {
        const bool close = kept > 0 && next.x - timeLabels_[kept - 1].x <
                                           (next.width + timeLabels_[kept - 1].width) * 0.5 + timeLabelGap;
        if (!close) {
            timeLabels_[kept++] = next;
        } else if (next.date && !timeLabels_[kept - 1].date) {
            timeLabels_[kept - 1] = next;
        }
    }
    timeLabels_.resize(kept);
}

AxisLayer::Box AxisLayer::tagBox(const ScreenFrame& frame) const {
    const double bottom = frame.plot().bottom();
    const double y = AxisScale::yFor(frame.viewport, frame.lastPrice, frame.height);
    if (!(y >= 0 && y <= bottom)) return {};
    const double top = std::clamp(y - tagHeight * 0.5, 0.0, bottom - tagHeight);
    return {top, top + tagHeight, true};
}

void AxisLayer::addPriceLabels(const ScreenFrame& frame, const Box& box) {
    const double half = text_.lineHeight(axisStyle) * 0.5;
    const double bottom = frame.plot().bottom();
    for (const double price : priceTicks_.span()) {
        const double y = AxisScale::yFor(frame.viewport, price, frame.height);
        double alpha = std::min(fade(y - half), fade(bottom - half - y));
        if (box.shown) alpha *= fade(std::max(box.top - (y + half), (y - half) - box.bottom));
        if (alpha > 0.0) addPrice(frame, price, FontFace::regular, y, textColor(alpha));
    }
}

void AxisLayer::addPrice(const ScreenFrame& frame, double price, FontFace face, double y, const Rgba& color) {
    constexpr double sideRoom = 4.0;
    const auto label = AxisScale::fmtPrice(price);
    TextStyle style{face, axisStyle.pointSize};
    double width = text_.width(label.text(), style);
    if (width > PlotArea::priceAxisWidth - 2.0 * sideRoom) {
        style.pointSize = 9.0;
        width = text_.width(label.text(), style);
    }
    if (width > PlotArea::priceAxisWidth - 2.0 * sideRoom) return;
    const double right = frame.width - std::min(9.0, PlotArea::priceAxisWidth - sideRoom - width);
    text_.add(label.text(), style, right, y, TextAlign::right, color);
}

void AxisLayer::addTimeLabels(const ScreenFrame& frame) {
    const double y = frame.height - PlotArea::timeAxisHeight * 0.5;
    for (const TimeLabel& tick : timeLabels_) {
        const double half = tick.width * 0.5 + 2.0;
        const double alpha = std::min(fade(tick.x - half), fade(frame.plot().right() - half - tick.x));
        if (alpha > 0.0) text_.add(tick.label.text(), axisStyle, tick.x, y, TextAlign::center, textColor(alpha));
    }
}

void AxisLayer::rect(const ScreenFrame& frame, double x0, double y0, double x1, double y1, const Rgba& color) {
    const auto pixel = [&](double v) { return static_cast<float>(std::round(v * frame.pixelRatio)); };
    const float left = pixel(x0), top = pixel(y0);
    const float right = std::max(pixel(x1), left + 1.0F), bottom = std::max(pixel(y1), top + 1.0F);
    for (const auto& [x, y] :
         {std::pair{left, top}, {left, bottom}, {right, bottom}, {left, top}, {right, bottom}, {right, top}}) {
        shapes_.push_back({{x, y, 0.0F, 1.0F}, color});
    }
}

void AxisLayer::roundedBox(const ScreenFrame& frame, double x0, double x1, const Box& box, const Rgba& color) {
    constexpr int arcSteps = 6;
    const auto pixel = [&](double v) { return std::round(v * frame.pixelRatio); };
    const double left = pixel(x0), right = pixel(x1), top = pixel(box.top), bottom = pixel(box.bottom);
    const double radius = tagRadius * frame.pixelRatio;
    std::array<std::array<float, 2>, 4 * (arcSteps + 1)> rim;
    for (int corner = 0; corner < 4; ++corner) {
        const double cx = corner == 1 || corner == 2 ? left + radius : right - radius;
        const double cy = corner < 2 ? top + radius : bottom - radius;
        for (int i = 0; i <= arcSteps; ++i) {
            const double angle = (corner + static_cast<double>(i) / arcSteps) * 1.5707963267948966;
            rim[static_cast<std::size_t>(corner * (arcSteps + 1) + i)] = {
                static_cast<float>(cx + radius * std::cos(angle)), static_cast<float>(cy - radius * std::sin(angle))};
        }
    }
    const auto cx = static_cast<float>((left + right) * 0.5), cy = static_cast<float>((top + bottom) * 0.5);
    for (std::size_t i = 0; i < rim.size(); ++i) {
        const auto& a = rim[i];
        const auto& b = rim[(i + 1) % rim.size()];
        shapes_.push_back({{cx, cy, 0.0F, 1.0F}, color});
        shapes_.push_back({{a[0], a[1], 0.0F, 1.0F}, color});
        shapes_.push_back({{b[0], b[1], 0.0F, 1.0F}, color});
    }
}

void AxisLayer::flush(ScreenFrame& frame) {
    const auto upload = frame.arena.uploadDyn(shapes_);
    shapes_.clear();
    if (!upload) return;
    frame.gpu.setPipeline(Pipeline::flat);
    frame.gpu.setUniforms(
        std::bit_cast<std::array<float, 4>>(pixelUniforms(frame.width, frame.height, frame.pixelRatio)));
    frame.gpu.draw(Primitive::triangles, upload->buffer, upload->offset, upload->count);
}

}  // namespace vmr
