// From a pane's model to its views: what comes there, when, and what does not.
#include <gtest/gtest.h>

#include <QMouseEvent>

#include "market/ClockSetting.h"
#include "model/SimTrading.h"
#include "support/pane/TestPane.h"
#include "ui/chart/ChartItem.h"
#include "ui/pane/PaneBinding.h"

namespace vmr::test {
namespace {

class PaneBindingTest : public PaneFixture {
 protected:
    void SetUp() override {
        openSymbol("NQ");
        snapshot(model->channels->chartChannel, flatBars(minute - 600, 11));
        binding = std::make_unique<PaneBinding>(*model, view, main, "no relay", "");
        count(session, &view.session, &SessionViewModel::enteredChanged, &SessionViewModel::signInChanged,
              &SessionViewModel::setupChanged, &SessionViewModel::userEmailChanged,
              &SessionViewModel::connectionChanged, &SessionViewModel::statusChanged);
        count(toolbar, &view.toolbar, &ToolbarViewModel::symbolChanged, &ToolbarViewModel::timeframeChanged,
              &ToolbarViewModel::expirationsChanged, &ToolbarViewModel::onChanged);
        count(toast, &view.toast, &ToastViewModel::changed);
        count(empty, &view.chart, &ChartViewModel::emptyChanged);
        flushed = binding->flushes();
    }
    template <class View, class... Notices>
    void count(int& counter, const View* from, Notices... notices) {
        (QObject::connect(from, notices, [&counter] { ++counter; }), ...);
    }
    // Flushes and notices since the last call.
    struct News {
        int flushes = 0, session = 0, toolbar = 0, toast = 0, empty = 0;
        bool operator==(const News&) const = default;
    };
    News news() {
        const auto flushes = static_cast<int>(binding->flushes() - std::exchange(flushed, binding->flushes()));
        return {flushes, std::exchange(session, 0), std::exchange(toolbar, 0), std::exchange(toast, 0),
                std::exchange(empty, 0)};
    }

