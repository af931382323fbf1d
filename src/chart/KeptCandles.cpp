#include "chart/KeptCandles.h"

#include <algorithm>

#include "chart/CandleGeometry.h"

namespace vmr {

void KeptCandles::make(std::span<const Candle> candles, std::string_view theme, const DataOrigin& origin) {
    using namespace CandleGeometry;
    dirty = false;
    const std::size_t n = candles.size() - 1;
    boxes_.resize(n * bodyVertices);
    ribbons_.clear();
    BoxVertex* body = boxes_.data();
    const auto each = [&](auto&& write) {
        for (std::size_t i = 0; i < n; ++i) {
            const Candle& c = candles[i];
            const bool up = isUp(c.open, c.close);
            const double top = (up ? c.close : c.open) - origin.price;
            const double bot = std::min(c.open, c.close) - origin.price;
            write(c, static_cast<double>(i) - origin.bar, top, bot, look(theme, up));
        }
    };
    each([&](const Candle&, double x, double top, double bot, const Look& style) {
        body = writeBody(body, x, top, bot, style.body);
        if (!style.outlined) return;
        ribbons_.resize(ribbons_.size() + outlineVertices);
        appendBodyOutline(&*(ribbons_.end() - outlineVertices), x, halfBody, top, bot, style.border);
    });
    bodies.keep(boxes_);
    borders.keep(ribbons_);

    boxes_.resize(n * wickVertices);
    BoxVertex* wick = boxes_.data();
    each([&](const Candle& c, double x, double top, double bot, const Look& style) {
        wick = writeWicks(wick, x, c.high - origin.price, top, bot, c.low - origin.price, style.wick);
    });
    wicks.keep(boxes_);
}

}  // namespace vmr
