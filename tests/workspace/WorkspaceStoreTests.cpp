// What comes back of the windows of the last run.
#include "workspace/WorkspaceStore.h"

#include <gmock/gmock.h>

#include <limits>

#include "support/time/TestTime.h"
#include "workspace/WindowPlacing.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

struct CountedPreferences final : Preferences {
    std::optional<std::string> get(std::string_view key) const override { return kept.get(key); }
    std::vector<std::string> keys(std::string_view prefix) const override { return kept.keys(prefix); }
    void set(std::string_view key, std::string_view value) override {
        ++writes;
        kept.set(key, value);
    }
    void remove(std::string_view key) override { kept.remove(key); }
    MemoryPreferences kept;
    int writes = 0;
};

class Workspace : public testing::Test {
 protected:
    struct Window {
        std::optional<PaneFacts> primary, dual;
        std::optional<std::array<double, 4>> frame;
        std::shared_ptr<WorkspaceWindowBox> box = std::make_shared<WorkspaceWindowBox>();
    };
    Window& open(double x, const std::string& channel, const std::string& symbol) {
        auto& window = *windows.emplace_back(std::make_unique<Window>());
        window.primary = PaneFacts{true, channel, {symbol, 5, "ETF"}};
        window.frame = {{x, 10, 800, 600}};
        window.box->id = ids.next();
        window.box->primary = [&window] { return window.primary; };
        window.box->dual = [&window] { return window.dual; };
        window.box->frame = [&window] { return window.frame; };
        store.registerBox(window.box);
        return window;
    }
    std::vector<std::string> symbolsNow() {
        time.advance(3.1);
        std::vector<std::string> out;
        for (const WindowRecord& record : store.current()) out.push_back(record.primary.symbol);
        return out;
    }

    TestTime time;
    TestQueue main{time};
    CountedPreferences preferences;
    UuidSource ids{1};
    WorkspaceStore store{preferences, main};
    std::vector<std::unique_ptr<Window>> windows;
};

TEST_F(Workspace, StoresTheWindowsFromLeftToRightWhenTheyChange) {
    Window& right = open(500, "futures:NQU6", "NQ");
    Window& left = open(-20.5, "stocks:AAPL", "AAPL");
    left.dual = PaneFacts{true, "futures:ESU6", {"", 1, "BOTH"}};
    left.box->split = 0.25;
    open(0, "futures:ZBU6", "ZB");
    open(0, "", "");
    EXPECT_THAT(symbolsNow(), ElementsAre("AAPL", "NQ"))
        << "what no catalog has to know, and no window without a chart";
    const std::string pane = R"("symbol":"NQ","timeframe":5,"gexSource":"ETF"})";
    EXPECT_EQ(preferences.get(WorkspaceStore::key), R"([{"frame":[-20.5,10.0,800.0,600.0],"split":0.25,)"
                                                    R"("primary":{"symbol":"AAPL","timeframe":5,"gexSource":"ETF"},)"
                                                    R"("dual":{"symbol":"NQ","timeframe":1,"gexSource":"BOTH"}},)"
                                                    R"({"frame":[500.0,10.0,800.0,600.0],"primary":{)" +
                                                        pane + "}]");
    time.advance(60);
    EXPECT_EQ(preferences.writes, 1);

    right.frame.reset();
    EXPECT_THAT(symbolsNow(), ElementsAre("AAPL"));
    left.primary->isSignedIn = false;
    EXPECT_THAT(symbolsNow(), ElementsAre("AAPL")) << "a sign-out wipes nothing";
    store.remove(left.box->id);
    right.frame = {{1, 2, 3, 4}};
    right.primary->state.timeframe = 15;
    store.saveAtEnd();
    EXPECT_EQ(store.current().at(0).primary.timeframe, 15);
    store.remove(right.box->id);
    EXPECT_EQ(preferences.writes, 3);
}

TEST_F(Workspace, APaneThatHasNoChartYetKeepsWhatItClaimed) {
    Window& window = open(500, "", "");
    window.dual = PaneFacts{true, "", {"", 1, "ETF"}};
    EXPECT_THAT(symbolsNow(), ElementsAre()) << "it has claimed nothing";
    window.box->rec = WindowRecord{{1, 2, 3, 4}, 0.3, {"GC", 3, "ETF"}, PaneState{"ES", 5, "BOTH"}};
    EXPECT_THAT(symbolsNow(), ElementsAre("GC"));
    EXPECT_EQ(store.current().at(0).dual, window.box->rec->dual);
    EXPECT_EQ(store.current().at(0).frame.at(0), 500) << "it stands where it stands";
    window.primary = PaneFacts{true, "futures:NQU6", {"NQ", 1, "ETF"}};
    EXPECT_THAT(symbolsNow(), ElementsAre("NQ"));
}

