// A chart whose camera others follow, move and save, and whose pointer shows in the chart beside it.
#include <limits>
#include <utility>

#include "chart/AxisScale.h"
#include "chart/ChartView.h"

namespace vmr {

std::optional<ChartCamera> ChartView::camera() {
    if (!recording_) readSource();
    if (renderer_.candles().empty()) return std::nullopt;
    ChartCamera out{renderer_.camera(), renderer_.candles().size()};
    if (!recording_) out.camera.settle(renderer_.candles());
    return out;
}

// Bars that the chart has not read yet would move the view again when it does.
template <class Move>
void ChartView::moveForPeer(Move move) {
    if (!recording_) readSource();
    forPeer_ = true;
    move();
    forPeer_ = false;
}

void ChartView::mirrorView(double first, double count) {
    moveForPeer([&] { renderer_.mirrorView(first, count); });
}

void ChartView::mirrorViewRel(double gapRight, double count) {
    moveForPeer([&] { renderer_.mirrorViewRel(gapRight, count); });
}

void ChartView::mirrorPrice(double minP, double maxP) {
    moveForPeer([&] { renderer_.mirrorPrice(minP, maxP); });
}

void ChartView::setPriceLineFrac(double frac) {
    moveForPeer([&] { renderer_.setPriceLineFrac(frac); });
}

ViewSetup ChartView::viewSetup() {
    if (const auto now = camera()) return now->camera.setup();
    return renderer_.camera().setup();
}

// Bars that have not been read yet count, and would move the view again when they are.
void ChartView::applyView(const ViewSetup& setup, bool byHand) {
    if (!recording_) readSource();
    renderer_.applyView(setup, byHand);
}

void ChartView::pointerAt(const std::optional<ChartPoint>& point, double width, double height, bool timeAlone) {
    pointer_.reset();
    if (!source_) return;
    const PlotArea plot{width, height};
    const bool inPlot = point && point->x < plot.right() && (timeAlone || point->y < plot.bottom());
    const bool over = inPlot && shown_ && renderer_.showsBars();
    if (over) {
        const Viewport view = renderer_.camera().viewport();
        const double place = view.first + point->x / width * view.count;
        const double price =
            timeAlone ? std::numeric_limits<double>::quiet_NaN() : AxisScale::priceAtY(view, point->y, height);
        pointer_ = ChartSpot{timeAtPlace(renderer_.candles(), shown_->timeframe, place), price};
    }
    source_->pointerOver(pointer_);
}

std::optional<OscInput> ChartView::oscillator() const {
    const auto& view = viewport_->get();
    if (!source_ || !shown_ || !view) return std::nullopt;
    const ChartContent content = source_->chartContent();
    if (content.chart != shown_->chart) return std::nullopt;
    return OscInput{content.osc, renderer_.candles(), shown_->timeframe, *view};
}

std::optional<OscFacts> ChartView::oscFacts() const {
    const auto input = below.height > 0 ? oscillator() : std::nullopt;
    return input ? std::optional(OscillatorPane::facts(*input, below.height)) : std::nullopt;
}

std::optional<HudText> ChartView::hud() const {
    if (!source_) return std::nullopt;
    const ChartContent content = source_->chartContent();
    return content.hud && !content.candles.empty() ? std::optional(hudText(content, pointer_)) : std::nullopt;
}

std::optional<AxisLayer::Extent> ChartView::litStrike(const HudText& hud, double height) const {
    constexpr double least = 6.0, most = 20.0;  // points
    if (!hud.strike || !renderer_.showsBars()) return std::nullopt;
    const ChartContent content = source_->chartContent();
    const Viewport view = renderer_.camera().viewport();
    const auto placeOf = [&](double strike) { return AxisScale::yFor(view, strike * content.etfRatio, height); };
    const double y = placeOf(*hud.strike);
    double row = most;
    for (const StrikeRow& other : content.strikes)
        if (other.strike != *hud.strike) row = std::min(row, std::abs(placeOf(other.strike) - y));
    const double half = std::max(row, least) / 2;
    if (!(y - half >= 0 && y + half <= PlotArea{0, height}.bottom())) return std::nullopt;
    return AxisLayer::Extent{y - half, y + half};
}

void ChartView::showPeerCrosshair(const std::optional<ChartSpot>& spot) {
    if (std::exchange(peerSpot_, spot) != spot && onPeerCrosshair) onPeerCrosshair();
}

std::optional<ChartPoint> ChartView::peerCrosshair(double width, double height) const {
    if (!peerSpot_ || !shown_ || !renderer_.showsBars()) return std::nullopt;
    const Viewport view = renderer_.camera().viewport();
    const double place = placeOfTime(renderer_.candles(), shown_->timeframe, peerSpot_->time);
    return ChartPoint{AxisScale::xForIndex(view, place, width), AxisScale::yFor(view, peerSpot_->price, height)};
}

}  // namespace vmr
