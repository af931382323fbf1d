// A chart whose camera others follow, move and save, and whose pointer shows in the chart beside it.
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

void ChartView::pointerAt(const std::optional<ChartPoint>& point, double width, double height) {
    if (!source_) return;
    const PlotArea plot{width, height};
    const bool over = point && shown_ && renderer_.showsBars() && point->x < plot.right() && point->y < plot.bottom();
    if (!over) return source_->pointerOver(std::nullopt);
    const Viewport view = renderer_.camera().viewport();
    const double place = view.first + point->x / width * view.count;
    source_->pointerOver(ChartSpot{timeAtPlace(renderer_.candles(), shown_->timeframe, place),
                                   AxisScale::priceAtY(view, point->y, height)});
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
