// Opening a chart as those see it who listen to the pane.
#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

class PaneOpening : public PaneFixture {
 protected:
    // Every signal that a pane gives while a chart is opened.
    std::vector<Signal<>*> signals() {
        AppModel& m = *model;
        return {&m.config.changed,
                &m.session.connected.changed,
                &m.session.status.changed,
                &m.log.logChanged,
                &m.catalog.contractOverrides.changed,
                &m.channels.changed,
                &m.bars.displayCandles.changed,
                &m.bars.timeframe.changed,
                &m.bars.priceRising.changed,
                &m.bars.chartVersionChanged,
                &m.options.levels.changed,
                &m.options.strikes.changed,
                &m.options.secStrikes.changed,
                &m.options.etfRatio.changed,
                &m.options.gammaFlipStrike.changed,
                &m.options.hud.changed,
                &m.options.selectedExp.changed,
                &m.options.futureExps.changed,
                &m.markers.bubblePts.changed,
                &m.markers.trianglePts.changed,
                &m.oscillator.oscLines.changed,
                &m.sessionLevels.srLines.changed,
                &m.overlays.overlaysChanged,
                &m.hfp.changed,
                &m.surface.gex3D.changed};
    }
    std::uint64_t filled = 0;  // the chart that has data

    // Whether what belongs to one chart does belong together.
    void expectOneChart() {
        const AppModel& m = *model;
        const std::string root = m.channels->chartChannel == "stocks:AAPL" ? "" : "NQ";
        EXPECT_EQ(m.channels->simRoot, root);
        EXPECT_EQ(m.channels->tradesName, m.channels->chartChannel + ":trades");
        EXPECT_EQ(m.channels->srChannel.empty(), root.empty());
        EXPECT_EQ(m.channels->vixBaseChannel, vixBaseChannel(m.config->vixMode));
        const double price = m.chartNumber() == filled ? 100 : 0;
        for (const auto* series : {&m.bars.candles, &m.bars.displayCandles.get()})
            EXPECT_EQ(series->empty() ? 0 : series->back().close, price) << m.channels->chartChannel;
        EXPECT_EQ(m.options.derivedFields.empty(), price == 0);
        EXPECT_EQ(m.options.levels->empty(), price == 0);
        EXPECT_EQ(m.markers.bubblePts->empty(), price == 0);
        EXPECT_EQ(m.sessionLevels.srLines->empty(), price == 0);
        EXPECT_EQ(m.overlays.series().vwapMain.empty(), price == 0);
        EXPECT_EQ(m.chartContent().candles.size(), m.bars.displayCandles->size());
    }
};

TEST_F(PaneOpening, NoNoticeComesWhileTwoChartsAreMixed) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 600, 11));
    event("derived:QQQ", R"({"etfRatio":1,"callWallStrike":610,"gexByStrike":[{"strike":600}]})");
    event("derived:gexBubbles:QQQ", R"({"bubbles":{"1781100000":{"s":600}}})");
    event("derived:srlevels:NQ", R"({"sessions":{"1781042400":{"openPrice":1,"up":[{"i":1,"price":101}]}}})");
    time.advance(1);
    filled = model->chartNumber();
    expectOneChart();
    int heard = 0;
    std::vector<Connection> links;
    for (Signal<>* signal : signals())
        links.push_back(signal->connect([&] {
            ++heard;
            expectOneChart();
        }));
    StillChart chart;
    model->setChartPort(&chart);
    const auto expectTold = [&](const char* what) {
        EXPECT_GT(std::exchange(heard, 0), 0) << what;
        EXPECT_GT(std::exchange(chart.told, 0), 0) << what;
    };
    model->switchSymbol("AAPL");
    expectTold("another chart");
    model->switchSymbol("NQ");
    EXPECT_TRUE(model->bars.candles.empty());
    chart.told = heard = 0;
    const auto number = model->chartNumber();
    GexConfig other = model->config;
    other.vixMode = "1d";
    links.clear();  // the bars below are not there at their own notices
    for (Signal<>* signal : {&model->config.changed, &model->channels.changed})
        links.push_back(signal->connect([&] {
            ++heard;
            EXPECT_EQ(model->channels->vixBaseChannel, vixBaseChannel(model->config->vixMode));
        }));
    model->setConfig(other);
    expectTold("another volatility index");
    EXPECT_EQ(model->chartNumber(), number + 1);
    model->reloadChart();
    EXPECT_GT(chart.told, 0) << "the same chart opened anew";
    EXPECT_EQ(model->chartContent().chart, number + 2);
}