    PaneViewModel view;
    std::unique_ptr<PaneBinding> binding;
    int session = 0, toolbar = 0, toast = 0, empty = 0;
    std::uint64_t flushed = 0;
};

TEST_F(PaneBindingTest, EachChangeTellsItsOwnConcernAndOnceATurn) {
    EXPECT_EQ(view.toolbar.symbol(), "NQ");
    EXPECT_TRUE(view.session.connected());
    EXPECT_TRUE(view.session.entered() && view.session.setupProblem() == "no relay");
    EXPECT_FALSE(view.chart.empty());

    model->notices.accountProblem = "not saved";
    time.runUntilIdle();
    EXPECT_EQ(view.chart.accountProblem(), "not saved");
    news();

    model->notices.flashToast("One");
    model->notices.flashToast("Two", "more");
    EXPECT_EQ(news(), (News{})) << "nothing in the middle of the turn";
    time.runUntilIdle();
    EXPECT_EQ(news(), (News{.flushes = 1, .toast = 1}));
    EXPECT_EQ(view.toast.notice(), "Two");

    for (int i = 0; i < 100; ++i) model->applyTrade(100 + i, time.now() * 1000);
    time.runUntilIdle();
    EXPECT_LE(binding->flushes(), flushed + 1);
    time.advance(0.1);  // the display is rebuilt at most 120 times a second
    EXPECT_LE(binding->flushes(), flushed + 2);
    EXPECT_EQ(model->bars.displayCandles->back().close, 199) << "they came";
    EXPECT_EQ(news().session + news().toolbar + news().toast + news().empty, 0);

    model->session.status = std::string("Reconnecting");
    model->bars.timeframe = 5;
    model->bars.timeframe = 1;
    time.runUntilIdle();
    EXPECT_EQ(news(), (News{.flushes = 1, .session = 1})) << "what is back where it was is no news";

    model->signOut();
    time.runUntilIdle();
    EXPECT_FALSE(view.session.entered());
    EXPECT_EQ(news().toolbar, 0);

    model->notices.flashToast("Three");
    binding.reset();
    time.runUntilIdle();
    EXPECT_EQ(view.toast.notice(), "Two") << "a flush under way ends with the binding";
}

TEST_F(PaneBindingTest, TheClocksTickTogetherOnceASecondAndOnlyWhileShown) {
    int countdowns = 0, clocks = 0;
    count(countdowns, &view.clocks, &ClockViewModel::countdownChanged);
    count(clocks, &view.clocks, &ClockViewModel::clockChanged);
    const auto told = [&] { return (view.clocks.countdown() + "|" + view.clocks.clock()).toStdString(); };
    const auto after = [&](double seconds) {
        time.advance(seconds);
        return std::tuple(told(), std::exchange(countdowns, 0), std::exchange(clocks, 0));
    };
    const auto set = [&](bool countdown, bool clock) {
        GexConfig config = model->config;
        config.showCountdown = countdown;
        config.showNyClock = clock;
        model->setConfig(config);
        time.runUntilIdle();
    };
    EXPECT_EQ(told(), "1:00|NY 10:00");
    EXPECT_EQ(after(1), std::tuple("0:59|NY 10:00", 1, 0));
    EXPECT_EQ(after(0.9), std::tuple("0:59|NY 10:00", 0, 0)) << "on the whole second";
    EXPECT_EQ(after(58.1), std::tuple("1:00|NY 10:01", 59, 1));
    model->setTimeframe(5);
    EXPECT_EQ(after(0), std::tuple("4:00|NY 10:01", 1, 0)) << "another timeframe shows at once";
    time.setSpeed(60);
    EXPECT_EQ(after(10), std::tuple("4:06|NY 10:10", 11, 9)) << "a fast clock ticks each 0.9 s";
    time.setSpeed(1);
    time.setNow(minute + 7 * 3600.0);
    EXPECT_EQ(after(0), std::tuple("closed|NY 17:00", 1, 1)) << "a clock that is set shows so at once";
    EXPECT_EQ(after(59), std::tuple("closed|NY 17:00", 0, 0)) << "what says nothing new costs no repaint";

    set(false, true);
    EXPECT_EQ(after(1), std::tuple("|NY 17:01", 1, 1));
    set(true, false);
    EXPECT_EQ(after(60), std::tuple("closed|", 1, 1));
    set(false, false);
    EXPECT_EQ(after(60), std::tuple("|", 1, 0));
    set(true, true);
    model->signOut();
    EXPECT_EQ(std::get<0>(after(0)), "|");
}

TEST_F(PaneBindingTest, TheTemplatesPanelShowsWhatThereIsAndClosesWithTheSession) {
    model->templates.list =
        TemplatesService::List{"slot_3", {{"slot_1", {{}, 1, "soon"}}, {"slot_3", {{{"ema1Period", "77"}}, 1, {}}}}};
    model->panels.templatesPanelOpen = true;
    time.runUntilIdle();
    EXPECT_TRUE(view.panels.templatesPanelOpen());
    QStringList rows;
    for (const QVariant& row : view.templates.slotRows()) {
        const QVariantMap told = row.toMap();
        rows += told["key"].toString() + told["digit"].toString() + told["date"].toString() +
                (told["present"].toBool() ? "+" : "-") + (told["preferred"].toBool() ? "*" : "");
    }
    EXPECT_EQ(rows, QStringList({"slot_11+", "slot_22empty-", "slot_33empty+*"}));
    view.templates.load("slot_3");
    time.runUntilIdle();
    EXPECT_EQ(model->config->ema1Period, 77);
    EXPECT_EQ(view.templates.status(), "Applied slot 3.");
    EXPECT_EQ(view.templates.pair(), "NQ_QQQ");

    model->signOut();
    time.runUntilIdle();
    EXPECT_FALSE(view.panels.templatesPanelOpen() || model->panels.templatesPanelOpen);
    EXPECT_FALSE(view.templates.known()) << "they were that person's";
}

TEST_F(PaneBindingTest, PanelsAndTheAccountGoBothWays) {
    view.panels.setAccountPanelOpen(true);
    EXPECT_TRUE(model->panels.accountPanelOpen);
    view.panelFrames.moved("account", {1, 2, 300, 200});
    EXPECT_EQ(model->panels.frames.at("account"), (std::array<double, 4>{1, 2, 300, 200}));
    view.panelFrames.closed("account");
    EXPECT_TRUE(model->panels.frames.empty());
    model->panels.accountPanelOpen = false;
    time.runUntilIdle();
    EXPECT_FALSE(view.panels.accountPanelOpen());
    view.panelFrames.keep("account", {3, 4, 500, 400});
    preferences.set("vmr.panel.other", R"({"x":9,"h":80})");
    EXPECT_EQ(view.panelFrames.restored("account", {}), QRectF(3, 4, 500, 400));
    EXPECT_EQ(view.panelFrames.restored("other", {1, 2, 3, 4}), QRectF(9, 2, 3, 80));

    view.panels.setConfigPanelOpen(true);
    view.settings.layOut(620);
    EXPECT_TRUE(model->panels.configPanelOpen && model->panels.settings);
    view.settings.beginGesture();
    view.settings.set("oiOpacity", 71);
    EXPECT_EQ(view.settings.texts()->value("oiOpacity"), "71 %");
    model->panels.configPanelOpen = false;
    time.runUntilIdle();
    EXPECT_FALSE(view.panels.configPanelOpen() || model->panels.settings);
    EXPECT_NE(preferences.get("gex-config").value_or("").find("\"oiOpacity\":71"), std::string::npos) << "in a drag";

    http.responder = nullptr;
    const auto reset = [&] {
        const AccountViewModel& account = view.account;
        return std::string(account.resetting() ? "under way " : "") + (account.resetSent() ? "sent " : "") +
               account.resetError().toStdString();
    };
    const std::size_t before = http.requests.size();
    view.account.resetPassword();
    view.account.resetPassword();
    EXPECT_EQ(reset(), "under way ");
    EXPECT_EQ(http.requests.size(), before + 1);
    EXPECT_NE(http.requests.back().body.find("\"a@b.c\""), std::string::npos);
    http.answer(500, "");
    time.runUntilIdle();
    EXPECT_EQ(reset(), "HTTP 500");
    view.account.startOver();
    EXPECT_EQ(reset(), "");
    view.account.resetPassword();
    view.account.startOver();
    EXPECT_EQ(reset(), "under way ") << "its answer is still to be told";
    http.answer(200, "");
    time.runUntilIdle();
    EXPECT_EQ(reset(), "sent ");

    int left = 0;
    view.session.setOnSignOutAndClose([&] { ++left; });
    view.session.signOutAndClose();
    EXPECT_TRUE(model->session.isSignedIn && left == 1);
    view.session.setOnSignOutAndClose({});
    view.session.signOutAndClose();
    EXPECT_FALSE(model->session.isSignedIn);

    view.session.signIn("new@b.c", "p", true);
    EXPECT_EQ(view.session.lastEmail(), "new@b.c");
    EXPECT_EQ(preferences.get("vmr.lastEmail"), "new@b.c");
    view.session.cancelSignIn();
    EXPECT_FALSE(model->session.signingIn);
}

// Each answers by whoever asked first on that day, which in the night was by summer's time: it is 18:30 there.
TEST_F(PaneBindingTest, ChartPaneAndAccountAgreeOnTheSundayOfAClockChange) {
    SimEngine account({time, TestPane::session, UuidSource(5)});
    SimTrading trading(account);
    GexConfig config = model->config;
    config.simEnabled = true;
    model->setConfig(config);
    time.setNow(*parseMoment("2026-11-01T00:30-04:00"));
    model->rollForwardBarIfNeeded();
    time.setNow(*parseMoment("2026-11-01T17:30-05:00"));
    struct Chart : ChartItem {
        void recordNow() { record(gpu(), {900, 600}, 1, 0); }
    } chart;
    PaneViewModel::Surroundings at;
    at.clock = &time;
    at.session = &model->sessionTime();
    at.main = &main;
    at.trading = &trading;
    view.setSurroundings(at);
    chart.setPane(&view);
    chart.recordNow();
    chart.renderer().mirrorView(0, 10);
    chart.renderer().mirrorPrice(90, 110);
    QMouseEvent press(QEvent::MouseButtonPress, {300, 500}, {300, 500}, Qt::RightButton, Qt::RightButton, {});
    QCoreApplication::sendEvent(&chart, &press);
    chart.chooseOrder(0);
    EXPECT_FALSE(model->notices.marketClosedNotice) << "the chart's clock";
    EXPECT_EQ(account.orders().size(), 1u) << "the account's";
    model->rollForwardBarIfNeeded();
    EXPECT_EQ(model->bars.candles.back().time, time.now()) << "the pane's";
}

}  // namespace
}  // namespace vmr::test
