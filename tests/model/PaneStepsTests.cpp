// What each step of a pane's life changes in its state, and that the rest stays.
#include <fmt/format.h>

#include <map>
#include <set>
#include <sstream>

#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

using Names = std::vector<std::string>;

std::string joined(const Names& names) { return fmt::format("{}", fmt::join(names, " ")); }

// The parts between marks, without the blanks before them.
std::set<std::string> split(const std::string& text, char mark) {
    std::set<std::string> out;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts >> std::ws, part, mark);) out.insert(part);
    return out;
}

// A field as the steps write it: strikes and walls by their numbers, any other list of records by its length.
std::string brief(std::string_view key, JsonView value) {
    if (key == "oscLines") return std::to_string(value["nq"].size()) + " minutes";
    if (key == "gex3D") return value.isObject() ? "surface" : "none";
    if (key == "gex3DView") return value.isObject() ? "open" : "closed";
    if (key == "hud") return value["callOI"].text() + " " + value["putGex"].text() + " " + value["hf"].text();
    if (value.isString()) return std::string(value.string());
    if (!value.isArray()) return value.text();
    Names out;
    for (const JsonView item : value.items()) {
        if (key == "strikes" || key == "secStrikes")
            out.push_back(item["strike"].text());
        else if (key == "levels")
            out.push_back(std::string(item["label"].string()) + " @" + item["price"].text());
        else
            out.emplace_back(item.string());
        if (out.back().empty()) return std::to_string(value.size()) + " records";
    }
    return joined(out);
}

// The first channels of a chart; the other instrument's, the second source's and the session levels' come behind.
std::string chart(const std::string& bars, const std::string& source) {
    return fmt::format(
        "{0} {0}:1m {0}:trades meta:contracts meta:instruments {2}indices:I:VIX indices:I:VIX:1m derived:{1} "
        "derived:gexBubbles:{1} derived:hfTriangles:{1} derived:osc:{1} derived:hfHistory:{1}",
        bars, source, bars.starts_with("futures:") ? bars + ":quote " : "");
}

// The fields that hold a source's channels.
std::string channelsOf(const std::string& source) {
    return fmt::format(
        "levelsChannel=derived:{0}; bubblesChannel=derived:gexBubbles:{0}; trianglesChannel=derived:hfTriangles:{0}; "
        "oscChannel=derived:osc:{0}; hfHistoryChannel=derived:hfHistory:{0}; ",
        source);
}

std::string other(const std::string& bars) { return fmt::format(" {0} {0}:1m {0}:trades", bars); }

const std::string nqByEtf = chart("futures:NQM6", "QQQ") + other("futures:ESU6") + " derived:srlevels:NQ";
const std::string nqByIndex = chart("futures:NQM6", "NDX") + other("futures:ESU6") + " derived:srlevels:NQ";
const std::string nqByBoth = chart("futures:NQM6", "QQQ") + other("futures:ESU6") + " derived:NDX derived:srlevels:NQ";

// What a new chart empties of a filled one. The volatility index, the catalog and what was made of the last
// derived fields (strikes, ratios, gamma flip, totals, expirations) are not among it.
const std::string emptied =
    "candles=; displayCandles=; secondaryCandles=; levels=; derivedFields=; srSessions=; srLines=; bubblePts=; "
    "trianglePts=; hfByMin=0; hfp=; oscLines=0 minutes; gex3D=none; vwapMain=; vixLine=; hfLine=; secondCandles=; ";

// Walls at 610 and 590.5. The slice of 2026-06-12 has rows, a ratio and a call wall of its own and takes the flip.
const std::string derived =
    R"({"etfRatio":41,"callWallStrike":610,"putWallStrike":590.5,"gammaFlipStrike":"600.5",)"
    R"("totalCallOI":7,"totalPutGex":-3,"hfTotal":12,)"
    R"("expirations":["2026-06-17","2026-06-12","2026-06-10","2026-07-17"],)"
    R"("gexByStrike":[{"strike":601,"callGex":5},{"strike":599,"callGex":"2"}],"byExpiration":{)"
    R"("2026-06-12":{"gexByStrike":[{"strike":605}],"etfRatio":40,"callWallStrike":620,"gammaFlipStrike":null},)"
    R"("2026-06-10":{"gexByStrike":[{"strike":600},{"strike":598}],"totalCallOI":1}}})";

