#include "relay/Tape.h"

#include <algorithm>

#include "relay/MarketTime.h"
#include "relay/TapeReader.h"

namespace vmr::relay {

namespace {
void setQuotes(std::vector<Trade>& trades, double tick) {
    bool atAsk = true;
    double last = trades.empty() ? 0 : trades.front().price;
    for (Trade& trade : trades) {
        if (trade.price != last) atAsk = trade.price > last;
        last = trade.price;
        trade.bid = atAsk ? besidePrice(trade.price, -tick) : trade.price;
        trade.ask = atAsk ? trade.price : besidePrice(trade.price, tick);
    }
}
}  // namespace

std::optional<TapeSpan> tapeSpan(const std::filesystem::path& file, std::string& error) {
    std::optional<TapeSpan> span;
    const auto wrong = readTape(file, [&](const TapeRow& row) {
        const double time = static_cast<double>(row.timeMs) / 1000;
        if (!span) span = TapeSpan{time, time};
        span->first = std::min(span->first, time);
        span->last = std::max(span->last, time);
    });
    if (!wrong && span) return span;
    error = wrong.value_or("the tape " + file.string() + " holds no trades");
    return std::nullopt;
}

double tapeStart(const TapeSpan& span) { return span.first + std::min(tapeHistory, (span.last - span.first) / 2); }

std::unique_ptr<Tape> Tape::load(const std::filesystem::path& file, double tick, std::string& error) {
    std::vector<Trade> trades;
    const auto wrong = readTape(file, [&](const TapeRow& row) {
        trades.push_back({row.timeMs, row.price, row.size, 0, 0});
    });
    if (wrong || trades.empty()) {
        error = wrong.value_or("the tape " + file.string() + " holds no trades");
        return nullptr;
    }
    std::stable_sort(trades.begin(), trades.end(), [](const Trade& a, const Trade& b) { return a.timeMs < b.timeMs; });
    setQuotes(trades, tick);
    return std::unique_ptr<Tape>(new Tape(std::move(trades)));
}

void Tape::minuteTrades(std::int64_t minute, std::vector<Trade>& trades) {
    const auto before = [](const Trade& trade, std::int64_t time) { return trade.timeMs < time; };
    const auto first = std::lower_bound(trades_.begin(), trades_.end(), minute * 1000, before);
    const auto last = std::lower_bound(first, trades_.end(), (minute + 60) * 1000, before);
    trades.assign(first, last);
}

std::int64_t Tape::historyStart(std::int64_t) { return minuteOf(trades_.front().timeMs); }

}  // namespace vmr::relay
