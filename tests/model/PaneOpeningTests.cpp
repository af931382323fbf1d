// Opening a chart as those see it who listen to the pane.
#include <fmt/format.h>

#include <set>

#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

using PaneOpening = PaneFixture;

TEST_F(PaneOpening, WhatComesWithAChartIsPublishedAtOnce) {
    AppModel& m = openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 600, 11));
    event("derived:QQQ", R"({"etfRatio":1,"callWallStrike":610,"gexByStrike":[{"strike":600}]})");
    event("derived:gexBubbles:QQQ", R"({"bubbles":{"1781100000":{"s":600}}})");
    event("derived:srlevels:NQ", R"({"sessions":{"1781042400":{"openPrice":1,"up":[{"i":1,"price":101}]}}})");
    time.advance(1);
    // the pane's whole state and its chart, as of each notice
    const auto state = [&] { return fmt::format("{} {}", m.chartContent().candles.size(), documentWithoutLog()); };
    std::set<std::string> heard;
    int opened = 0;
    std::vector<Connection> links;
    for (Signal<>* signal : {&m.config.changed, &m.log.logChanged, &m.channels.changed, &m.bars.displayCandles.changed,
                             &m.bars.chartVersionChanged, &m.options.levels.changed, &m.options.strikes.changed,
                             &m.options.hud.changed, &m.markers.bubblePts.changed, &m.oscillator.oscLines.changed,
                             &m.sessionLevels.srLines.changed, &m.overlays.overlaysChanged, &m.hfp.changed})
        links.push_back(signal->connect([&] { heard.insert(state()); }));
    links.push_back(m.channels.changed.connect([&] { ++opened; }));
    StillChart chart;
    m.setChartPort(&chart);
    m.switchSymbol("AAPL");
    EXPECT_THAT(heard, ElementsAre(state()));
    EXPECT_EQ(opened, 1);
    EXPECT_GT(chart.told, 1);
    m.switchSymbol("NQ");
    const auto number = m.chartNumber();
    heard.clear();
    GexConfig other = m.config;
    other.vixMode = "1d";
    m.setConfig(other);
    EXPECT_THAT(heard, ElementsAre(state()));
    m.reloadChart();
    EXPECT_EQ(m.chartContent().chart, number + 2) << "each a chart of its own";
}

TEST_F(PaneOpening, NothingOfTheFormerChartIsLeft) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 60, 2));
    time.advance(1);
    model->applyTrade(200, minute * 1000.0);  // display, overlays and oscillator are to be rebuilt
    model->overlays.schedule();
    event("derived:osc:QQQ", R"({"points":{"1781100000":{"nq":1}}})");
    model->reloadChart();
    const auto version = model->bars.chartVersion;
    int heard = 0;
    const auto links = {model->oscillator.oscLines.changed.connect([&] { ++heard; }),
                        model->overlays.overlaysChanged.connect([&] { ++heard; })};
    time.advance(1);
    EXPECT_EQ(model->bars.chartVersion, version);
    EXPECT_EQ(heard, 0);
    snapshot("futures:NQM6", flatBars(minute, 1));
    model->applyTrade(201, minute * 1000.0);
    event("derived:osc:QQQ", R"({"points":{"1781100060":{"nq":2}}})");
    time.advance(1);
    EXPECT_EQ(model->bars.displayCandles->back().close, 201) << "the new chart's own work is done";
    EXPECT_THAT(model->oscillator.oscLines->nq, ElementsAre(OscPt{minute + 60, 2})) << "its own minute alone";
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
                 {"ema1Color", R"("#123456")", true, false},
                 {"ema1Enabled", "true", false, true},
                 {"sessionStart", "930", false, true},
                 {"hfScaleBySymbol", R"({"AAPL":3})", false, false},
                 {"hfScaleBySymbol", R"({"NQ":3})", false, true}};
    int rebuilt = 0;
    const auto link = pane.overlays.overlaysChanged.connect([&] { ++rebuilt; });
    for (const auto& c : cases) {
        const auto before = pane.chartContent().revisions;
        GexConfig changed = pane.config;
        ASSERT_EQ(changed.set(c.key, c.value), std::nullopt);
        pane.setConfig(changed);
        time.advance(1);
        const auto after = pane.chartContent().revisions;
        EXPECT_EQ(after.look != before.look, c.look) << c.key;
        EXPECT_EQ(std::exchange(rebuilt, 0), c.overlays ? 1 : 0) << c.key << c.value;
        EXPECT_EQ(after.candles, before.candles) << c.key;
    }
}

}  // namespace
}  // namespace vmr::test