class PaneSteps : public PaneFixture {
 protected:
    /// Whether those of the state's fields that have changed since the last call are the `wanted` ones, written as
    /// "field=value; field=value".
    testing::AssertionResult changed(const std::string& wantedText) {
        const auto wanted = split(wantedText, ';');
        const auto before = std::exchange(seen_, fields());
        std::set<std::string> found, wrong;
        for (const auto& [key, value] : seen_)
            if (const auto old = before.find(key); old == before.end() || old->second != value)
                found.insert(key + "=" + (key == "chartVersion" ? "raised" : value));
        std::ranges::set_symmetric_difference(found, wanted, std::inserter(wrong, wrong.end()));
        return (wrong.empty() ? testing::AssertionSuccess() : testing::AssertionFailure())
               << "unexpected or missing: " << testing::PrintToString(wrong);
    }

    /// The messages since the last call, as "subscribe a b".
    Names sent() {
        time.runUntilIdle();
        Names out;
        for (const std::string& text : sockets.last().takeSent())
            if (const auto message = Json::parse(text); (*message)["channels"].isArray())
                out.push_back(std::string((*message)["action"].string()) + " " + brief("", (*message)["channels"]));
        return out;
    }

    /// Takes whatever has changed, has been sent and stands in the log.
    void forget() {
        seen_ = fields();
        sent();
        takeLog();
    }

    /// Something on every channel of a futures chart with a pair, and all that comes of it.
    void fill() {
        snapshot(model->channels->chartChannel, flatBars(minute - 60, 2, 24600));
        snapshot(model->channels->secondaryChannel, flatBars(minute - 60, 2, 6000));
        snapshot("indices:I:VIX", flatBars(minute - 60, 2, 17));
        event(model->channels->levelsChannel, derived);
        event(model->channels->bubblesChannel, R"({"bubbles":{"1781100000":{"s":600}}})");
        event(model->channels->trianglesChannel, R"({"triangles":{"1781100000":{"d":[[600,-10]]}}})");
        event(model->channels->oscChannel, R"({"points":{"1781100000":{"nq":1}}})");
        event(model->channels->hfHistoryChannel, R"({"candles":{"1781100000":{"c":5}}})");
        event(model->channels->srChannel, R"({"sessions":{"1781042400":{"openPrice":1,"up":[{"i":1,"price":101}]}}})");
        model->hfp.samples.push_back({});
        model->setGex3DActive(true);
        time.advance(0.1);
    }

    /// A connected pane on the first chart.
    void connect() {
        make();
        seen_ = fields();
        signIn();
        greet();
    }
    /// The same after the server has said which contracts are in front, with something on every channel, and as many
    /// steps on from the ETF's source: to the index's own, to both.
    void prepare(int steps = 0) {
        connect();
        event("meta:contracts", R"({"map":{"ES":"ESU6","NQ":"NQM6"}})");
        fill();
        for (; steps > 0; --steps, fill()) model->cycleGexSource();
        forget();
    }

 private:
    std::map<std::string, std::string> fields() {
        std::map<std::string, std::string> out;
        const auto document = Json::parse(documentWithoutLog());
        const JsonView pane = *(*document)["panes"].items().begin();
        for (const auto& [key, value] : pane.members())
            if (key != "config" && key != "templates" && key != "overlay") out[std::string(key)] = brief(key, value);
        out["preferredApplied"] = brief("", pane["templates"]["preferredApplied"]);
        for (const auto& [key, value] : pane["config"].members()) out["config." + std::string(key)] = brief("", value);
        return out;
    }
    std::map<std::string, std::string> seen_;
};

TEST_F(PaneSteps, ConnectsToTheFirstChart) {
    connect();
    const std::string list = chart("futures:NQU6", "QQQ") + other("futures:ESM6") + " derived:srlevels:NQ";
    EXPECT_TRUE(
        changed("isSignedIn=true; userEmail=a@b.c; connected=true; status=Connected; chartChannel=futures:NQU6; "
                "currentSymbol=NQ; symbolSource=NQ_QQQ; preferredApplied=NQ_QQQ; simRoot=NQ; "
                "srChannel=derived:srlevels:NQ; secondSymbol=ES; "
                "secondaryContract=ESM6; secondaryChannel=futures:ESM6; " +
                channelsOf("QQQ") + "subscribedChans=" + list));
    EXPECT_THAT(sent(), ElementsAre("subscribe " + list));
    EXPECT_EQ(printed.back(), "[app] → chart: futures:NQU6 + derived:QQQ + derived:srlevels:NQ");
}

