// Templates of a pane: what applying them changes, and whose answers count.
#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>

#include "chart/ChartView.h"
#include "gpu/FrameRecorder.h"
#include "support/pane/TestPane.h"
#include "tests/chart/FakeGlyphs.h"

namespace vmr::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

JsonMembers members(const std::string& text) { return jsonMembers(text).value(); }
JsonMembers viewOf(const std::string& text) { return members("{\"_view\":" + text + "}"); }

// A signed-in pane with the chart that shows it, and a service that answers by hand.
class PaneTemplates : public PaneFixture {
 protected:
    PaneTemplates() {
        http.responder = [this](const HttpRequest& request) -> std::optional<HttpResponse> {
            if (request.url.find("/v1/") != std::string::npos) return grant();
            if (!calls(request)) return HttpResponse{200, "{}", {}};
            return std::nullopt;
        };
        preferences.set("gex-last-symbol", "NQ");
        model = std::make_unique<AppModel>(surroundings(&cloud));
        view.setSize(1400, 800);
        view.setSource(model.get());
        model->setChartPort(&view);
        signIn();
        greet();
        http.requests.clear();
    }
    ~PaneTemplates() override {
        model->setChartPort(nullptr);
        view.setSource(nullptr);
        model.reset();  // before the session that it uses
    }
    static Endpoints places() {
        const std::string all = "https://c.test";
        return {"", all, all, all, "", "", "key"};
    }
    static bool calls(const HttpRequest& request) { return request.url.ends_with("ChartTemplates") || saves(request); }
    static bool saves(const HttpRequest& request) { return request.url.ends_with("ChartTemplate"); }

    /// The calls since the last look, such as "NQ_QQQ" and "NQ_QQQ slot_2".
    std::vector<std::string> asked() {
        std::vector<std::string> out;
        for (const HttpRequest& request : std::exchange(http.requests, {})) {
            if (!calls(request)) continue;
            const json data = json::parse(request.body)["data"];
            out.push_back(data["symbolSource"].get<std::string>() +
                          (saves(request) ? " " + data.value("slot", "") : ""));
        }
        return out;
    }
    /// Answers the oldest call that waits, or the `index`-th.
    void answer(const std::string& result, std::size_t index = 0) {
        http.answer(200, "{\"result\":" + result + "}", index);
        time.runUntilIdle();
    }
    static std::string slots(const std::string& preferred, const std::string& config = R"({"ema1Enabled":true})") {
        return R"({"preferred":")" + preferred + R"(","slot_1":{"config":)" + config +
               R"(},"slot_3":{"savedAt":"soon","config":{"ema2Enabled":true}}})";
    }
    /// The feed's bars, and time enough for the chart to show them.
    void bars(int count, double price = 150) {
        snapshot(model->channels->chartChannel, flatBars(minute - count * 60, count, price));
        time.advance(0.1);
        view.record(1400, 800, 1, time.monotonic());
    }
    const Camera& camera() { return view.renderer().camera(); }
    /// The list as the panel shows it, with its status.
    std::string panel() {
        const ChartTemplates& of = model->templates;
        std::string out = of.loading ? "loading " : "";
        if (of.busy) out += "busy ";
        if (of.list.get()) out += of.list.get()->preferred.value_or("none") + " ";
        return out + (of.failed ? "! " : "") + of.status->value_or("");
    }
    ChartTemplates& templates() { return model->templates; }

    FirebaseRESTAuth cloud{places(), http, preferences, time};
    FrameRecorder gpu;
    FakeGlyphs glyphs;
    ChartView view{{gpu, glyphs, session, time, main}};
};

