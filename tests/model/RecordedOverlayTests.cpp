// A recorded practice session over a weekend and a clock change: every overlay series against the plain computation.
#include "model/PlainOverlays.h"
#include "model/RecordedMarket.h"
#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using namespace date::literals;

// Timeframes and starts of the session.
constexpr std::pair<int, int> variants[] = {{1, 1800}, {5, 930},   {15, 0},  {5, 1800}, {15, 930},
                                            {1, 0},    {15, 1800}, {1, 930}, {5, 0}};

/// A pane that is shown the recording, and beside it the plain series.
class Player {
 public:
    explicit Player(double start) : pane_(start, speed) {
        pane_.openSymbol("NQ");
        GexConfig all = pane_.model->config;
        all.vwapEnabled = all.vwapNyEnabled = all.showSecondary = all.hfEnabled = all.vixEnabled = true;
        all.ema1Enabled = all.ema2Enabled = true;
        all.hfScaleBySymbol["NQ"] = 7;
        pane_.model->setConfig(all);
    }

    void play(const relay::RecordedFrame& frame) {
        moveTo(static_cast<double>(frame.timeMs) / 1000);
        plain_.take(pane_.time.now(), frame);
        pane_.frame(*frame.frame.bytes);
    }
    /// The series as the last frames left them, then those of the next variant made anew.
    void checkAt(double t) {
        moveTo(t);
        check();
        const auto [tf, hhmm] = variants[++shown_ % std::size(variants)];
        GexConfig config = model().config;
        config.sessionStart = hhmm;
        model().setConfig(config);
        model().setTimeframe(tf);
        check();
    }
    AppModel& model() { return *pane_.model; }
    std::map<std::string, std::size_t> points;  ///< compared, by series
    std::size_t byLevels = 0;                   ///< of these, HF points that a level has scaled

 private:
    static constexpr double speed = 60;

    // Longer stretches are slept through: no timer runs in them.
    void moveTo(double t) {
        const double gap = t - pane_.time.now();
        if (gap > 600) pane_.time.setNow(t);
        if (gap > 0 && gap <= 600) pane_.time.advance(gap / speed);
    }
    void check() {
        pane_.time.advance(0.02);  // the throttled rebuilds
        plain_.chart.roll(pane_.time.now());
        const int tf = model().bars.timeframe, hhmm = static_cast<int>(model().config->sessionStart);
        const std::string what =
            std::to_string(pane_.time.now()) + " tf " + std::to_string(tf) + " start " + std::to_string(hhmm);
        const Bars raw = plain_.chart.bars(), second = plain_.second.bars(), vix = plain_.vix.bars();
        const Bars bars = plainAggregate(raw, tf);
        ASSERT_EQ(model().bars.displayCandles.get(), bars) << what;
        const OverlaySet& got = model().overlays.series();
        const double scale = 7.0 / 5.0 * 2e-7;  // the user's over the standard one for NQ, times that of QQQ's flow
        const OverlaySettings all{tf, hhmm, true, true, true, true, true, true, true, 9, 200, scale, 0.08, 5};
        expectPlain(got, {bars, second, vix, plain_.flow, plain_.levels, 0, all}, what, points);
        const auto unscaled = plainHf(bars, plain_.flow, tf, hhmm, scale, {});
        for (std::size_t i = 0; i < unscaled.size(); ++i) byLevels += unscaled[i].v != got.hfLine.at(i).v;
        EXPECT_EQ(got.vixSpot, vix.back().close) << what;
        const auto& lines = model().sessionLevels.srLines.get();
        points["lines"] += lines.size();
        EXPECT_EQ(lines, plainLines(raw, plain_.levels, hhmm)) << what;
    }

    TestPane pane_;
    PlainSeries plain_;
    std::size_t shown_ = 0;
};

void playAndCompare(const char* month, const std::vector<LiveStretch>& season) {
    const auto frames = record(11, month, season);
    auto next = frames.begin();
    Player player(static_cast<double>(season.front().from));
    for (const LiveStretch& live : season) {
        // not in a session's first two minutes: a new bar makes the lines anew, and the bars before it may then be sent
        // once more as they ended
        const double middle = static_cast<double>(live.from + live.to) / 2 + 153;
        for (const double moment : {middle, static_cast<double>(live.to) + 2}) {
            for (; next != frames.end() && static_cast<double>(next->timeMs) < moment * 1000; ++next)
                player.play(*next);
            ASSERT_NO_FATAL_FAILURE(player.checkAt(moment));
        }
    }
    EXPECT_EQ(player.model().channels->chartChannel, std::string("futures:NQ") + month);
    for (const auto& [series, count] : player.points) EXPECT_GT(count, 150U) << series;
    EXPECT_GT(player.byLevels, 1000U);
}

std::int64_t at(unsigned month, unsigned day, int hour, int minute) {
    return newYorkMoment(date::local_days(2026_y / month / day), hour, minute);
}

TEST(RecordedOverlays, AgreeWithPlainComputationsOverTheSpringChange) {
    playAndCompare("H6", {{at(3, 6, 15, 20), at(3, 6, 16, 19), 20},
                          {at(3, 8, 17, 57), at(3, 8, 18, 6), 7},
                          {at(3, 9, 9, 20), at(3, 9, 9, 40), 7},
                          {at(3, 9, 16, 57), at(3, 9, 18, 3), 20},
                          {at(3, 10, 10, 0), at(3, 10, 10, 20), 7}});
}

TEST(RecordedOverlays, AgreeWithPlainComputationsOverTheAutumnChange) {
    playAndCompare("Z6", {{at(11, 2, 15, 40), at(11, 2, 16, 4), 7}, {at(11, 3, 9, 25), at(11, 3, 9, 35), 7}});
}

}  // namespace
}  // namespace vmr::test
