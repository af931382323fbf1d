#include "model/Gex3D.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "market/Coerce.h"
#include "model/Expirations.h"

namespace vmr::Gex3D {

namespace {
using StrikeNet = std::pair<double, double>;

bool isArrayOfObjects(JsonView value) {
    if (!value.isArray()) return false;
    for (const JsonView item : value.items())
        if (!item.isObject()) return false;
    return true;
}

// Strike and net of the rows in the band, ascending; of a repeated strike the last. A row without a finite net is none.
std::vector<StrikeNet> netByStrike(JsonView rows, double low, double high) {
    std::vector<StrikeNet> found;
    for (const JsonView row : rows.items()) {
        const auto strike = coerce::dbl(row["strike"]);
        if (!strike || !(*strike >= low && *strike <= high)) continue;
        const double net = coerce::dbl(row["callGex"]).value_or(0) - coerce::dbl(row["putGex"]).value_or(0);
        if (std::isfinite(net)) found.emplace_back(*strike, net);
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::size_t kept = 0;
    for (const StrikeNet& entry : found) {
        if (kept > 0 && found[kept - 1].first == entry.first) --kept;
        found[kept++] = entry;
    }
    found.resize(kept);
    return found;
}

std::vector<std::string> expirationsOf(const FieldView& fields) {
    const JsonView list = fields["expirations"];
    std::vector<std::string> expirations;
    if (!list.isArray()) return expirations;
    for (const JsonView item : list.items())
        if (item.isString()) expirations.emplace_back(item.string());
    std::sort(expirations.begin(), expirations.end());
    return expirations;
}

std::vector<double> strikesOf(const std::vector<std::vector<StrikeNet>>& table) {
    std::vector<double> strikes;
    for (const auto& row : table)
        for (const StrikeNet& entry : row) strikes.push_back(entry.first);
    std::sort(strikes.begin(), strikes.end());
    strikes.erase(std::unique(strikes.begin(), strikes.end()), strikes.end());
    return strikes;
}
}  // namespace

std::optional<double> spotPrice(const std::vector<Candle>& candles, double etfRatio, const FieldView& fields) {
    constexpr double smallestRatio = 1e-9;
    const auto spot = candles.empty() ? coerce::dbl(fields["spot"])
                                      : std::optional(candles.back().close / std::max(smallestRatio, etfRatio));
    return spot && *spot > 0 && std::isfinite(*spot) ? spot : std::nullopt;
}

std::optional<Gex3DData> build(double spot, const FieldView& fields, double now) {
    constexpr double bandLow = 0.98, bandHigh = 1.02;
    const std::vector<std::string> expirations = expirationsOf(fields);
    if (expirations.empty()) return std::nullopt;
    const JsonView byExpiration = fields["byExpiration"];
    std::vector<std::vector<StrikeNet>> table;
    for (const std::string& expiration : expirations) {
        JsonView rows = byExpiration[expiration]["gexByStrike"];
        if (!isArrayOfObjects(rows)) rows = table.empty() ? fields["gexByStrike"] : JsonView();
        if (!isArrayOfObjects(rows)) rows = JsonView();
        table.push_back(netByStrike(rows, spot * bandLow, spot * bandHigh));
    }

    Gex3DData data{spot, strikesOf(table), expirations, {}, {}};
    if (data.strikes.size() < 2) return std::nullopt;
    for (std::size_t e = 0; e < table.size(); ++e) {
        data.expLabels.push_back(expLabel(expirations[e], now));
        std::vector<double>& net = data.net.emplace_back(data.strikes.size(), 0.0);
        auto place = data.strikes.begin();
        for (const auto& [strike, value] : table[e]) {
            place = std::lower_bound(place, data.strikes.end(), strike);
            net[static_cast<std::size_t>(place - data.strikes.begin())] = value;
        }
    }
    return data;
}

}  // namespace vmr::Gex3D