TEST_F(PaneTemplates, BarsAreShownAtTheRightEndAsManyAsThereAre) {
    const struct {
        int held;
        const char* bs;
        double shown;  // 0: as it was
    } cases[] = {{300, "5", 0},      {300, "9.99", 0},    {300, "\"nan\"", 0}, {300, "\"inf\"", 0}, {300, "null", 0},
                 {300, "5000", 300}, {300, "\"50\"", 50}, {300, "10", 10},     {300, "42.5", 42.5}, {4, "50", 10}};
    for (const auto& [held, bs, shown] : cases) {
        model->reloadChart();
        bars(held);
        view.renderer().pan(-held);
        const Camera before = camera();
        model->applyTemplate(viewOf(std::string(R"({"bs":)") + bs + "}"));
        EXPECT_EQ(camera().visibleCount, shown > 0 ? shown : before.visibleCount) << bs;
        EXPECT_EQ(camera().followLive, shown > 0 || before.followLive) << bs;
        EXPECT_EQ(camera().firstVisible, shown > 0 ? view.renderer().rightEdgeFirst() : before.firstVisible) << bs;
    }
    EXPECT_EQ(model->camera.viewChanges(), std::size(cases));
}

TEST_F(PaneTemplates, WhatIsCapturedComesBack) {
    bars(300);
    GexConfig chosen = model->config;
    chosen.ema1Period = 21;
    chosen.hfScaleBySymbol = {{"NQ", 7}};
    model->setConfig(chosen);
    view.renderer().mirrorView(0, 80);
    view.renderer().mirrorPrice(120, 180);
    const JsonMembers saved = model->captureTemplateConfig();
    EXPECT_EQ(saved.size(), 61u);
    EXPECT_EQ(json::parse(saved.at("_view")), json::parse(R"({"bs":80,"as":false,"pf":120,"pt":180})"));

    model->setConfig(GexConfig());
    view.renderer().mirrorView(0, 200);
    view.renderer().setAutoY(true);
    time.advance(1);
    const double hand = model->camera.handAt();
    model->applyTemplate(saved, false);
    EXPECT_EQ(model->config.get(), chosen);
    EXPECT_EQ(GexConfig::fromJson(preferences.get("gex-config").value()), chosen) << "it is saved as any change is";
    EXPECT_EQ(camera().setup(), (ViewSetup{80, false, 120, 180}));
    EXPECT_EQ(model->camera.handAt(), hand);
    model->applyTemplate({}, true);
    EXPECT_EQ(camera().setup(), (ViewSetup{80, false, 120, 180})) << "without a view in it the view stays";
    view.renderer().setPriceLineFrac(0.5);
    model->applyTemplate(saved, true);
    EXPECT_TRUE(camera().autoY) << "a pinned close leaves the range to the chart";
    view.renderer().setPriceLineFrac(std::nan(""));
    model->applyTemplate(viewOf("{}"), true);
    EXPECT_TRUE(camera().autoY);
    EXPECT_EQ(model->camera.handAt(), time.monotonic()) << "a linked pane follows the one that was asked";

    model->setChartPort(nullptr);
    EXPECT_EQ(model->captureTemplateConfig().count("_view"), 0u);
    model->setChartPort(&view);
}

TEST_F(PaneTemplates, ThePreferredOneAppliesItselfOnceForEachPair) {
    takeLog();
    http.answer(200, R"({"result":)" + slots("slot_3", R"({"gexSource":"INDEX"})") + "}");
    time.runUntilIdle();
    EXPECT_TRUE(model->config->ema2Enabled);
    EXPECT_THAT(takeLog(), ElementsAre("→ template: applied preferred slot_3 for NQ_QQQ"));
    GexConfig own = model->config;
    own.ema2Enabled = false;
    model->setConfig(own);
    model->reloadChart();
    model->switchSymbol("ES");
    EXPECT_THAT(asked(), ElementsAre("ES_SPY"));
    const struct {
        const char *symbol, *pair, *result;
    } silent[] = {{"YM", "ES_SPY", R"({"slot_1":{"config":{"ema1Enabled":true}}})"},
                  {"AAPL", "YM_DIA", R"({"preferred":"slot_2","slot_1":{}})"},
                  {"RTY", "AAPL", "7"}};
    for (const auto& [next, pair, result] : silent) {
        takeLog();
        answer(result);
        EXPECT_EQ(model->config.get(), own) << pair;
        EXPECT_THAT(takeLog(), IsEmpty()) << pair;
        model->switchSymbol(next);
    }
    http.answer(200, "no JSON", 0);
    time.runUntilIdle();
    asked();
    model->switchSymbol("NQ");
    model->cycleGexSource();
    EXPECT_THAT(asked(), ElementsAre("NQ_NDX")) << "another source is another pair";
    EXPECT_THAT(templates().preferredApplied(), ElementsAre("AAPL", "ES_SPY", "NQ_NDX", "NQ_QQQ", "RTY_IWM", "YM_DIA"));
}

