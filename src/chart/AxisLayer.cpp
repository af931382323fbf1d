#include "chart/AxisLayer.h"

#include <algorithm>
#include <cmath>

#include "chart/MarkedStrikeLayer.h"
#include "chart/TradingLinesLayer.h"

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
constexpr double countdownHeight = 16.0, countdownGap = 2.0;
constexpr double labelPoints = 64.0;  // the room that one time label gets
constexpr double timeLabelGap = 10.0;
constexpr double fadePoints = 8.0;
constexpr std::int64_t daySeconds = 86400;

Rgba textColor(double alpha) { return {0.72F, 0.72F, 0.72F, static_cast<float>(alpha)}; }

/// 0 at `distance` 0 and below, 1 from `fadePoints` on.
double fade(double distance) { return std::clamp(distance / fadePoints, 0.0, 1.0); }

bool fits(const ScreenFrame& frame) { return frame.plot().bottom() > tagHeight && frame.plot().right() > tagHeight; }

}  // namespace

AxisLayer::AxisLayer(GlyphSource& glyphs, SessionTime& session) : session_(session), painter_(glyphs) {
    timeTicks_.reserve(512);
    timeLabels_.reserve(512);
    tags_.reserve(64);
    labels_.prices.reserve(priceTicks_.values.size());
    labels_.times.reserve(512);
    labels_.priceTexts.reserve(priceTicks_.values.size());
    labels_.timeTexts.reserve(512);
}

void AxisLayer::drawBelow(ScreenFrame& frame) {
    if (!fits(frame)) return;
    painter_.paint(frame, [&] {
        findPriceTicks(frame);
        findTimeTicks(frame);
        addGrid(frame);
    });
}

void AxisLayer::addGrid(const ScreenFrame& frame) {
    const double right = frame.plot().right(), bottom = frame.plot().bottom();
    for (const double price : priceTicks_.span()) {
        const double y = AxisScale::yFor(frame.viewport, price, frame.height);
        if (y >= 0 && y < bottom) painter_.horizontal(0, right, y, gridColor);
    }
    for (const TimeLabel& tick : timeLabels_) {
        if (tick.x >= 0 && tick.x < right) painter_.vertical(tick.x, 0, bottom, gridColor);
    }
}

bool AxisLayer::drawAbove(ScreenFrame& frame) {
    labels_.clear();
    if (!fits(frame)) return false;
    gatherTags();
    const Box box = tagBox(frame), countdown = countdownBox(frame, box);
    return painter_.paint(frame, [&] {
        labels_.clear();  // it may be painted again
        addGround(frame, box);
        addPriceLabels(frame, box, countdown);
        if (countdown.shown) labels_.countdown = {countdown.top, countdown.bottom};
        for (const PointRect& tag : tags_) labels_.tags.push_back({std::floor(tag.y), std::ceil(tag.bottom())});
        addTimeLabels(frame);
        if (box.shown) {
            labels_.lastPrice = {std::floor(box.top), std::ceil(box.bottom)};
            addPrice(frame, frame.candles.back().close, FontFace::semibold, (box.top + box.bottom) * 0.5, tagTextColor);
        }
    });
}

void AxisLayer::addGround(const ScreenFrame& frame, const Box& box) {
    const double right = frame.plot().right(), bottom = frame.plot().bottom();
    painter_.rect(right, 0, frame.width, frame.height, areaColor);
    painter_.rect(0, bottom, right, frame.height, areaColor);
    painter_.vertical(right, 0, bottom, separatorColor);
    painter_.horizontal(0, frame.width, bottom, separatorColor);
    if (!box.shown) return;
    painter_.roundedBox(right + 1.0, box.top, frame.width - 3.0, box.bottom, tagRadius,
                        frame.rising ? risingColor : fallingColor);
}

void AxisLayer::findPriceTicks(const ScreenFrame& frame) {
    priceTicks_ = AxisScale::priceTicks(frame.viewport, frame.height);
    std::size_t count = 0;
    for (const double value : priceTicks_.span()) {
        const double cents = value * 100.0;
        const double off = std::abs(cents - std::round(cents));
        // else two labels could read the same; at the closest zoom a hundredth of a step is less than that of a cent
        const bool exact = off < 0.01 && off < priceTicks_.step;
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
    AxisScale::timeTickIndices(view, frame.width, frame.candles, timeframe_, timeTicks_);
    while (pointsPerSecond * static_cast<double>(step) < labelPoints && step < 512 * daySeconds) step *= 2;
    std::erase_if(timeTicks_, [&](std::size_t i) { return frame.candles[i].time % step != 0; });
    nameTicks(frame, step);
    constexpr std::int64_t minute = 60;
    for (const std::int64_t minutes : {1440, 720, 480, 240, 120, 60, 30, 15, 10, 5, 2, 1}) {
        if (minutes * minute >= step) continue;
        if (wholeTimeLabels(frame) >= 2) break;
        if (pointsPerSecond * static_cast<double>(minutes * minute) < labelPoints) break;
        timeTicks_.clear();
        for (std::size_t i = range.begin; i < range.end; ++i)
            if (frame.candles[i].time % (minutes * minute) == 0) timeTicks_.push_back(i);
        nameTicks(frame, minutes * minute);
    }
}

void AxisLayer::nameTicks(const ScreenFrame& frame, std::int64_t step) {
    timeLabels_.clear();
    if (timeTicks_.empty() && step >= daySeconds / 2)
        findDays(frame);
    else
        nameTimeTicks(frame, step);
    keepApart();
}

// Those that neither edge of the plot cuts into.
std::size_t AxisLayer::wholeTimeLabels(const ScreenFrame& frame) const {
    return static_cast<std::size_t>(std::ranges::count_if(timeLabels_, [&](const TimeLabel& label) {
        return label.x >= label.width * 0.5 && label.x + label.width * 0.5 <= frame.plot().right();
    }));
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
                               painter_.textWidth(label.text(), axisStyle), date});
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
                               painter_.textWidth(label.text(), axisStyle), true});
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

