// Windows come, split, close and come back, over real sockets.
#include "workspace/ShellWindows.h"

#include <gmock/gmock.h>

#include "store/WorkspaceRecord.h"
#include "tests/workspace/LivePanes.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

class Windows : public LivePanes {
 protected:
    ~Windows() override { end(); }

    /// A process begins, with what the last one has left.
    void begin() {
        store = std::make_unique<WorkspaceStore>(preferences, loop);
        host->open();
        windows = std::make_unique<ShellWindows>(*host, *store, preferences, loop);
        windows->onOpened = [this](WindowPanes& window) {
            window.frame = [this, number = window.number()] { return std::optional(frames[number]); };
            told.push_back("window " + std::to_string(window.number()));
        };
        windows->onPaneClosing = [this](WindowPanes& window, AppModel& pane) {
            EXPECT_TRUE(&pane == &window.primary() || !window.dual()) << "no longer the window's";
            told.push_back("no " + pane.currentSymbol());
        };
        windows->onClosing = [this](WindowPanes& window) {
            told.push_back("no window " + std::to_string(window.number()));
        };
        windows->openFirst(false);
    }
    void end() {
        if (store) store->saveAtEnd();
        windows.reset();
        store.reset();
        for (const int pane : host->numbers()) {
            host->setShown(pane, false);
            host->close(pane);
        }
        EXPECT_TRUE(noSocketIsLeft());
        told.clear();
    }
    bool signIn() { return LivePanes::signIn(host->numbers().front()); }
    /// Number, panes' symbols and split of each window, once all of them stream.
    std::vector<std::string> shown(std::size_t panes) {
        EXPECT_TRUE(runUntil([&] {
            const auto numbers = host->numbers();
            return numbers.size() == panes &&
                   std::ranges::all_of(numbers, [this](int pane) { return streaming(pane); });
        }));
        std::vector<std::string> out;
        for (WindowPanes* window : windows->all()) {
            std::string text = std::to_string(window->number()) + " " + window->primary().currentSymbol() + "/" +
                               std::to_string(window->primary().bars.timeframe.get());
            if (const AppModel* dual = window->dual())
                text += " " + dual->currentSymbol() + "/" + std::to_string(dual->bars.timeframe.get()) + " at " +
                        std::to_string(window->split()).substr(0, 4);
            out.push_back(text);
        }
        return out;
    }

    std::map<int, std::array<double, 4>> frames{{1, {500, 0, 800, 600}}, {2, {0, 0, 800, 600}}, {3, {9, 9, 9, 9}}};
    std::vector<std::string> told;
    std::unique_ptr<WorkspaceStore> store;
    std::unique_ptr<ShellWindows> windows;
};

TEST_F(Windows, ComeBackWithSplitAndSecondPaneFromTheLeft) {
    begin();
    ASSERT_TRUE(signIn());
    EXPECT_THAT(shown(1), ElementsAre("1 NQ/1"));
    WindowPanes& first = *windows->all().front();
    const std::string tab = first.primary().presence.tabId();
    ASSERT_TRUE(first.toggleDual());
    EXPECT_EQ(first.dual()->presence.tabId(), tab + "d");
    for (const AppModel* pane : {&first.primary(), first.dual()})
        EXPECT_EQ(pane->presence.pageKind(), PresenceReporter::dual);
    first.setSplit(0.3);
    first.setSplit(1);  // leaves no second pane
    first.dual()->applyRestore({"ES", 5, "BOTH"});
    ASSERT_TRUE(windows->open());
    windows->all().back()->primary().applyRestore({"AAPL", 15, "ETF"});
    EXPECT_THAT(shown(3), ElementsAre("1 NQ/1 ES/5 at 0.30", "2 AAPL/15"));
    EXPECT_THAT(told, ElementsAre("window 1", "window 2"));
    end();

    begin();
    EXPECT_THAT(shown(3), ElementsAre("1 AAPL/15", "2 NQ/1 ES/5 at 0.30")) << "the left one first";
    WindowPanes& second = *windows->all().back();
    EXPECT_EQ(second.dual()->config->gexSource, "BOTH");
    EXPECT_EQ(second.takeFrame(), std::vector<double>({500, 0, 800, 600}));
    EXPECT_EQ(second.takeFrame(), std::nullopt) << "once";
    told.clear();
    ASSERT_TRUE(second.toggleDual());
    EXPECT_EQ(second.primary().presence.pageKind(), PresenceReporter::single);
    windows->close(1);
    windows->close(2);
    EXPECT_THAT(told, ElementsAre("no ES", "no AAPL", "no window 1")) << "and the last one stays";
    EXPECT_EQ(host->size(), 1u);
}