TEST_F(PaneTemplates, AnAnswerForAPairThatWasLeftChangesNothing) {
    const auto contract = [this](const char* name) {
        event("meta:contracts", std::string(R"({"map":{"NQ":")") + name + "\"}}");
    };
    const auto chart = model->chartNumber();
    contract("NQZ6");
    ASSERT_GT(model->chartNumber(), chart);
    model->switchSymbol("ES");
    model->switchSymbol("NQ");
    takeLog();
    answer(slots("slot_1"));
    EXPECT_FALSE(model->config->ema1Enabled) << "it was left in between";
    answer(slots("slot_3"));
    EXPECT_FALSE(model->config->ema2Enabled) << "that is the other symbol's";
    model->switchSymbol("YM");
    model->signOut();
    signIn();
    greet();
    answer(slots("slot_1"));
    EXPECT_FALSE(model->config->ema1Enabled) << "that was the session before";
    model->switchSymbol("RTY");
    model->reloadChart();
    answer(slots("slot_1"));
    EXPECT_TRUE(model->config->ema1Enabled) << "the same pair was opened anew";
    model->switchSymbol("AAPL");
    model->shutdown();
    answer(slots("slot_3"));
    EXPECT_FALSE(model->config->ema2Enabled);
}

TEST_F(PaneTemplates, ItsViewWaitsForTheFirstBars) {
    answer(slots("slot_1", R"({"_view":{"bs":40,"as":false,"pf":100,"pt":200}})"));
    bars(1);
    const JsonMembers saved = model->captureTemplateConfig();
    EXPECT_EQ(json::parse(saved.at("_view")), json::parse(R"({"bs":40,"as":false,"pf":100,"pt":200})"))
        << "a bar or two come ahead of their history";
    asked();
    templates().save("slot_1");
    EXPECT_EQ(json::parse(http.requests[0].body)["data"]["atmOffset"], 40);
    event("meta:contracts", R"({"map":{"NQ":"NQZ6"}})");
    bars(300);
    EXPECT_EQ(camera().setup(), (ViewSetup{40, false, 100, 200}));
    EXPECT_EQ(camera().firstVisible, view.renderer().rightEdgeFirst());
    view.renderer().mirrorView(0, 200);
    bars(301);
    EXPECT_EQ(camera().visibleCount, 200) << "once";

    // settings that open the chart anew take the bars away for a moment
    model->applyTemplate(members(R"({"vixMode":"1d","_view":{"bs":50}})"));
    EXPECT_TRUE(model->bars.candles.empty());
    bars(300, 300);
    EXPECT_EQ(camera().visibleCount, 50);
    model->applyTemplate(members(R"({"vixMode":"30d","_view":{"bs":60}})"));
    model->switchSymbol("ES");
    bars(300);
    EXPECT_NE(camera().visibleCount, 60) << "that was another pair's";
}

TEST_F(PaneTemplates, AViewWaitsNoLongerThanThePersonLeavesTheChartAlone) {
    const struct {
        const char* between;
        std::function<void()> act;
        bool shown;
    } cases[] = {{"nothing", [] {}, true},
                 {"the same timeframe", [this] { model->setTimeframe(1); }, true},
                 {"a linked chart", [this] { view.mirrorView(0, 30); }, true},
                 {"a zoom", [this] { view.renderer().zoom(1.1); }, false},
                 {"another timeframe", [this] { model->setTimeframe(5); }, false},
                 {"there and back", [this] { model->setTimeframe(5), model->setTimeframe(1); }, false},
                 {"settings alone", [this] { model->applyTemplate(members(R"({"ema1Enabled":true})")); }, false}};
    for (const auto& [between, act, shown] : cases) {
        SCOPED_TRACE(between);
        model->setTimeframe(1);
        model->reloadChart();
        bars(4);
        model->applyTemplate(viewOf(R"({"bs":42.5})"));
        time.advance(1);
        act();
        bars(300);
        EXPECT_EQ(camera().visibleCount == 42.5, shown) << camera().visibleCount;
        EXPECT_EQ(json::parse(model->captureTemplateConfig().at("_view"))["bs"], camera().visibleCount);
    }
}