TEST_F(PaneSteps, RollsToItsContract) {
    connect();
    fill();
    forget();
    const std::string map = R"({"ES":"ESU6","NQ":"NQM6"})";
    event("meta:contracts", R"({"map":)" + map + "}");
    EXPECT_TRUE(changed(emptied +
                        "chartChannel=futures:NQM6; secondaryContract=ESU6; secondaryChannel=futures:ESU6; "
                        "contractOverrides=" +
                        map + "; subscribedChans=" + nqByEtf));
    EXPECT_THAT(takeLog(),
                ElementsAre("→ contract roll: NQ → NQM6", "→ chart: futures:NQM6 + derived:QQQ + derived:srlevels:NQ"));
    EXPECT_EQ(sent().back(), "subscribe " + nqByEtf);
    // another's contract, and the chart's own when it is there already
    for (const std::string& next : {std::string(R"({"ES":"ESZ6"})"), map}) {
        event("meta:contracts", R"({"map":)" + next + "}");
        EXPECT_TRUE(changed("contractOverrides=" + next));
    }
    EXPECT_TRUE(takeLog().empty());
    fill();
    EXPECT_TRUE(changed(
        "candles=2 records; displayCandles=2 records; secondaryCandles=2 records; chartVersion=raised; "
        "levels=Call Wall 610 @25010.0 Put Wall 590.5 @24210.5; derivedFields=byExpiration callWallStrike etfRatio "
        "expirations gammaFlipStrike gexByStrike hfTotal putWallStrike totalCallOI totalPutGex; "
        "srSessions=1 records; srLines=2 records; bubblePts=1 records; trianglePts=1 records; hfByMin=1; "
        "hfp=1 records; oscLines=1 minutes; gex3D=surface; vwapMain=2 records; vixLine=2 records; "
        "hfLine=1 records; secondCandles=2 records"))
        << "the rest stands there from the contract before";
    model->openChart("futures:NQZ6", "");
    event("meta:contracts", R"({"map":)" + map + "}");
    EXPECT_EQ(model->channels->chartChannel, "futures:NQZ6") << "nothing rolls where the map says the same again";
}

