#include "chart/KeptCandles.h"

#include <algorithm>

#include "chart/CandleGeometry.h"

namespace vmr {

void KeptCandles::make(std::span<const Candle> candles, std::string_view theme, const DataOrigin& origin) {
    using namespace CandleGeometry;
    dirty = false;
    const std::size_t n = candles.size() - 1;
    vertices_.resize(n * candleVertices);
    CandleVertex* out = vertices_.data();
    Before before;
    for (std::size_t i = 0; i < n; ++i) {
        const Candle& c = candles[i];
        const Place place{static_cast<double>(i) - origin.bar, c.high - origin.price,
                          std::max(c.open, c.close) - origin.price, std::min(c.open, c.close) - origin.price,
                          c.low - origin.price};
        const Look& style = look(theme, isUp(c.open, c.close));
        out = write(out, place, style, before);
        before.add(place.top, place.bot, style);
    }
    list.keep(vertices_);
}

}  // namespace vmr
