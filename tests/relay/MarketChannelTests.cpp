#include <gtest/gtest.h>

#include "relay/DerivedBench.h"
#include "relay/FrontMonth.h"
#include "relay/MarketPublisher.h"
#include "relay/MetaPublisher.h"

namespace vmr::relay {
namespace {

using test::Inbox;
using test::json;
using test::msOf;
using Names = std::vector<std::string>;

TEST(MarketChannel, IsNamedAfterAnInstrumentAndWhatItOffers) {
    for (const auto& [name, base] : {std::pair("futures:RTYF2026:1m", "futures:RTYF2026"),
                                     {"futures:GCV6:quote", "futures:GCV6"},
                                     {"stocks:NVDA:trades", "stocks:NVDA"},
                                     {"indices:I:VIX1D:1m", "indices:I:VIX1D"}})
        EXPECT_EQ(marketChannel(name).value().base, base);
    for (const char* bad : {"futures:NQ", "futures:NQA6", "futures:NQM20265", "futures:AAPLM6", "stocks:NQ",
                            "stocks:AAPL:quote", "indices:I:VIX:trades", "futures:NQM6:2m", "bonds:ZBM6", ""})
        EXPECT_FALSE(marketChannel(bad)) << bad;
}

struct MarketBench {
    MarketBench() {
        auto made = std::make_unique<MarketPublisher>(hub, 1, Rush{}, nullptr, nullptr);
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
    SimulatedMarket expected{1, calendar};
    ChannelHub hub;
    MarketPublisher* market;
};

TEST(MarketChannel, EveryContractAndSymbolGetsItsTradesQuotesAndBars) {
    MarketBench bench;
    Inbox one, two;
    const std::int64_t to = msOf("2026-06-10T10:02:05"),
                       from = bench.trades("ES", msOf("2026-06-10T10:00:20"),
                                           to)[0]["ts"];  // who joins at a trade has it
    bench.hub.subscribe(one, {"futures:ESM6:trades", "futures:ESM6:quote"}, from);
    bench.hub.subscribe(two, {"futures:ESZ6:trades", "stocks:TSLA:trades", "stocks:TSLA:1m"}, from);
    bench.hub.subscribe(two, {"futures:ESM6:trades"}, from);
    bench.hub.unsubscribe(two, {"futures:ESM6:trades"});  // the other goes on
    for (std::int64_t now = from; now <= to; now += 700) {
        bench.hub.tick(now);
        bench.hub.tick(now);
    }
    bench.hub.tick(to);
    EXPECT_EQ(MarketBench::eventsOf(one, "futures:ESM6:trades"), bench.trades("ES", from, to));
    EXPECT_EQ(MarketBench::eventsOf(two, "futures:ESZ6:trades"), bench.trades("ES", from, to));
    EXPECT_EQ(MarketBench::eventsOf(two, "stocks:TSLA:trades"), bench.trades("TSLA", from, to));

    const auto quotes = one.of("futures:ESM6:quote", "event");
    ASSERT_GE(quotes.size(), 20u);
    for (std::size_t i = 1; i < quotes.size(); ++i)
        EXPECT_NE(quotes[i]["payload"], quotes[i - 1]["payload"]) << "only a quote that has changed is sent";
    const auto bars = two.of("stocks:TSLA:1m", "event");
    ASSERT_EQ(bars.size(), 2u);
    const auto ledger = bench.ledger("TSLA", to);
    const Candle& closed = ledger[ledger.size() - 2];
    EXPECT_EQ(bars[1]["payload"]["ts"], closed.time * 1000);
    EXPECT_EQ(bars[1]["payload"]["v"], closed.volume);
}

TEST(ChannelHub, ASubscriberHoldsSoManyChannelsAndOneAgainIsNoMore) {
    MarketBench bench;
    Inbox inbox;
    Names names;
    for (std::size_t i = 0; i <= ChannelHub::mostChannels; ++i)
        names.push_back("futures:NQM" + std::to_string(2000 + i) + ":quote");
    const std::int64_t now = msOf("2026-06-10T10:00");
    EXPECT_EQ(bench.hub.subscribe(inbox, Names(names.begin(), names.end() - 2), now), Names{});
    EXPECT_EQ(bench.hub.subscribe(inbox, names, now), Names{names.back()});
}

TEST(FrontMonth, RollsOnItsDay) {
    for (const auto& [date, contracts] : {std::pair("2026-06-10", "NQM6 GCQ6 CLN6"),
                                          {"2026-06-11", "NQU6 GCQ6 CLN6"},
                                          {"2026-07-26", "NQU6 GCQ6 CLU6"},
                                          {"2026-07-27", "NQU6 GCV6 CLU6"},
                                          {"2029-12-27", "NQH0 GCG0 CLG0"}}) {
        const auto day = SessionCalendar().date(msOf(date) / 1000);
        EXPECT_EQ(frontContract("NQ", day) + " " + frontContract("GC", day) + " " + frontContract("CL", day),
                  contracts);
    }
}

TEST(MetaChannels, ContractsAreSentAgainWhenOneChanges) {
    ChannelHub hub;
    auto made = std::make_unique<MetaPublisher>(hub);
    MetaPublisher& meta = *made;
    hub.add(std::move(made));
    Inbox inbox;
    hub.subscribe(inbox, {"meta:contracts"}, msOf("2026-06-10T23:59:59.9"));
    EXPECT_EQ(inbox.messages[0]["data"]["map"]["NQ"], "NQM6");
    hub.tick(msOf("2026-06-11T00:00"));
    hub.tick(msOf("2026-06-18T12:00"));
    meta.setContract("NQ", "NQH7");
    meta.setContract("NQ", "NQH7");
    hub.tick(msOf("2026-06-19T00:00"));
    meta.setContract("NQ", "");
    std::vector<std::string> told;
    for (const json& one : inbox.of("meta:contracts", "event")) {
        const json& map = one["payload"]["map"];
        told.push_back(map["NQ"].get<std::string>() + " " + map["CL"].get<std::string>());
    }
    EXPECT_EQ(told, (Names{"NQU6 CLN6", "NQH7 CLN6", "NQH7 CLQ6", "NQU6 CLQ6"}))
        << "at midnight in New York; a contract set by hand stays";
}

}  // namespace
}  // namespace vmr::relay