// A listener may open another chart at once.
TEST_F(PaneOpening, ANoticeMayOpenTheNextChart) {
    openSymbol("NQ");
    const auto link = model->channels.changed.connect([this] {
        if (model->currentSymbol() == "ES") model->switchSymbol("YM");
    });
    std::vector<std::string> seen;
    const auto display = model->log.logChanged.connect([&] { seen.push_back(model->currentSymbol()); });
    model->switchSymbol("ES");
    EXPECT_EQ(model->channels->chartChannel, "futures:YMM6");
    EXPECT_EQ(seen.back(), "YM");
}

TEST_F(PaneOpening, WorkThatTheFormerChartLeftIsNobodys) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    time.advance(1);
    model->applyTrade(200, minute * 1000.0);                            // a display rebuild
    event("derived:osc:QQQ", R"({"points":{"1781100000":{"nq":1}}})");  // an oscillator rebuild
    model->reloadChart();
    const auto version = model->bars.chartVersion;
    int heard = 0;
    const auto link = model->oscillator.oscLines.changed.connect([&] { ++heard; });
    time.advance(1);
    EXPECT_EQ(model->bars.chartVersion, version);
    EXPECT_EQ(heard, 0);
    snapshot("futures:NQM6", flatBars(minute, 1));
    model->applyTrade(201, minute * 1000.0);
    time.advance(1);
    EXPECT_EQ(model->bars.displayCandles->back().close, 201) << "the new chart's own work is done";
}

// What of a chart is looked at again when a setting changes.
TEST_F(PaneOpening, ASettingRaisesWhatDependsOnIt) {
    AppModel& pane = openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 6000, 101));
    time.advance(1);
    const struct {
        const char *key, *value;
        bool look, overlays;
    } cases[] = {{"oscHeight", "300", false, false},
                 {"showNyClock", "false", false, false},
                 {"ema1Color", R"("#123456")", true, false},
                 {"gexOpacity", "10", true, false},
                 {"ema1Enabled", "true", false, true},
                 {"sessionStart", "930", false, true},
                 {"hfScaleBySymbol", R"({"AAPL":3})", false, false},
                 {"hfScaleBySymbol", R"({"NQ":3})", false, true}};
    int rebuilt = 0;
    const auto link = pane.overlays.overlaysChanged.connect([&] { ++rebuilt; });
    for (const auto& c : cases) {
        const auto before = pane.chartContent().revisions;
        const auto version = pane.bars.chartVersion;
        GexConfig changed = pane.config;
        ASSERT_EQ(changed.set(c.key, c.value), std::nullopt);
        pane.setConfig(changed);
        time.advance(1);
        const auto after = pane.chartContent().revisions;
        EXPECT_EQ(after.look != before.look, c.look) << c.key;
        EXPECT_EQ(std::exchange(rebuilt, 0), c.overlays ? 1 : 0) << c.key << c.value;
        EXPECT_EQ(after.candles, before.candles) << c.key;
        EXPECT_EQ(pane.bars.chartVersion, version + 1) << c.key;
    }
}

TEST_F(PaneOpening, WhatComesAgainRaisesNothing) {
    AppModel& pane = openSymbol("NQ");
    const auto send = [&] {
        event("derived:QQQ", R"({"etfRatio":41,"callWallStrike":610,"gexByStrike":[{"strike":600}]})");
        event("derived:gexBubbles:QQQ", R"({"bubbles":{"1781100000":{"s":600}}})");
        return pane.chartContent().revisions;
    };
    const auto first = send();
    auto again = send();
    EXPECT_EQ(again.strikes, first.strikes + 1) << "rows of another message are not compared";
    again.strikes = first.strikes;
    EXPECT_EQ(again, first);
}

}  // namespace
}  // namespace vmr::test
