#include <gtest/gtest.h>

#include <cmath>

#include "base/Json.h"
#include "market/CandleParser.h"
#include "market/ClockSetting.h"
#include "relay/DerivedBench.h"
#include "relay/FrontMonth.h"
#include "relay/MarketPublisher.h"
#include "relay/MarketTime.h"
#include "relay/MetaPublisher.h"

namespace vmr::relay {
namespace {

using test::Inbox;
using test::json;
using Names = std::vector<std::string>;

std::int64_t ms(const std::string& moment) { return static_cast<std::int64_t>(*parseMoment(moment) * 1000); }

TEST(MarketChannel, IsNamedAfterAnInstrumentAndWhatItOffers) {
    for (const char* good :
         {"futures:NQM6", "futures:RTYF2026:1m", "futures:CLZ26:trades", "futures:GCV6:quote", "stocks:TSLA",
          "stocks:META:1m", "stocks:NVDA:trades", "indices:I:VIX", "indices:I:VIX1D:1m"}) {
        const auto channel = marketChannel(good);
        ASSERT_TRUE(channel) << good;
        EXPECT_TRUE(std::string(good).starts_with(channel->base)) << good;
        EXPECT_NE(channel->base.find(channel->instrument->symbol), std::string::npos) << good;
    }
    for (const char* bad : {"futures:NQ", "futures:NQA6", "futures:NQM", "futures:NQM20265", "futures:M6",
                            "futures:AAPLM6", "stocks:NQ", "stocks:AAPL:quote", "indices:I:VIX:trades",
                            "indices:I:VIX1D:quote", "indices:VIX", "futures:NQM6:2m", "bonds:ZBM6", ""})
        EXPECT_FALSE(marketChannel(bad)) << bad;
}

struct MarketBench {
    explicit MarketBench(Rush rush = {}) : expected(1, calendar, rush) {
        auto made = std::make_unique<MarketPublisher>(hub, 1, rush, nullptr, nullptr);
        market = made.get();
        hub.add(std::move(made));
    }
    /// What the trades of (from, to] look like in messages.
    std::vector<json> trades(const char* symbol, std::int64_t from, std::int64_t to) {
        const auto source = expected.source(*findTradable(symbol));
        std::vector<json> list;
        std::vector<Trade> minute;
        for (std::int64_t t = from / 60000 * 60; t * 1000 <= to; t += 60) {
            source->minuteTrades(t, minute);
            for (const Trade& one : minute)
                if (one.timeMs > from && one.timeMs <= to)
                    list.push_back({{"price", one.price}, {"size", one.size}, {"ts", one.timeMs}});
        }
        return list;
    }
    static std::vector<json> eventsOf(const Inbox& inbox, const std::string& channel) {
        std::vector<json> list;
        for (const json& message : inbox.of(channel, "batch"))
            list.insert(list.end(), message["events"].begin(), message["events"].end());
        return list;
    }
    std::vector<Candle> ledger(const char* symbol, std::int64_t now) {
        return market->ledger(*findTradable(symbol), now);
    }
    SessionCalendar calendar;
    SimulatedMarket expected;
    ChannelHub hub;
    MarketPublisher* market;
};

TEST(MarketChannel, EveryContractAndSymbolGetsItsTradesQuotesAndBars) {
    MarketBench bench;
    Inbox one, two;
    const std::int64_t to = ms("2026-06-10T10:02:05"), from = bench.trades("ES", ms("2026-06-10T10:00:20"),
                                                                           to)[0]["ts"];  // who joins at a trade has it
    bench.hub.subscribe(one, {"futures:ESM6:trades", "futures:ESM6:quote"}, from);
    bench.hub.subscribe(
        two, {"futures:ESZ6:trades", "futures:ESZ6:quote", "stocks:TSLA:trades", "stocks:TSLA:1m", "indices:I:VIX:1m"},
        from);
    for (std::int64_t now = from; now <= to; now += 700) {
        bench.hub.tick(now);
        bench.hub.tick(now);
    }
    bench.hub.tick(to);
    EXPECT_EQ(MarketBench::eventsOf(one, "futures:ESM6:trades"), bench.trades("ES", from, to));
    EXPECT_EQ(MarketBench::eventsOf(two, "futures:ESZ6:trades"), bench.trades("ES", from, to));
    EXPECT_EQ(MarketBench::eventsOf(two, "stocks:TSLA:trades"), bench.trades("TSLA", from, to));

    auto quotes = one.of("futures:ESM6:quote", "event");
    const auto others = two.of("futures:ESZ6:quote", "event");
    quotes.erase(quotes.begin());  // sent when the other one joined
    ASSERT_GE(quotes.size(), 20u);
    ASSERT_EQ(quotes.size(), others.size());
    for (std::size_t i = 1; i < quotes.size(); ++i) {
        EXPECT_NE(quotes[i]["payload"], quotes[i - 1]["payload"]) << "only a quote that has changed is sent";
        EXPECT_EQ(quotes[i]["payload"], others[i]["payload"]);
    }
    const double price = bench.trades("ES", from, to).back()["price"];
    EXPECT_TRUE(quotes.back()["payload"]["bid"] == price || quotes.back()["payload"]["ask"] == price);

    const auto bars = two.of("stocks:TSLA:1m", "event"), indices = two.of("indices:I:VIX:1m", "event");
    ASSERT_EQ(bars.size(), 2u);
    ASSERT_EQ(indices.size(), 2u);
    const auto ledger = bench.ledger("TSLA", to);
    const Candle& closed = ledger[ledger.size() - 2];
    EXPECT_EQ(bars[1]["payload"]["ts"], closed.time * 1000);
    EXPECT_EQ(bars[1]["payload"]["v"], closed.volume);
    EXPECT_EQ(indices[1]["payload"]["time"], closed.time);
    EXPECT_TRUE(indices[1]["payload"]["close"].is_number());

    bench.hub.leave(one);
    bench.hub.unsubscribe(two, {"futures:ESZ6:quote"});
    bench.hub.tick(to + 30000);
    EXPECT_EQ(MarketBench::eventsOf(two, "futures:ESZ6:trades"), bench.trades("ES", from, to + 30000))
        << "a channel of the root still has a listener";
    bench.hub.leave(two);
    EXPECT_EQ(bench.ledger("ES", to + 600000).back().time * 1000, minuteOf(to + 600000) * 1000);
}

TEST(MarketChannel, RestsWhenTheMarketCloses) {
    MarketBench bench;
    Inbox before, during;
    bench.hub.subscribe(before, {"futures:GCM6:trades", "futures:GCM6:1m", "stocks:AAPL:trades"},
                        ms("2026-06-12T16:58:30"));
    bench.hub.tick(ms("2026-06-12T16:59:59.5"));
    bench.hub.tick(ms("2026-06-12T17:00:00"));
    const auto bars = before.of("futures:GCM6:1m", "event");
    ASSERT_EQ(bars.size(), 2u);
    EXPECT_EQ(bars[1]["payload"]["minuteTs"], ms("2026-06-12T16:59") / 1000);
    EXPECT_TRUE(before.of("stocks:AAPL:trades").empty());

    const Candle last = bench.ledger("GC", 0).back();
    bench.hub.leave(before);
    bench.hub.subscribe(during, {"futures:GCM6:quote", "futures:GCM6:1m", "futures:GCM6:trades"},
                        ms("2026-06-13T12:00"));
    ASSERT_EQ(during.messages.size(), 2u);
    EXPECT_EQ(during.of("futures:GCM6:quote")[0]["data"], (json{{"bid", last.close}, {"ask", last.close + 0.1}}));
    EXPECT_EQ(during.of("futures:GCM6:1m")[0]["data"]["candles"].size(), 2u);
    bench.hub.tick(ms("2026-06-14T11:00"));
    bench.hub.tick(ms("2026-06-14T17:59:59"));
    EXPECT_EQ(during.messages.size(), 2u) << "a weekend passes in silence";
    bench.hub.tick(ms("2026-06-14T18:01:00"));
    EXPECT_GE(MarketBench::eventsOf(during, "futures:GCM6:trades").front()["ts"], ms("2026-06-14T18:00"));
    EXPECT_EQ(during.of("futures:GCM6:1m", "event").size(), 1u);
    EXPECT_FALSE(during.of("futures:GCM6:quote", "event").empty());
}

TEST(MarketChannel, AfterMoreThanADayThereAreSnapshotsInPlaceOfTrades) {
    MarketBench bench;
    Inbox inbox;
    const std::int64_t from = ms("2026-06-09T10:00:20"), day = 86400000;
    const Names channels{"futures:ESM6", "futures:ESM6:1m", "futures:ESM6:trades", "futures:ESU6:1m", "stocks:MSFT:1m"};
    bench.hub.subscribe(inbox, channels, from);
    inbox.messages.clear();
    bench.hub.tick(from + day);
    EXPECT_EQ(MarketBench::eventsOf(inbox, "futures:ESM6:trades"), bench.trades("ES", from, from + day));
    for (const std::string& channel : channels) EXPECT_TRUE(inbox.of(channel, "snapshot").empty()) << channel;
    inbox.messages.clear();
    bench.hub.tick(from + 2 * day + 1);
    for (const std::string& channel : channels) {
        const bool trades = channel.ends_with(":trades");
        ASSERT_EQ(inbox.of(channel).size(), trades ? 0u : 1u) << channel;
        if (trades) continue;
        const auto bars = CandleParser::parse(*Json::parse(inbox.of(channel, "snapshot")[0]["data"].dump()));
        EXPECT_EQ(bars.back(), bench.ledger(channel[0] == 'f' ? "ES" : "MSFT", 0).back()) << channel;
    }
    inbox.messages.clear();
    bench.hub.tick(from + 2 * day + 5001);
    EXPECT_EQ(MarketBench::eventsOf(inbox, "futures:ESM6:trades"),
              bench.trades("ES", from + 2 * day + 1, from + 2 * day + 5001));
}

TEST(MarketChannel, ABusyMarketHasMoreTradesOnTheSamePathFromItsMinuteOn) {
    const std::int64_t from = ms("2026-06-10T10:00");
    MarketBench quiet, busy(Rush{100, from / 1000});
    EXPECT_EQ(busy.trades("ES", from - 600000, from - 1), quiet.trades("ES", from - 600000, from - 1));
    const auto few = quiet.trades("ES", from, from + 599999), many = busy.trades("ES", from, from + 599999);
    const auto volume = [](const std::vector<json>& trades) {
        double sum = 0;
        for (const json& one : trades) sum += one["size"].get<double>();
        return sum;
    };
    EXPECT_NEAR(static_cast<double>(many.size()) / static_cast<double>(few.size()), 100, 15);
    EXPECT_NEAR(volume(many) / volume(few), 100, 25);
    EXPECT_NEAR(many.back()["price"], few.back()["price"].get<double>(), 2);

    Inbox inbox;
    busy.hub.subscribe(inbox, {"futures:ESM6:trades"}, from);
    busy.hub.tick(from + 180000);
    EXPECT_EQ(MarketBench::eventsOf(inbox, "futures:ESM6:trades"), busy.trades("ES", from, from + 180000));
    for (const json& message : inbox.messages) EXPECT_LE(message["events"].size(), 2000u);
}

TEST(FrontMonth, RollsOnItsDay) {
    for (const auto& [date, contracts] : {std::pair("2026-06-10", "NQM6 ESM6 RTYM6 YMM6 GCQ6 CLN6"),
                                          {"2026-06-11", "NQU6 ESU6 RTYU6 YMU6 GCQ6 CLN6"},
                                          {"2026-06-18", "NQU6 ESU6 RTYU6 YMU6 GCQ6 CLN6"},
                                          {"2026-06-19", "NQU6 ESU6 RTYU6 YMU6 GCQ6 CLQ6"},
                                          {"2026-07-26", "NQU6 ESU6 RTYU6 YMU6 GCQ6 CLU6"},
                                          {"2026-07-27", "NQU6 ESU6 RTYU6 YMU6 GCV6 CLU6"},
                                          {"2026-12-09", "NQZ6 ESZ6 RTYZ6 YMZ6 GCG7 CLF7"},
                                          {"2026-12-10", "NQH7 ESH7 RTYH7 YMH7 GCG7 CLF7"},
                                          {"2029-12-27", "NQH0 ESH0 RTYH0 YMH0 GCG0 CLG0"}}) {
        std::string all;
        for (const char* root : {"NQ", "ES", "RTY", "YM", "GC", "CL"})
            all += (all.empty() ? "" : " ") + frontContract(root, SessionCalendar().date(ms(date) / 1000));
        EXPECT_EQ(all, contracts) << date;
    }
    EXPECT_EQ(frontContract("AAPL", 20000), "");
}

TEST(MetaChannels, ContractsAreSentAgainWhenOneChanges) {
    ChannelHub hub;
    auto made = std::make_unique<MetaPublisher>(hub);
    MetaPublisher& meta = *made;
    hub.add(std::move(made));
    Inbox inbox;
    hub.subscribe(inbox, {"meta:contracts"}, ms("2026-06-10T23:59:59.9"));
    EXPECT_EQ(inbox.messages[0]["data"]["map"]["NQ"], "NQM6");
    const auto changed = [&](const std::function<void()>& change) {
        inbox.messages.clear();
        change();
        return inbox.messages.empty() ? json() : inbox.messages.back()["payload"]["map"];
    };
    json map = changed([&] { hub.tick(ms("2026-06-11T00:00")); });
    EXPECT_EQ(map["NQ"], "NQU6") << "at midnight in New York";
    EXPECT_EQ(map["CL"], "CLN6");
    EXPECT_EQ(map.size(), 6u);
    EXPECT_TRUE(changed([&] { hub.tick(ms("2026-06-18T12:00")); }).is_null()) << "no contract rolls on this day";
    map = changed([&] { meta.setContract("NQ", "NQH7"); });
    EXPECT_EQ(map["NQ"], "NQH7");
    EXPECT_EQ(map["ES"], "ESU6");
    EXPECT_TRUE(changed([&] { meta.setContract("NQ", "NQH7"); }).is_null());
    map = changed([&] { hub.tick(ms("2026-06-19T00:00")); });
    EXPECT_EQ(map["CL"], "CLQ6");
    EXPECT_EQ(map["NQ"], "NQH7") << "a contract set by hand stays";
    EXPECT_EQ(changed([&] { meta.setContract("NQ", ""); })["NQ"], "NQU6");
}

TEST(MetaChannels, TheCatalogHoldsEveryRootAndStock) {
    ChannelHub hub;
    const json catalog = json::parse(*MetaPublisher(hub).snapshot("meta:instruments"))["data"]["catalog"];
    EXPECT_EQ(catalog["futures"].size(), 6u);
    for (const json& one : catalog["futures"]) {
        EXPECT_EQ(one["tick"], findTradable(one["sym"].get<std::string>())->tick());
        for (const json& source : one["sources"])
            EXPECT_EQ(findOptionSource(source.get<std::string>())->symbol, one["sym"]);
    }
    EXPECT_EQ(catalog["futures"][1]["pair"], "NQ");
    EXPECT_EQ(catalog["stocks"].size(), 7u);
}

}  // namespace
}  // namespace vmr::relay