TEST_F(Windows, ShareTheLimitOfPanes) {
    begin();
    ASSERT_TRUE(signIn());
    ShellSurroundings at = shell();
    at.windows = windows.get();
    ShellCommands commands(at);
    for (const auto& [line, answer] : {std::pair("sync on", "error: the window shows one pane; see dual"),
                                       {"dual on", "ok dual pane 2"},
                                       {"sync on", "ok sync on"},
                                       {"window open", "ok window 2"},
                                       {"@3 dual on", "ok dual pane 4"},
                                       {"@3 dual on", "ok dual pane 4"},
                                       {"window open", "error: at most 4 panes can be open"},
                                       {"pane close 4", "error: a window shows pane 4"},
                                       {"@4 dual off", "ok dual off"},
                                       {"window open", "ok window 3"},
                                       {"@3 dual on", "error: at most 4 panes can be open"},
                                       {"split 2", "error: split needs the left pane's share, above 0 and below 1"},
                                       {"split 0.7", "ok split 0.7"},
                                       {"window close 4", "error: there is no window 4"},
                                       {"window close 3", "ok window 3 closed"},
                                       {"window close 2", "ok window 2 closed"},
                                       {"window close 1", "error: window 1 is the last one; see quit"}}) {
        answers.clear();
        commands.run(line);
        EXPECT_THAT(answers, ElementsAre(answer)) << line;
    }
    EXPECT_EQ(preferences.get(ShellWindows::splitKey), "0.7");
    EXPECT_TRUE(windows->facts().at(0).sync);
    ASSERT_TRUE(windows->find(1)->toggleDual());
    EXPECT_FALSE(windows->facts().at(0).sync);
}

TEST_F(Windows, OneTooManyIsRefusedByTheServiceInItsOwnPane) {
    std::vector<WindowRecord> last(3, {{0, 0, 800, 600}, 0.5, {"NQ", 1, "ETF"}, PaneState{"ES", 1, "ETF"}});
    last.push_back({{0, 0, 800, 600}, {}, {"GC", 1, "ETF"}, {}});
    preferences.set(WorkspaceStore::key, *workspaceText(last));
    begin();
    ASSERT_TRUE(signIn());
    ASSERT_TRUE(runUntil([&] { return host->size() == 6; }));
    const auto refused = [](const AppModel* pane) { return bool(pane->session.connLimited); };
    EXPECT_TRUE(runUntil([&] { return std::ranges::count_if(host->models(), refused) == 2; })) << "whoever comes last";
    EXPECT_EQ(windows->size(), 4u);
    EXPECT_EQ(windows->find(3)->dual(), nullptr) << "a second pane is not brought back beyond the limit";
}

TEST_F(Windows, SigningOutKeepsThemForTheNextSession) {
    begin();
    ASSERT_TRUE(signIn());
    EXPECT_THAT(shown(1), ElementsAre("1 NQ/1")) << "a first chart is the last symbol's of any pane";
    ASSERT_TRUE(windows->all().front()->toggleDual());
    ASSERT_TRUE(windows->open());
    windows->find(1)->dual()->applyRestore({"ES", 5, "ETF"});
    windows->find(2)->primary().applyRestore({"GC", 3, "ETF"});
    EXPECT_THAT(shown(3), ElementsAre("1 NQ/1 ES/5 at 0.50", "2 GC/3"));

    windows->signOut(2);
    ASSERT_EQ(windows->size(), 1u);
    EXPECT_EQ(host->size(), 1u);
    EXPECT_FALSE(windows->find(2)->entered());
    ASSERT_TRUE(signIn());
    EXPECT_THAT(shown(3), ElementsAre("2 GC/3", "3 NQ/1 ES/5 at 0.50"));
    EXPECT_EQ(windows->find(2)->takeFrame(), std::vector<double>({0, 0, 800, 600})) << "again";

    // a session that ends by itself, heard of in a second pane
    windows->find(3)->dual()->signOut();
    ASSERT_TRUE(runUntil([&] { return host->size() == 1; }));
    ASSERT_EQ(windows->size(), 1u) << "one form is enough";
    EXPECT_FALSE(windows->all().front()->entered());
    ASSERT_TRUE(signIn());
    EXPECT_EQ(shown(3).size(), 2u);
}

}  // namespace
}  // namespace vmr::test