void AxisLayer::gatherTags() {
    tags_.clear();
    if (account) tags_.assign(account->tagBoxes().begin(), account->tagBoxes().end());
    if (marked && marked->tagBox().width > 0) tags_.push_back(marked->tagBox());
}

AxisLayer::Box AxisLayer::tagBox(const ScreenFrame& frame) const {
    const double bottom = frame.plot().bottom();
    const double y = AxisScale::yFor(frame.viewport, frame.lastPrice, frame.height);
    if (!(y >= 0 && y <= bottom)) return {};
    const double top = std::clamp(y - tagHeight * 0.5, 0.0, bottom - tagHeight);
    return {top, top + tagHeight, true};
}

AxisLayer::Box AxisLayer::countdownBox(const ScreenFrame& frame, const Box& tag) const {
    if (!keepsCountdown_) return {};
    const double bottom = frame.plot().bottom(), room = countdownHeight + countdownGap;
    const bool below = tag.shown || AxisScale::yFor(frame.viewport, frame.lastPrice, frame.height) < 0;
    std::optional<double> top;
    if (below) top = freeTop(tag.shown ? std::ceil(tag.bottom + countdownGap) : countdownGap, countdownHeight, false);
    if (!top || *top + countdownHeight > bottom)
        top = freeTop(tag.shown ? std::floor(tag.top) - room : std::floor(bottom - room), countdownHeight, true);
    if (!top || *top < 0 || *top + countdownHeight > bottom) return {};
    return {*top, *top + countdownHeight, true};
}

// From `top` on, the first place that no line's tag takes. Each step passes a tag for good.
std::optional<double> AxisLayer::freeTop(double top, double height, bool upwards) const {
    for (std::size_t passed = 0; passed <= tags_.size(); ++passed) {
        const auto met = std::ranges::find_if(tags_, [&](const PointRect& tag) {
            return tag.y < top + height + countdownGap && tag.bottom() + countdownGap > top;
        });
        if (met == tags_.end()) return top;
        top = upwards ? std::floor(met->y - countdownGap - height) : std::ceil(met->bottom() + countdownGap);
    }
    return std::nullopt;
}

PointRect AxisLayer::lastPriceBox(const ScreenFrame& frame) const {
    if (!fits(frame)) return {};
    const Box box = tagBox(frame);
    if (!box.shown) return {};
    return {frame.plot().right(), box.top, PlotArea::priceAxisWidth, box.bottom - box.top};
}

void AxisLayer::addPriceLabels(const ScreenFrame& frame, const Box& box, const Box& countdown) {
    const double half = painter_.lineHeight(axisStyle) * 0.5;
    const double bottom = frame.plot().bottom();
    for (const double price : priceTicks_.span()) {
        const double y = AxisScale::yFor(frame.viewport, price, frame.height);
        double alpha = std::min(fade(y - half), fade(bottom - half - y));
        for (const Box& other : {box, countdown})
            if (other.shown) alpha *= fade(std::max(other.top - (y + half), (y - half) - other.bottom));
        for (const PointRect& tag : tags_) alpha *= fade(std::max(tag.y - (y + half), (y - half) - tag.bottom()));
        if (!(alpha > 0.0)) continue;
        if (addPrice(frame, price, FontFace::regular, y, textColor(alpha)))
            labels_.priceTexts.push_back({AxisScale::fmtPrice(price), y});
        labels_.prices.push_back({y - half, y + half});
    }
}

// False where the axis is too narrow for the text.
bool AxisLayer::addPrice(const ScreenFrame& frame, double price, FontFace face, double y, const Rgba& color) {
    constexpr double sideRoom = 4.0;
    const auto label = AxisScale::fmtPrice(price);
    TextStyle style{face, axisStyle.pointSize};
    double width = painter_.textWidth(label.text(), style);
    if (width > PlotArea::priceAxisWidth - 2.0 * sideRoom) {
        style.pointSize = 9.0;
        width = painter_.textWidth(label.text(), style);
    }
    if (width > PlotArea::priceAxisWidth - 2.0 * sideRoom) return false;
    const double right = frame.width - std::min(9.0, PlotArea::priceAxisWidth - sideRoom - width);
    painter_.text(label.text(), style, right, y, TextAlign::right, color);
    return true;
}

void AxisLayer::addTimeLabels(const ScreenFrame& frame) {
    const double y = frame.height - PlotArea::timeAxisHeight * 0.5;
    for (const TimeLabel& tick : timeLabels_) {
        const double half = tick.width * 0.5 + 2.0;
        const double alpha = std::min(fade(tick.x - half), fade(frame.plot().right() - half - tick.x));
        if (!(alpha > 0.0)) continue;
        painter_.text(tick.label.text(), axisStyle, tick.x, y, TextAlign::center, textColor(alpha));
        labels_.times.push_back({tick.x - half, tick.x + half});
        labels_.timeTexts.push_back({tick.label, tick.x});
    }
}

}  // namespace vmr