TEST_F(Workspace, EachWindowClaimsARecordOfTheLastRun) {
    open(500, "futures:NQU6", "NQ");
    open(1, "futures:ESU6", "ES");
    symbolsNow();
    WorkspaceStore next(preferences, main);
    EXPECT_EQ(next.claimNext()->primary.symbol, "ES");
    EXPECT_EQ(next.nextRecord()->primary.symbol, "NQ");
    EXPECT_TRUE(next.takeSpawn());
    EXPECT_FALSE(next.takeSpawn());
    EXPECT_EQ(next.claimNext()->primary.symbol, "NQ");
    EXPECT_EQ(next.claimNext(), std::nullopt);
    EXPECT_EQ(next.current(), store.current());
    const int before = preferences.writes;
    next.saveAtEnd();
    EXPECT_EQ(preferences.writes, before + 1) << "what was read is written once";
}

TEST(WindowPlacing, FramesAreStoredFromTheBottomLeftOfTheFirstScreen) {
    // a panel of 40 on top of the first screen; a second one to the left and further up
    const ScreenRect first{0, 0, 1920, 1080}, left{-1280, -200, 1280, 1024};
    const Screens screens{first, {0, 40, 1920, 1040}, {{0, 40, 1920, 1040}, left}};
    const struct {
        ScreenRect window;
        std::array<double, 4> stored;
    } frames[] = {{{0, 0, 1920, 1080}, {0, 0, 1920, 1080}},
                  {{100, 50, 800, 600}, {100, 430, 800, 600}},
                  {{-1200, -150, 700, 500}, {-1200, 730, 700, 500}}};
    for (const auto& [window, stored] : frames) {
        EXPECT_EQ(storedFrame(window, first), stored);
        EXPECT_EQ(screenFrame(stored, first), window);
        EXPECT_EQ(enteredPlace(screens, std::vector(stored.begin(), stored.end()), {}), window);
    }
    const ScreenRect moved{10, 20, 1000, 800};
    EXPECT_EQ(screenFrame(storedFrame({15, 25, 30, 40}, moved), moved), (ScreenRect{15, 25, 30, 40}));

    EXPECT_EQ(signInPlace(screens), (ScreenRect{460, 270, 1000, 580}));
    EXPECT_EQ(signInPlace({first, {5, 6, 800, 500}, {}}), (ScreenRect{5, 6, 1000, 580})) << "its corner is seen";
    const auto all = screens.own;
    EXPECT_EQ(enteredPlace(screens, {}, {}), all);
    EXPECT_EQ(enteredPlace(screens, std::vector<double>{1, 2, 3}, {}), all);
    for (const double side : {1e300, 1e9, 0.0, -5.0, double(NAN)})
        EXPECT_EQ(enteredPlace(screens, std::vector<double>{0, 0, 800, side}, {}), all) << side;
    EXPECT_EQ(enteredPlace(screens, std::vector<double>{5000, 0, 800, 600}, {}), all) << "its screen is gone";
    EXPECT_EQ(enteredPlace(screens, std::vector<double>{1920, 0, 800, 600}, {}), all) << "beside the screen";
    EXPECT_EQ(enteredPlace(screens, std::vector<double>{1919, 0, 800, 600}, {}), (ScreenRect{1919, 480, 800, 600}))
        << "it barely touches one";
    EXPECT_EQ(enteredPlace(screens, std::vector<double>{1, 2, 3, 4}, ScreenRect{0, 0, 1400, 900}),
              (ScreenRect{260, 110, 1400, 900}));
}

TEST(WorkspaceText, OneBadRecordRejectsAll) {
    const std::string pane = R"({"symbol":"NQ","timeframe":1,"gexSource":"ETF"})";
    const auto window = [](const std::string& frame, const std::string& primary, const std::string& more = {}) {
        return R"([{"frame":)" + frame + R"(,"primary":)" + primary + more + "}]";
    };
    for (const std::string& good : {window("[1,2,3,4]", pane), window("[1,2,3]", pane), window("[]", pane),
                                    window("[1]", pane, R"(,"split":null,"dual":null,"x":1)"), std::string("[]")})
        EXPECT_TRUE(parseWorkspace(good)) << good;
    for (const std::string& bad :
         {std::string("{}"), std::string("[1]"), std::string("["), window("{}", pane), window("[\"1\"]", pane),
          window("[1]", "{}"), window("[1]", R"({"symbol":1,"timeframe":1,"gexSource":""})"),
          window("[1]", R"({"symbol":"","timeframe":1.5,"gexSource":""})"), window("[1]", pane, R"(,"split":"a")"),
          window("[1]", pane, R"(,"dual":{})"), std::string("[{}]")})
        EXPECT_FALSE(parseWorkspace(bad)) << bad;
    const WindowRecord whole{{1, 2.5, 3, 4}, 0.3, {"NQ", 5, "ETF"}, PaneState{"é\"", 1, ""}};
    EXPECT_EQ(parseWorkspace(*workspaceText({whole, whole})), (std::vector{whole, whole}));
    EXPECT_EQ(workspaceText({{{std::numeric_limits<double>::infinity()}, {}, {}, {}}}), std::nullopt);
}

}  // namespace
}  // namespace vmr::test