TEST_F(PaneTemplates, ThePanelLoadsAndSaves) {
    http.answer(500, "");  // the automatic one
    time.runUntilIdle();
    asked();
    model->panels.templatesPanelOpen = true;
    EXPECT_EQ(panel(), "loading ");
    answer(slots("slot_3"));
    EXPECT_EQ(panel(), "slot_3 ");
    templates().load("slot_2");
    templates().load("slot_9");
    EXPECT_EQ(panel(), "slot_3 ") << "an empty slot";
    templates().load("slot_3");
    EXPECT_EQ(panel(), "slot_3 Applied slot 3.") << "its date means nothing";
    EXPECT_TRUE(model->config->ema2Enabled);
    EXPECT_THAT(asked(), ElementsAre("NQ_QQQ"));

    templates().save("slot_2");
    templates().save("slot_1");
    templates().load("slot_1");
    EXPECT_EQ(panel(), "busy slot_3 Applied slot 3.");
    ASSERT_EQ(http.requests.size(), 1u);
    const json sent = json::parse(http.requests[0].body)["data"];
    EXPECT_EQ(sent["config"]["ema2Enabled"], true);
    EXPECT_EQ(sent["atmOffset"], camera().visibleCount);
    answer("{}");
    EXPECT_EQ(panel(), "loading slot_3 Saved to slot 2 (now preferred).");
    answer(slots("slot_2"));
    EXPECT_EQ(panel(), "slot_2 Saved to slot 2 (now preferred).");
    EXPECT_THAT(asked(), ElementsAre("NQ_QQQ slot_2", "NQ_QQQ"));

    templates().save("slot_1");
    http.answer(200, R"({"error":{"message":"No room"}})");
    time.runUntilIdle();
    EXPECT_EQ(panel(), "slot_2 ! No room");
    templates().refresh();
    templates().refresh();
    EXPECT_EQ(panel(), "loading slot_2 ");
    answer(slots("slot_1"), 1);
    answer(slots("slot_3"));
    EXPECT_EQ(panel(), "slot_1 ") << "the latest counts";
    templates().refresh();
    http.answer(HttpResponse{0, "", "no network"});
    time.runUntilIdle();
    EXPECT_EQ(panel(), "slot_1 ! no network");
}

TEST_F(PaneTemplates, ThePanelNeverShowsAnotherPairsAnswer) {
    http.answer(500, "");
    time.runUntilIdle();
    model->panels.templatesPanelOpen = true;
    answer(slots("slot_1"));
    asked();
    std::vector<std::string> ends;
    const auto told = [&](const std::optional<std::string>& problem) { ends.push_back(problem.value_or("well")); };
    templates().save("slot_2", told);
    templates().refresh(told);
    model->switchSymbol("ES");
    EXPECT_EQ(panel(), "");
    EXPECT_THAT(ends, ElementsAre("The chart was left.", "The chart was left."));
    time.runUntilIdle();
    EXPECT_THAT(asked(), ElementsAre("NQ_QQQ slot_2", "NQ_QQQ", "ES_SPY", "ES_SPY"));
    answer("{}");
    answer(slots("slot_2"));
    EXPECT_EQ(panel(), "loading ");
    answer("{}");  // the automatic one
    answer(slots("slot_3"));
    EXPECT_EQ(panel(), "slot_3 ");

    asked();
    model->cycleGexSource();
    time.runUntilIdle();
    EXPECT_EQ(panel(), "loading ");
    EXPECT_EQ(asked().size(), 2u) << "of a change of source and chart in one: the automatic one, and one list";
    model->signOut();
    answer(slots("slot_1"));
    answer(slots("slot_1"));
    EXPECT_EQ(panel(), "");
    templates().refresh(told);
    EXPECT_EQ(panel(), "! Not signed in.");
    EXPECT_EQ(ends.back(), "Not signed in.");
}

}  // namespace
}  // namespace vmr::test
