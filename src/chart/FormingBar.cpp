#include "chart/FormingBar.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "chart/CandleGeometry.h"

namespace vmr {

bool FormingBar::ease(double close, double share) {
    if (!std::isfinite(close_)) close_ = close;
    const double tolerance = std::max(std::abs(close) * 1e-6, 0.01);
    if (!(std::abs(close - close_) > tolerance)) {
        close_ = close;
        return false;
    }
    close_ += (close - close_) * share;
    return true;
}

FormingBar::Lists FormingBar::write(std::span<const Candle> candles, std::string_view theme, const Camera& camera,
                                    const DataOrigin& origin, double viewW, double viewH, FrameArena& arena) {
    const double minBody = (camera.yMaxManual - camera.yMinManual) / std::max(viewH, 1.0) * 1.5;
    Lists lists;
    lists.candle = writeCandle(candles, theme, minBody, origin, arena);
    lists.priceLine = writePriceLine(camera, origin, viewW, arena);
    return lists;
}

std::optional<DynUpload> FormingBar::writeCandle(std::span<const Candle> candles, std::string_view theme,
                                                 double minBody, const DataOrigin& origin, FrameArena& arena) const {
    using namespace CandleGeometry;
    const Candle& last = candles.back();
    const double open = last.open;
    const double x = static_cast<double>(candles.size() - 1) - origin.bar;
    const Look& style = look(theme, isUp(open, close_));  // may change while it eases

    double top = std::max(open, close_);
    double bot = std::min(open, close_);
    if (top - bot < minBody) {
        const double mid = (top + bot) * 0.5;
        top = mid + minBody * 0.5;
        bot = mid - minBody * 0.5;
    }
    const double wickHi = std::max({last.high, close_, open}) - origin.price;
    const double wickLo = std::min({last.low, close_, open}) - origin.price;
    std::array<CandleVertex, candleVertices> vertices;
    Before before;
    for (std::size_t back = std::min<std::size_t>(candles.size(), 3); back > 1; --back) {
        const Candle& c = candles[candles.size() - back];
        before.add(std::max(c.open, c.close) - origin.price, std::min(c.open, c.close) - origin.price,
                   look(theme, isUp(c.open, c.close)));
    }
    CandleGeometry::write(vertices.data(), {x, wickHi, top - origin.price, bot - origin.price, wickLo}, style, before);
    return arena.uploadDyn(vertices);
}

std::optional<DynUpload> FormingBar::writePriceLine(const Camera& camera, const DataOrigin& origin, double viewW,
                                                    FrameArena& arena) {
    constexpr std::size_t maxDashes = 6000;
    const double perPixel = camera.visibleCount / viewW;
    const double end = camera.firstVisible + camera.visibleCount;
    const auto y = static_cast<float>(close_ - origin.price);
    const auto vertex = [&](double x) { dashes_.push_back({{static_cast<float>(x - origin.bar), y}, priceLineColor}); };
    dashes_.clear();
    for (std::size_t i = 0; i < maxDashes; ++i) {
        const double x = camera.firstVisible + static_cast<double>(i) * 8.0 * perPixel;
        if (!(x < end)) break;
        vertex(x);
        vertex(std::min(x + 2.0 * perPixel, end));
    }
    return arena.uploadDyn(dashes_);
}

}  // namespace vmr
