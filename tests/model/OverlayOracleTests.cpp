// The overlay series against plain computations, each written as directly as its definition reads.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "model/AppModel.h"
#include "model/OverlaySeries.h"
#include "model/PlainOverlays.h"
#include "model/SessionWalk.h"

namespace vmr::test {
namespace {

struct Scene {
    Bars raw, second, vix;
    HfByMin flow;
    SRSessions levels;
};

Scene scene(std::int64_t from, std::int64_t to, int hhmm, unsigned seed) {
    Scene s{futuresMinutes(from, to, seed, 21000),
            futuresMinutes(from, to, seed + 1, 6000),
            futuresMinutes(from, to, seed + 2, 1800),
            {},
            {}};
    std::mt19937 random(seed);
    for (Candle& bar : s.vix)
        if (random() % 7 == 0) bar.open = 0;  // a payload may lack it
    for (const Candle& bar : s.raw) {
        HfCandle minute;
        if (random() % 9 != 0) minute.c = (static_cast<double>(random() % 4001) - 2000) * 1e5;
        if (random() % 5 != 0) s.flow[bar.time] = minute;
        const std::int64_t open = plainSessionOpen(bar.time, hhmm);
        if (random() % 1000 == 0)
            s.levels[open] = {open,
                              random() % 2 ? 0.0 : bar.open,
                              {{3, "", bar.open + 90, 0}, {1, "", bar.open + 40, 0}, {1, "", bar.open + 70, 0}},
                              {{2, "", bar.open - 50, 0}, {1, "", bar.open + (random() % 2 ? 5 : -30), 0}}};
    }
    return s;
}

TEST(OverlaySeries, AgreeWithPlainComputations) {
    unsigned seed = 0;
    for (const auto& [from, to] : stretches())
        for (const auto& [tf, hhmm] : {std::pair{1, 1800}, {5, 930}, {60, 1800}}) {
            const std::string what = std::to_string(from) + " tf " + std::to_string(tf);
            const Scene s = scene(from, to, hhmm, ++seed);
            const Bars bars = plainAggregate(s.raw, tf);
            SessionTime session;
            EXPECT_GE(plainOpens(bars, hhmm).size(), 5U);

            const auto vwap = OverlaySeries::computeVWAP(bars, hhmm, session);
            EXPECT_GT(vwap.size(), 2U);
            expectNear(vwap, plainVwap(bars, hhmm), what);

            const auto second = OverlaySeries::computeSecond(bars, s.second, tf, hhmm, session);
            EXPECT_GT(second.size(), 2U);
            expectNear(second, plainSecond(bars, plainAggregate(s.second, tf), hhmm), what);

            const auto hf = OverlaySeries::computeHFLine(bars, s.flow, tf, hhmm, 2e-7, s.levels, session);
            EXPECT_GT(hf.size(), 50U);
            expectNear(hf, plainHf(bars, s.flow, tf, hhmm, 2e-7, s.levels), what);

            for (const int smooth : {-3, 1, 5, 64, 1'000'000}) {
                const auto vix = OverlaySeries::computeVIX(bars, s.vix, tf, hhmm, 0.08, smooth, session);
                EXPECT_GT(vix.size(), 40U);
                expectNear(vix, plainVix(bars, s.vix, tf, hhmm, 0.08, smooth),
                           what + " smooth " + std::to_string(smooth));
            }
        }
}

// In any order and over the clock changes, whatever the session's start.
TEST(SessionWalk, AnswersAsTheSessionClock) {
    std::mt19937 random(5);
    for (const auto& [from, to] : stretches())
        for (const int hhmm : {1800, 930, 0, 2359, 2430, -100, 999'999}) {
            SessionTime session;
            SessionWalk walk(session, hhmm);
            std::int64_t t = from;
            for (int i = 0; i < 3000; ++i) {
                t = i % 3 == 0 ? from + static_cast<std::int64_t>(random()) % (to - from)
                               : t + random() % 20'000 - 10'000;
                ASSERT_EQ(walk.open(t), session.sessionOpenSec(t, hhmm)) << t << " " << hhmm;
                ASSERT_EQ(walk.secondsOfDay(t), SessionWalk(session, hhmm).secondsOfDay(t)) << t;
                const std::int64_t day = walk.secondsOfDay(t);
                ASSERT_TRUE(day >= 0 && day < 86400);
            }
        }
}

TEST(OverlaySeries, EmaStartsAtTheFirstClose) {
    const Bars bars = futuresMinutes(1'780'000'000, 1'780'100'000, 3, 21000);
    const auto ema = OverlaySeries::computeEMA(bars, 9);
    ASSERT_EQ(ema.size(), bars.size());
    EXPECT_EQ(ema[0], (OvPoint{0, bars[0].close}));
    // the average as a weighted sum of all closes before
    for (const std::size_t at : {1, 2, 30, 200}) {
        double sum = bars[0].close * std::pow(0.8, static_cast<double>(at));
        for (std::size_t i = 1; i <= at; ++i) sum += 0.2 * bars[i].close * std::pow(0.8, static_cast<double>(at - i));
        EXPECT_NEAR(ema[at].v, sum, 1e-8);
    }
    EXPECT_TRUE(OverlaySeries::computeEMA(bars, 0).empty());
    EXPECT_TRUE(OverlaySeries::computeEMA({bars[0]}, 9).empty());
    EXPECT_EQ(OverlaySeries::computeEMA(bars, std::numeric_limits<std::int64_t>::max()).size(), bars.size());
}

TEST(OverlaySeries, ShowTheStockVwapInTheStockSession) {
    using namespace date::literals;
    const date::local_days wednesday(2026_y / 6 / 10), saturday(2026_y / 6 / 13);
    SessionTime session;
    const struct {
        std::int64_t t;
        int hhmm;
        bool shown;
    } cases[] = {{newYorkMoment(wednesday, 9, 29), 1800, false}, {newYorkMoment(wednesday, 9, 30), 1800, true},
                 {newYorkMoment(wednesday, 15, 59), 0, true},    {newYorkMoment(wednesday, 16), 1800, false},
                 {newYorkMoment(wednesday, 12), 930, false},     {newYorkMoment(saturday, 12), 1800, false}};
    for (const auto& c : cases) EXPECT_EQ(OverlaySeries::showsNyVWAP(c.t, c.hhmm, session), c.shown) << c.t;
}

TEST(OverlaySeries, GiveNothingForWhatCannotBeUsed) {
    using namespace date::literals;
    SessionTime session;
    const std::int64_t open = newYorkMoment(date::local_days(2026_y / 6 / 9), 18);
    const auto bar = [open](std::int64_t after, double price, double volume = 0) {
        return Candle{open + after, price, price, price, price, volume};
    };
    // no volume, no average; a bar without repeats it
    EXPECT_EQ(OverlaySeries::computeVWAP({bar(-60, 9, 9), bar(0, 1), bar(60, 2, 1), bar(120, 3)}, 1800, session),
              (std::vector<OvPoint>{{2, 2}, {3, 2}}));
    EXPECT_TRUE(OverlaySeries::computeVWAP({}, 1800, session).empty());

    const Bars primary = {bar(0, 100), bar(60, 101)};
    for (const double broken : {0.0, -1.0, std::nan(""), 1e-320, std::numeric_limits<double>::infinity()})
        EXPECT_TRUE(OverlaySeries::computeSecond(primary, {bar(0, broken), bar(60, 5)}, 1, 1800, session).empty())
            << broken;
    EXPECT_EQ(OverlaySeries::computeSecond(primary, {bar(-60, 40), bar(60, 50)}, 1, 1800, session),
              (std::vector<OvCandle>{{1, 100, 100, 100, 100, 50}}));  // no bar at the reference: the session's first

    // a first VIX bar whose open and close are 0 leaves its session without a line
    const std::int64_t morning = 33300;
    Bars vix = {bar(morning, 20), bar(morning + 60, 25)};
    const Bars chart = {bar(0, 100), bar(morning, 100), bar(morning + 60, 100)};
    EXPECT_EQ(OverlaySeries::computeVIX(chart, vix, 1, 1800, 1, 1, session),
              (std::vector<OvPoint>{{1, 100}, {2, 125}}));
    vix[0].open = vix[0].close = 0;
    EXPECT_TRUE(OverlaySeries::computeVIX(chart, vix, 1, 1800, 1, 1, session).empty());
    EXPECT_TRUE(OverlaySeries::computeVIX(chart, {vix[1]}, 1, 1800, 1, 1, session).empty());

    const Bars evening = {bar(0, 100), bar(22 * 3600 + 16 * 60 - 60, 100), bar(22 * 3600 + 16 * 60, 100)};
    HfCandle flow;
    flow.c = 1e8;
    HfByMin minutes;
    for (const Candle& at : evening) minutes[at.time] = flow;
    const auto line = OverlaySeries::computeHFLine(evening, minutes, 1, 1800, 1e-6, {}, session);
    EXPECT_EQ(line, (std::vector<OvColorPoint>{{1, 200, true, 100, 1e8}}));  // 18:00 and 16:16 are past 16:16
    EXPECT_TRUE(OverlaySeries::computeHFLine(evening, minutes, 1, 1800, 1e305, {}, session).empty());
}

}  // namespace
}  // namespace vmr::test
