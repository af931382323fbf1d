// The channels of prices: history, minute bars, trades and quotes of every instrument.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "relay/BarBook.h"
#include "relay/ChannelHub.h"
#include "relay/ChannelName.h"
#include "relay/Feed.h"
#include "relay/SimulatedMarket.h"

namespace vmr::relay {

/// Every contract of a root shows the root's one market. A market runs only while somebody listens to it, and is where
/// it would have been. A quote goes out before the trade that leaves it behind. After a jump of the clock by more than
/// a day the listeners get new snapshots in place of a day's trades. History is shaped per family (list, `candles`,
/// keyed), and so are the minute events.
class MarketPublisher final : public Publisher {
 public:
    /// `tape`, if there is one, is the market of `tapeInstrument`; the others are simulated.
    MarketPublisher(ChannelHub& hub, std::uint64_t seed, Rush rush, const Instrument* tapeInstrument,
                    std::unique_ptr<TradeSource> tape);

    bool serves(const std::string& channel) const override;
    int order(const std::string& channel) const override;
    void opened(const std::string& channel, std::int64_t nowMs) override;
    void closed(const std::string& channel) override;
    std::optional<std::string> snapshot(const std::string& channel) override;
    void tick(std::int64_t nowMs) override;
    void wentBack(std::int64_t nowMs) override;

    /// The bars of an instrument up to what has been published, or up to `nowMs` while nobody listens.
    std::vector<Candle> ledger(const Instrument& instrument, std::int64_t nowMs);

    /// The trades of an instrument, which live as long as the publisher.
    TradeSource& trades(const Instrument& instrument) { return *symbol(instrument).source; }

 private:
    struct Symbol {
        Symbol(const Instrument& which, std::unique_ptr<TradeSource> from)
            : instrument(which), source(std::move(from)), book(*source) {}
        const Instrument& instrument;
        std::unique_ptr<TradeSource> source;
        BarBook book;
        std::optional<Feed> feed;             // while there are listeners
        std::map<std::string, int> channels;  // base name to how many of its channels have listeners
        std::string lastQuote;
    };
    class Announcer;

    Symbol& symbol(const Instrument& instrument);
    void resend(Symbol& one);

    ChannelHub& hub_;
    SessionCalendar calendar_;
    SimulatedMarket simulated_;
    std::map<const Instrument*, Symbol> symbols_;
};

}  // namespace vmr::relay
