#include "relay/MarketPublisher.h"

#include <algorithm>

#include "relay/Payloads.h"

namespace vmr::relay {

namespace {
using Kind = MarketChannel::Kind;

constexpr std::size_t tradesPerFrame = 2000;     // a jump of hours would otherwise make one huge message
constexpr std::int64_t longestGapMs = 86400000;  // trades of a longer jump would take seconds to make
constexpr std::size_t minuteSnapshotBars = 2;

payload::BarsShape historyShape(Family family) {
    if (family == Family::futures) return payload::BarsShape::candles;
    return family == Family::stocks ? payload::BarsShape::list : payload::BarsShape::keyed;
}

payload::BarShape eventShape(Family family) {
    if (family == Family::futures) return payload::BarShape::minute;
    return family == Family::stocks ? payload::BarShape::bareMs : payload::BarShape::bareSeconds;
}
}  // namespace

/// Turns what a feed passes into messages on every contract's channels.
class MarketPublisher::Announcer final : public FeedListener {
 public:
    Announcer(ChannelHub& hub, Symbol& one) : hub_(hub), one_(one) {}

    // The quote that a trade leaves behind goes out before it: who works orders on the trade then knows the touch of
    // that moment. So a message ends where the quote changes.
    void onTrades(std::span<const Trade> trades) override {
        const bool quoted = wanted(":quote");
        while (!trades.empty()) {
            const std::size_t count = quoted ? sameQuote(trades) : trades.size();
            const auto some = trades.first(std::min(tradesPerFrame, count));
            if (quoted) publishQuote(some.front());
            events_.clear();
            for (const Trade& trade : some) {
                if (!events_.empty()) events_ += ',';
                payload::appendTrade(events_, trade);
            }
            each(":trades", [this](const std::string& channel) { return payload::batch(channel, events_); });
            trades = trades.subspan(some.size());
        }
    }

    void publishQuote(const Trade& trade) {
        std::string quote = payload::quote(trade);
        if (quote == one_.lastQuote) return;
        one_.lastQuote = std::move(quote);
        each(":quote", [this](const std::string& channel) { return payload::event(channel, one_.lastQuote); });
    }

    void onClosedBar(const Candle& bar) override {
        const std::string text = payload::bar(bar, eventShape(one_.instrument.family));
        each(":1m", [&](const std::string& channel) { return payload::event(channel, text); });
    }

    bool wanted(const char* ending) const {
        return std::any_of(one_.channels.begin(), one_.channels.end(),
                           [&](const auto& entry) { return hub_.wanted(entry.first + ending); });
    }

    template <class F>
    void each(const char* ending, F message) {
        for (const auto& entry : one_.channels) {
            const std::string channel = entry.first + ending;
            if (hub_.wanted(channel)) hub_.publish(channel, Frame(message(channel)));
        }
    }

 private:
    static std::size_t sameQuote(std::span<const Trade> trades) {
        const Trade& first = trades.front();
        const auto other = std::find_if(trades.begin(), trades.end(), [&first](const Trade& trade) {
            return trade.bid != first.bid || trade.ask != first.ask;
        });
        return static_cast<std::size_t>(other - trades.begin());
    }

    ChannelHub& hub_;
    Symbol& one_;
    std::string events_;
};

MarketPublisher::MarketPublisher(ChannelHub& hub, std::uint64_t seed, Rush rush, const Instrument* tapeInstrument,
                                 std::unique_ptr<TradeSource> tape)
    : hub_(hub), simulated_(seed, calendar_, rush) {
    if (tape) symbols_.try_emplace(tapeInstrument, *tapeInstrument, std::move(tape));
}

MarketPublisher::Symbol& MarketPublisher::symbol(const Instrument& instrument) {
    const auto found = symbols_.find(&instrument);
    if (found != symbols_.end()) return found->second;
    return symbols_.try_emplace(&instrument, instrument, simulated_.source(instrument)).first->second;
}

bool MarketPublisher::serves(const std::string& channel) const { return marketChannel(channel).has_value(); }

int MarketPublisher::order(const std::string& channel) const { return static_cast<int>(marketChannel(channel)->kind); }

void MarketPublisher::opened(const std::string& channel, std::int64_t nowMs) {
    const auto name = marketChannel(channel);
    Symbol& one = symbol(*name->instrument);
    if (!one.feed) one.feed.emplace(*one.source, nowMs);
    ++one.channels[name->base];
}

void MarketPublisher::closed(const std::string& channel) {
    const auto name = marketChannel(channel);
    Symbol& one = symbol(*name->instrument);
    if (--one.channels[name->base] == 0) one.channels.erase(name->base);
    if (one.channels.empty()) one.feed.reset();
}

std::optional<std::string> MarketPublisher::snapshot(const std::string& channel) {
    const auto name = marketChannel(channel);
    Symbol& one = symbol(*name->instrument);
    if (!one.feed || name->kind == Kind::trades) return std::nullopt;
    std::vector<Candle> bars = one.book.upTo(one.feed->nowMs());
    if (name->kind == Kind::quote) {
        if (!one.feed->last() && bars.empty()) return std::nullopt;
        const double close = bars.empty() ? 0 : bars.back().close;
        const Trade resting{0, close, 0, close, besidePrice(close, one.instrument.tick())};
        return payload::snapshot(channel, payload::quote(one.feed->last().value_or(resting)));
    }
    if (name->kind == Kind::history)
        return payload::snapshot(channel, payload::bars(bars, historyShape(one.instrument.family)));
    if (bars.size() > minuteSnapshotBars) bars.erase(bars.begin(), bars.end() - minuteSnapshotBars);
    return payload::snapshot(channel, payload::bars(bars, payload::BarsShape::candles));
}

void MarketPublisher::tick(std::int64_t nowMs) {
    for (auto& [instrument, one] : symbols_) {
        if (!one.feed) continue;
        if (nowMs - one.feed->nowMs() > longestGapMs) {
            one.feed.emplace(*one.source, nowMs);
            resend(one);
        } else {
            Announcer announcer(hub_, one);
            one.feed->advance(nowMs, announcer);
        }
        if (one.instrument.family == Family::futures && one.feed->last())
            Announcer(hub_, one).publishQuote(*one.feed->last());
    }
}

void MarketPublisher::wentBack(std::int64_t /*nowMs*/) {
    for (auto& entry : symbols_) entry.second.lastQuote.clear();
}

void MarketPublisher::resend(Symbol& one) {
    for (const auto& entry : one.channels) {
        for (const char* ending : {"", ":1m"}) {
            const std::string channel = entry.first + ending;
            if (!hub_.wanted(channel)) continue;
            if (auto text = snapshot(channel)) hub_.publish(channel, Frame(std::move(*text)));
        }
    }
}

std::vector<Candle> MarketPublisher::ledger(const Instrument& instrument, std::int64_t nowMs) {
    Symbol& one = symbol(instrument);
    return one.book.upTo(one.feed ? one.feed->nowMs() : nowMs);
}

}  // namespace vmr::relay
