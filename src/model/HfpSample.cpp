#include "model/HfpSample.h"

#include <algorithm>
#include <cmath>

#include "market/Coerce.h"
#include "market/StrikesParser.h"

namespace vmr {

namespace Hfp {

namespace {
// Of two equally near the first.
std::size_t nearestRow(const std::vector<StrikeRow>& rows, double spot) {
    std::size_t nearest = 0;
    for (std::size_t i = 1; i < rows.size(); ++i)
        if (std::abs(rows[i].strike - spot) < std::abs(rows[nearest].strike - spot)) nearest = i;
    return nearest;
}

void addBand(const std::vector<StrikeRow>& rows, double spot, HfpSample& out) {
    constexpr std::size_t reach = 2;
    const std::size_t nearest = nearestRow(rows, spot);
    const std::size_t last = std::min(nearest + reach, rows.size() - 1);
    for (std::size_t i = nearest < reach ? 0 : nearest - reach; i <= last; ++i) {
        const StrikeRow& row = rows[i];
        out.band.push_back(row.strike);
        const auto same = std::find_if(out.atm.begin(), out.atm.end(),
                                       [&row](const StrikeFlow& flow) { return flow.strike == row.strike; });
        const StrikeFlow flow{row.strike, row.callHf, row.putHf};
        if (same == out.atm.end())
            out.atm.push_back(flow);
        else
            *same = flow;
    }
    std::sort(out.band.begin(), out.band.end(), strikeBefore);
}
}  // namespace

std::optional<double> spotPrice(const FieldView& fields, const std::vector<Candle>& candles, double etfRatio) {
    constexpr double smallestRatio = 1e-9;
    if (const auto spot = coerce::dbl(fields["spot"])) return spot;
    if (candles.empty()) return std::nullopt;
    return candles.back().close / std::max(smallestRatio, etfRatio);
}

std::optional<HfpSample> sample(const std::vector<StrikeRow>& rows, std::optional<double> spot, double t) {
    if (rows.empty()) return std::nullopt;
    HfpSample out;
    out.t = t;
    for (const StrikeRow& row : rows) {
        out.call += row.callHf;
        out.put += row.putHf;
    }
    if (spot && *spot > 0) addBand(rows, *spot, out);
    return out;
}

void trim(std::deque<HfpSample>& samples, double now) {
    const double cutoff = now - retention;
    const auto old = [cutoff](const HfpSample& sample) { return sample.t < cutoff; };
    if (samples.empty() || !old(samples.front())) return;
    // They come in the order of time unless the clock was set back, and to erase moves all the others up.
    while (!samples.empty() && old(samples.front())) samples.pop_front();
    if (std::any_of(samples.begin(), samples.end(), old)) std::erase_if(samples, old);
}

}  // namespace Hfp
}  // namespace vmr
