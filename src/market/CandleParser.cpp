#include "market/CandleParser.h"

#include <algorithm>

#include "base/NumberText.h"
#include "market/Coerce.h"

namespace vmr::CandleParser {

namespace {
// What one pass over a bar's members finds; the short key wins over the long one wherever it stands.
struct BarFields {
    JsonView ts, time;
    JsonView open, high, low, close, volume;
    JsonView openLong, highLong, lowLong, closeLong, volumeLong;
};

void keep(JsonView& slot, JsonView value) {
    if (slot.kind() == JsonView::Kind::missing) slot = value;
}

BarFields collect(JsonView object) {
    BarFields f;
    for (const auto& [key, value] : object.members()) {
        if (key.size() == 1) {
            switch (key[0]) {
                case 'o':
                    keep(f.open, value);
                    break;
                case 'h':
                    keep(f.high, value);
                    break;
                case 'l':
                    keep(f.low, value);
                    break;
                case 'c':
                    keep(f.close, value);
                    break;
                case 'v':
                    keep(f.volume, value);
                    break;
                default:
                    break;
            }
        } else if (key == "ts") {
            keep(f.ts, value);
        } else if (key == "time") {
            keep(f.time, value);
        } else if (key == "open") {
            keep(f.openLong, value);
        } else if (key == "high") {
            keep(f.highLong, value);
        } else if (key == "low") {
            keep(f.lowLong, value);
        } else if (key == "close") {
            keep(f.closeLong, value);
        } else if (key == "volume") {
            keep(f.volumeLong, value);
        }
    }
    return f;
}

std::optional<double> either(JsonView shortKey, JsonView longKey) {
    if (const auto value = coerce::dbl(shortKey)) return value;
    return coerce::dbl(longKey);
}

// The four prices, or false when one is missing.
bool readPrices(const BarFields& f, Candle& bar) {
    const auto open = either(f.open, f.openLong);
    const auto high = either(f.high, f.highLong);
    const auto low = either(f.low, f.lowLong);
    const auto close = either(f.close, f.closeLong);
    if (!open || !high || !low || !close) return false;
    bar.open = *open;
    bar.high = *high;
    bar.low = *low;
    bar.close = *close;
    return true;
}

// Bars of an array; nothing when an element is no object.
std::optional<std::vector<Candle>> barsOf(JsonView array, RepairTally& tally) {
    // a pass of its own: no bar of an array that does not count is read, so none of it is counted as a repair
    for (const JsonView item : array.items())
        if (!item.isObject()) return std::nullopt;
    std::vector<Candle> bars;
    bars.reserve(array.size());
    for (const JsonView item : array.items())
        if (const auto bar = candleFromMs(item, tally)) bars.push_back(*bar);
    return bars;
}

std::vector<Candle> keyedBars(JsonView object, RepairTally& tally) {
    std::vector<Candle> bars;
    bars.reserve(object.size());
    for (const auto& [key, value] : object.members()) {
        const auto time = tally.integer(parseDouble(key).value_or(0), "the time of a bar");
        if (!time || !value.isObject()) continue;
        if (const auto bar = candle(value, *time)) bars.push_back(*bar);
    }
    std::stable_sort(bars.begin(), bars.end(), [](const Candle& a, const Candle& b) { return a.time < b.time; });
    return bars;
}

bool isAscending(const std::vector<Candle>& bars) {
    return std::adjacent_find(bars.begin(), bars.end(),
                              [](const Candle& a, const Candle& b) { return a.time >= b.time; }) == bars.end();
}

// Ascending with one bar a time; of equal times the last given wins.
std::vector<Candle> ordered(const std::vector<Candle>& bars) {
    std::vector<Candle> out = bars;
    if (isAscending(out)) return out;
    std::stable_sort(out.begin(), out.end(), [](const Candle& a, const Candle& b) { return a.time < b.time; });
    std::size_t kept = 0;
    for (std::size_t i = 0; i < out.size(); ++i) {
        if (kept > 0 && out[kept - 1].time == out[i].time) --kept;
        out[kept++] = out[i];
    }
    out.resize(kept);
    return out;
}
}  // namespace

std::optional<Candle> candleFromMs(JsonView object, RepairTally& tally) {
    const BarFields f = collect(object);
    Candle bar;
    if (!readPrices(f, bar)) return std::nullopt;
    if (const auto ts = coerce::dbl(f.ts))
        bar.time = tally.integer(*ts / 1000, "the time of a bar").value_or(0);
    else
        bar.time = coerce::intVal(f.time, tally);
    if (bar.time == 0) return std::nullopt;  // 0 is also what an unreadable time gives
    bar.volume = either(f.volume, f.volumeLong).value_or(0);
    return bar;
}

std::optional<Candle> candle(JsonView object, std::int64_t time) {
    const BarFields f = collect(object);
    Candle bar;
    if (time == 0 || !readPrices(f, bar)) return std::nullopt;
    bar.time = time;
    bar.volume = coerce::dbl(f.volume).value_or(0);
    return bar;
}

std::vector<Candle> parse(JsonView payload, RepairTally& tally) {
    if (payload.isArray()) return barsOf(payload, tally).value_or(std::vector<Candle>());
    if (!payload.isObject()) return {};
    const JsonView candles = payload["candles"];
    if (candles.isArray()) {
        if (auto bars = barsOf(candles, tally)) return std::move(*bars);
    } else if (candles.isObject()) {
        return keyedBars(candles, tally);
    }
    if (const JsonView minute = payload["minuteTs"], single = payload["candle"];
        minute.kind() != JsonView::Kind::missing && single.isObject()) {
        if (const auto bar = candle(single, coerce::intVal(minute, tally))) return {*bar};
    }
    if (const auto bar = candleFromMs(payload, tally)) return {*bar};
    return {};
}

std::vector<Candle> merge(const std::vector<Candle>& existing, const std::vector<Candle>& incoming, std::size_t cap) {
    const std::vector<Candle> older = ordered(existing);
    const std::vector<Candle> newer = ordered(incoming);
    std::vector<Candle> out;
    out.reserve(older.size() + newer.size());
    auto a = older.begin();
    auto b = newer.begin();
    while (a != older.end() || b != newer.end()) {
        if (b == newer.end() || (a != older.end() && a->time < b->time)) {
            out.push_back(*a++);
        } else {
            if (a != older.end() && a->time == b->time) ++a;
            out.push_back(*b++);
        }
    }
    if (out.size() > cap) out.erase(out.begin(), out.end() - static_cast<std::ptrdiff_t>(cap));
    return out;
}

}  // namespace vmr::CandleParser
