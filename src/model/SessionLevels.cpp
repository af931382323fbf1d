#include "model/SessionLevels.h"

#include "market/SessionLines.h"

namespace vmr {

namespace {
// At the cap the count stands still, so the last bar's time counts as well.
std::pair<std::size_t, std::int64_t> barsOf(const std::vector<Candle>& candles) {
    return {candles.size(), candles.empty() ? 0 : candles.back().time};
}
}  // namespace

void SessionLevels::rebuild(const std::vector<Candle>& candles, int hhmm) {
    srLines = SessionLines::build(candles, srSessions, hhmm);
    builtFrom = barsOf(candles);
}

void SessionLevels::rebuildIfBarChanged(const std::vector<Candle>& candles, int hhmm) {
    if (builtFrom != barsOf(candles)) rebuild(candles, hhmm);
}

}  // namespace vmr
