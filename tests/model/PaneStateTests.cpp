// The tables and settings of a pane, and its state document.
#include <cmath>

#include "market/Roots.h"
#include "model/SimTrading.h"
#include "sim/SimEngine.h"
#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

using PaneStates = PaneFixture;

TEST_F(PaneStates, TheCatalogReplacesTheBuiltInTables) {
    openSymbol("NQ");
    event("meta:instruments", R"({"catalog":{"futures":[
        {"sym":"SI","sources":["SLV","SIX","XAG"],"defaultSource":"XAG","pair":"GC","tick":"0.005","tickValue":25,"hfScale":3},
        {"sym":"NQ","sources":["QQQ"]}, {"sym":"ES","pair":7,"tick":"x","sources":"SPY"}, {"sym":5}, 7],
        "stocks":[{"sym":"NFLX","hfScale":"0.5"},{"sym":"A\u001bMD"},{"sym":""},"IBM"]}})");
    event("meta:instruments", R"({"catalog":{"futures":[{"sym":1}],"stocks":[]}})");  // empty lists change nothing
    EXPECT_THAT(model->catalog.catFutures.get(),
                ElementsAre(CatalogFut{"SI", {"SLV", "SIX", "XAG"}, "XAG", "GC", 0.005, 25, 3},
                            CatalogFut{"NQ", {"QQQ"}, "QQQ", std::nullopt, 0.25, 5, 1},
                            CatalogFut{"ES", {}, "ES", std::nullopt, 0.25, 5, 1}));
    EXPECT_EQ(model->catalog.stockList().at(1), "A\\x1bMD") << "menus show no control characters";
    EXPECT_EQ(model->catalog.indexSourceFor("SI"), "SIX") << "the second of its sources";
    EXPECT_EQ(model->catalog.pairFor("NQ"), std::nullopt) << "the catalog's entry has no pair";
    const std::pair<const char*, const char*> charts[] = {{"SI", "futures:SI derived:XAG"},
                                                          {"AAPL", "futures:SI derived:XAG"},  // no stock any more
                                                          {"NFLX", "stocks:NFLX derived:NFLX"}};
    for (const auto& [symbol, chart] : charts) {
        model->switchSymbol(symbol);
        EXPECT_EQ(model->channels->chartChannel + " " + model->channels->levelsChannel, chart);
    }
    EXPECT_EQ(model->channels->hfScale, 0.5) << "the catalog's";
}

TEST(FuturesRoot, CutsMonthAndYear) {
    const std::pair<const char*, const char*> roots[] = {
        {"futures:NQM6", "NQ"},  {"futures:NQM26", "NQ"},  {"futures:NQM2026", "NQ"}, {"futures:RTYZ25", "RTY"},
        {"futures:NQ", "NQ"},    {"futures:NQM20261", ""}, {"futures:NQA6", ""},      {"futures:SIN6", ""},
        {"futures:NQM6:1m", ""}, {"stocks:NQ", ""},        {"futures:NQM", ""},       {"futures:", ""}};
    for (const auto& [channel, root] : roots) EXPECT_EQ(futuresRoot(channel), root) << channel;
}

TEST_F(PaneStates, TellsTheAccountQuotesAndOnlySettingsThatDiffer) {
    SimEngine engine({time, session, UuidSource(5)});
    engine.commission = 3;
    sim = &engine;
    openSymbol("NQ");
    EXPECT_EQ(engine.commission, 2.5) << "the settings', not the account's";
    engine.commission = 3;
    model->setConfig(model->config);
    EXPECT_EQ(engine.commission, 3) << "nothing differs";
    event("meta:contracts", R"({"map":{"NQ":"NQM6"}})");
    event("futures:NQM6:quote", R"({"bid":99,"ask":101})");
    for (const char* odd : {R"({"bid":"nan","ask":1})", R"({"bid":1,"ask":"inf"})", R"({"bid":"-inf","ask":1})"})
        event("futures:NQM6:quote", odd);
    engine.place("NQ", sim::Side::buy, sim::OrderType::market, 1);
    EXPECT_EQ(engine.fills().front().price, 101);
    GexConfig changed = model->config;
    changed.sessionStart = 930;
    model->setConfig(changed);
    EXPECT_EQ(engine.commission, changed.simCommission);
    EXPECT_EQ(AppModel(surroundings()).config.get(), changed) << "a later pane reads it";

    SimTrading trading(engine);
    TradingLines lines;
    trading.lines("NQ", lines);
    ASSERT_TRUE(lines.position);
    EXPECT_EQ(lines.position->contract + " " + lines.contract, " NQM6");
    EXPECT_EQ(std::pair(lines.tick, lines.tickValue), std::pair(0.25, 5.0));
    event("meta:contracts", R"({"map":{"NQ":"NQU6"}})");
    trading.lines("NQ", lines);
    EXPECT_EQ(lines.position->contract + " " + lines.contract, "NQM6 NQU6") << "the older one is told";
    model.reset();  // it must not outlive the account
}

TEST_F(PaneStates, TheChartTradesWhileTheSimulatorIsOn) {
    StillChart chart;
    openSymbol("ES");
    model->setChartPort(&chart);
    for (const bool on : {false, true, false}) {
        chart.told = 0;
        GexConfig config = model->config;
        const bool differs = config.simEnabled != on;
        config.simEnabled = on;
        model->setConfig(config);
        EXPECT_EQ(model->chartContent().simRoot, on ? "ES" : "");
        EXPECT_EQ(chart.told > 0, differs);
    }
    model->setChartPort(nullptr);
}