TEST_F(PaneSteps, FollowsTheExpirationThatIsPicked) {
    prepare();
    event("derived:QQQ", R"({"expirations":["2026-06-17"]})");
    EXPECT_TRUE(changed("futureExps=2026-06-17; selectedExp=2026-06-17; strikes=599.0 601.0; hud=7.0 -3.0 12.0"));
    event("derived:QQQ", R"({"expirations":["2026-06-17","2026-06-12","2026-06-10","2026-07-17"]})");
    EXPECT_TRUE(changed(R"(futureExps=2026-06-10 2026-06-12 2026-06-17; selectedExp=2026-06-10; strikes=598.0 600.0;
        hud=1.0 -3.0 12.0)"))
        << "the nearest, by itself";
    takeLog();
    model->setExpiration("2026-06-12");
    EXPECT_TRUE(changed(R"(selectedExp=2026-06-12; strikes=605.0; etfRatio=40.0; gammaFlipStrike=null;
        levels=Call Wall 620 @24800.0 Put Wall 590.5 @23620.0; hud=7.0 -3.0 12.0)"));
    EXPECT_THAT(takeLog(), ElementsAre("→ exp: 2026-06-12"));
    event("derived:QQQ", R"({"callWallStrike":611,"gexByStrike":[{"strike":602}],"etfRatio":41.5})");
    EXPECT_TRUE(changed("")) << "the slice goes before the aggregate";
}

TEST_F(PaneSteps, KeepsThePickOfTheExpirationThatIsShown) {
    prepare();
    event("derived:QQQ", R"({"expirations":["2026-06-17"]})");
    forget();
    model->setExpiration("2026-06-17");
    EXPECT_TRUE(changed("") && takeLog().empty());
    event("derived:QQQ", R"({"expirations":["2026-06-10","2026-06-17"]})");
    EXPECT_TRUE(changed("futureExps=2026-06-10 2026-06-17"));
}

TEST_F(PaneSteps, FallsBackWhenThePickIsGone) {
    prepare();
    event("derived:QQQ", R"({"callWallStrike":611,"gexByStrike":[{"strike":602}],"etfRatio":41.5})");
    model->setExpiration("2026-06-12");
    forget();
    event("derived:QQQ", R"({"expirations":["2026-06-10","2026-06-17"]})");
    EXPECT_TRUE(changed(R"(futureExps=2026-06-10 2026-06-17; selectedExp=2026-06-10; strikes=598.0 600.0;
        etfRatio=41.5; levels=Call Wall 611 @25356.5 Put Wall 590.5 @24505.75; gammaFlipStrike=600.5;
        hud=1.0 -3.0 12.0)"));
    model->setExpiration("2026-06-17");
    EXPECT_TRUE(changed("selectedExp=2026-06-17; strikes=602.0; hud=7.0 -3.0 12.0")) << "no slice: the aggregate";
    event("derived:QQQ", R"({"expirations":["2026-06-12","2026-06-17",5,""]})");
    EXPECT_TRUE(changed("futureExps=2026-06-12 2026-06-17")) << "the later pick is honoured";
    event("derived:QQQ", R"({"expirations":{}})");
    EXPECT_TRUE(changed("futureExps=; selectedExp=null"));
    event("derived:QQQ", R"({"etfRatio":0,"totalCallOI":9})");
    EXPECT_TRUE(changed("levels=; hud=9.0 -3.0 12.0")) << "a ratio of 0 is none, but allows no walls";
}

TEST_F(PaneSteps, GoesToTheIndex) {
    prepare();
    model->cycleGexSource();
    EXPECT_TRUE(changed(emptied + channelsOf("NDX") +
                        "config.gexSource=INDEX; chartVersion=raised; symbolSource=NQ_NDX; preferredApplied=NQ_NDX "
                        "NQ_QQQ; hfScale=1.5e-06; "
                        "subscribedChans=" +
                        nqByIndex));
    EXPECT_THAT(sent(), ElementsAre("unsubscribe " + nqByEtf, "subscribe " + nqByIndex));
    event("derived:NDX", R"({"gexByStrike":[{"strike":24600}]})");
    EXPECT_TRUE(changed(R"(derivedFields=gexByStrike; strikes=24600.0; futureExps=; selectedExp=null;
        gammaFlipStrike=null; hud=0.0 0.0 0.0)"))
        << "the ratio stays until one comes";
    event("derived:QQQ", derived);
    EXPECT_TRUE(changed("")) << "a channel of the chart before";
}

TEST_F(PaneSteps, ShowsBothSources) {
    prepare(1);
    model->cycleGexSource();
    EXPECT_TRUE(changed(
        emptied + channelsOf("QQQ") +
        "config.gexSource=BOTH; chartVersion=raised; symbolSource=NQ_QQQNDX; preferredApplied=NQ_NDX NQ_QQQ NQ_QQQNDX; "
        "secondaryGexChannel=derived:NDX; hfScale=2e-07; subscribedChans=" +
        nqByBoth));
    EXPECT_THAT(sent(), ElementsAre("unsubscribe " + nqByIndex, "subscribe " + nqByBoth));
    fill();
    forget();
    event("derived:NDX", R"({"gexByStrike":[{"strike":24700},{"strike":24600}],"etfRatio":1.01,"totalCallOI":5})");
    EXPECT_TRUE(changed(R"(secondaryGexFields=etfRatio gexByStrike totalCallOI; secStrikes=24600.0 24700.0;
        secEtfRatio=1.01)"));
    event("derived:NDX", R"({"etfRatio":0})");
    EXPECT_TRUE(changed(""));
}

TEST_F(PaneSteps, ReconnectsInPlace) {
    prepare(2);
    event("derived:NDX", R"({"gexByStrike":[{"strike":24700},{"strike":24600}],"etfRatio":1.01,"totalCallOI":5})");
    forget();
    sockets.last().close(1006);
    time.runUntilIdle();
    EXPECT_TRUE(changed("connected=false; status=Disconnected (reconnecting…)"));
    time.advance(1);
    greet();
    EXPECT_TRUE(changed("connected=true; status=Connected"));
    const Names restored = sent();
    ASSERT_EQ(restored.size(), 1u);
    EXPECT_EQ(split(restored.front(), ' '), split("subscribe " + nqByBoth, ' ')) << "in whatever order";
    EXPECT_EQ(takeLog().back(), "→ reconnected — subscriptions re-flushed, snapshots merge in place");
    snapshot("derived:NDX", R"({"totalCallOI":6,"new":1})");
    snapshot("futures:NQM6", flatBars(minute - 120, 2, 24500));
    EXPECT_TRUE(changed(R"(secondaryGexFields=etfRatio gexByStrike new totalCallOI; candles=3 records;
        displayCandles=3 records; vwapMain=3 records; chartVersion=raised)"));
}

TEST_F(PaneSteps, GoesToAStock) {
    prepare(2);
    event("meta:instruments", R"({"catalog":{"stocks":[{"sym":"AAPL","hfScale":3}]}})");
    model->switchSymbol("AAPL");
    const std::string list = chart("stocks:AAPL", "AAPL");
    EXPECT_TRUE(changed(emptied + channelsOf("AAPL") +
                        "catStocks=AAPL; chartChannel=stocks:AAPL; currentSymbol=AAPL; symbolSource=AAPL; "
                        "preferredApplied=AAPL NQ_NDX NQ_QQQ NQ_QQQNDX; "
                        "sessionHHMM=930; simRoot=; "
                        "srChannel=; secondSymbol=; secondaryContract=; secondaryChannel=; secondaryGexChannel=; "
                        "oscPrimaryLabel=AAPL; oscSingle=true; hfScale=3.0; subscribedChans=" +
                        list));
    EXPECT_THAT(sent(), ElementsAre("unsubscribe " + nqByBoth, "subscribe " + list));
    const std::string map = R"({"AAPL":"AAPLM6","NQ":"NQU6"})";
    event("meta:contracts", R"({"map":)" + map + "}");
    EXPECT_TRUE(changed("contractOverrides=" + map)) << "a stock never rolls";
    model->cycleGexSource();
    EXPECT_TRUE(changed("config.gexSource=ETF; chartVersion=raised")) << "and has one source";
    model->switchSymbol("ZZZ");
    EXPECT_TRUE(changed("")) << "an unknown symbol is remembered and nothing else";
    EXPECT_EQ(preferences.get("gex-last-symbol"), "ZZZ");
    model->switchSymbol("NQ");
    EXPECT_EQ(model->channels->chartChannel, "futures:NQU6") << "the contract that came in between";
}

TEST_F(PaneSteps, EveryChartHasItsChannels) {
    const std::string nq = other("futures:NQM6"), es = other("futures:ESM6"), sr = " derived:srlevels:";
    const struct {
        const char *symbol, *source, *key;
        double hfScale;
        std::string list;
    } cases[] = {
        {"NQ", "ETF", "NQ_QQQ", 2e-7, chart("futures:NQM6", "QQQ") + es + sr + "NQ"},
        {"CL", "ETF", "CL_USO", 5e-6, chart("futures:CLN6", "USO") + sr + "CL"},
        {"YM", "ETF", "YM_DIA", 1e-4, chart("futures:YMM6", "DIA") + sr + "YM"},
        {"META", "ETF", "META", 2e-7, chart("stocks:META", "META")},
        {"ES", "INDEX", "ES_SPX", 2.5e-7, chart("futures:ESM6", "SPX") + nq + sr + "ES"},
        {"RTY", "INDEX", "RTY_RUT", 5e-7, chart("futures:RTYM6", "RUT") + sr + "RTY"},
        {"GC", "INDEX", "GC_GLD", 4e-6, chart("futures:GCQ6", "GLD") + sr + "GC"},
        {"ES", "BOTH", "ES_SPYSPX", 2e-7, chart("futures:ESM6", "SPY") + nq + " derived:SPX" + sr + "ES"},
        {"RTY", "BOTH", "RTY_IWMRUT", 5e-7, chart("futures:RTYM6", "IWM") + " derived:RUT" + sr + "RTY"},
    };
    open();
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.symbol) + " " + c.source);
        GexConfig config = model->config;
        config.gexSource = c.source;
        model->setConfig(config);
        model->switchSymbol(c.symbol);
        EXPECT_EQ(joined(model->channels->subscribedChans), c.list);
        EXPECT_EQ(model->symbolSource(), c.key);
        EXPECT_EQ(model->channels->hfScale, c.hfScale);
        EXPECT_EQ(model->channels->oscPrimaryLabel, c.symbol);
        EXPECT_EQ(model->channels->oscSingle, std::string(c.symbol) != "NQ");
    }
}

}  // namespace
}  // namespace vmr::test