struct WrittenChart final : StillChart {
    std::optional<TradingFacts> tradingFacts() const override {
        TradingFacts out{"NQ", {}, EntryPill{{1, 2, 3, 18}, TradingTexts::result(-12, 5)}};
        out.lines.push_back({.id = "7/SL", .kind = "leg", .text = "SL 9.00", .dragged = true, .tag = {4, 5, 74, 18}});
        return out;
    }
    std::optional<OverlayFacts> overlayFacts() const override {
        return OverlayFacts{.pills = {{"HF 7", {1, 2, 3, 4}, {0, 0.5F, 1, 0.25F}}},
                            .labels = {{"R1 2.00", {5, 6, 7, 8}, {}}},
                            .strikes = {{"600", {9, 8, 7, 6}, {}}},
                            .prices = {{"21.00", 9}},
                            .times = {{"09:30", 10}, {"Jun 11", 11}},
                            .watermark = {"NQ 1m", "Velmora"},
                            .marked = OverlayFacts::Tick{"Strike 600", 12}};
    }
};

TEST_F(PaneStates, TheDocumentHoldsEveryPaneUnderItsNamesAndTheClock) {
    openSymbol("NQ");
    WrittenChart chart;
    model->setChartPort(&chart);
    model->log.append("quote \" and \xff and \n");
    model->bars.candles = {{minute, std::nan(""), HUGE_VAL, -HUGE_VAL, 0.1, 1e-310}, {INT64_MAX, 1, 2, 3, 4, 5}};
    AppModel other(surroundings());
    const auto document = Json::parse(stateDocument({time, {model.get(), &other}}));
    EXPECT_EQ((*document)["clock"].number(), wednesdayAt10);
    ASSERT_EQ((*document)["panes"].size(), 2u);
    const JsonView pane = *(*document)["panes"].items().begin();
    EXPECT_EQ(pane["authError"].kind(), JsonView::Kind::null);
    EXPECT_EQ(pane["logLines"].text(), "[\"quote \\\" and \xEF\xBF\xBD and \\\\n\"]");
    EXPECT_EQ(pane["candles"].text(),
              "[[1781100000,null,null,null,0.1,1e-310],[9223372036854775807,1.0,2.0,3.0,4.0,5.0]]");
    EXPECT_EQ(pane["config"].size(), 60u);
    EXPECT_TRUE(
        std::string(pane["overlay"].text())
            .starts_with(
                R"({"pills":[{"text":"HF 7","box":[1.0,2.0,3.0,4.0],"color":[0.0,0.5,1.0,0.25]}],)"
                R"("labels":[{"text":"R1 2.00","box":[5.0,6.0,7.0,8.0]}],)"
                R"("strikes":[{"text":"600","box":[9.0,8.0,7.0,6.0]}],"ticks":{"prices":[{"text":"21.00","at":9.0}],)"
                R"("times":[{"text":"09:30","at":10.0},{"text":"Jun 11","at":11.0}]},"watermark":["NQ 1m","Velmora"],)"
                R"("marked":{"text":"Strike 600","at":12.0},)"))
        << pane["overlay"].text();
    EXPECT_EQ(pane["trading"]["pill"].text(), R"({"text":"-10.00","gain":false,"box":[1.0,2.0,3.0,18.0]})");
    EXPECT_EQ(pane["trading"]["drag"].text(), R"("SL 9.00")");
    const JsonView line = *pane["trading"]["lines"].items().begin();
    EXPECT_EQ(std::string(line["badge"].text()) + std::string(line["tag"].text()), "null[4.0,5.0,74.0,18.0]");
    EXPECT_EQ((*std::next((*document)["panes"].items().begin()))["overlay"]["pills"].kind(), JsonView::Kind::missing)
        << "without a chart nothing is written on it";
    model->setChartPort(nullptr);
}

TEST_F(PaneStates, TheDocumentTellsTheTextsOverTheChart) {
    openSymbol("NQ");
    const auto texts = [&] {
        const auto document = Json::parse(stateDocument({time, {model.get()}}));
        const JsonView overlay = (*(*document)["panes"].items().begin())["overlay"];
        std::string out(overlay["hud"].string());
        for (const char* key : {"countdown", "clock", "practice"})
            (out += "|") += overlay[key].isString() ? overlay[key].string() : "null";
        return out;
    };
    EXPECT_TRUE(texts().ends_with("|null|null|null")) << "without bars";
    snapshot(model->channels->chartChannel, flatBars(minute - 600, 11));
    model->options.hud = HudMetrics{1500, 2, 3, -4, -5};
    const std::string options = "    OI C 1.5K  P 2    GEX C 3  P -4    HF -5    VOL 1";
    const std::string bar = "O 100.00  H 100.00  L 100.00  C ";
    model->applyTrade(101, (minute + 1) * 1000.0);
    time.advance(0.1);
    EXPECT_EQ(texts(),
              bar.substr(0, 10) + "H 101.00  L 100.00  C 101.00  +1.00 (+1.00%)" + options + "|1:00|NY 10:00|null");
    model->pointerOver(ChartSpot{minute - 60.0, 100});
    EXPECT_TRUE(texts().starts_with(bar + "100.00  +0.00")) << "of the bar under the pointer";
    GexConfig changed = model->config;
    changed.showCountdown = false;
    model->setConfig(changed);
    EXPECT_TRUE(texts().ends_with("|null|NY 10:00|null"));
    changed.showCountdown = true;
    changed.showNyClock = false;
    model->setConfig(changed);
    time.setNow(minute + 8 * 3600.0);  // stocks rest, futures trade; at 17:30 neither does
    EXPECT_TRUE(texts().ends_with("|1:00|null|null"));
    time.setNow(minute + 7.5 * 3600);
    EXPECT_TRUE(texts().ends_with("|closed|null|null"));
    model->signOut();
    EXPECT_TRUE(texts().ends_with("|null|null|null"));
}

}  // namespace
}  // namespace vmr::test
