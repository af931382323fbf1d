// The kept series after every kind of change against the same made from nothing, and these against plain computations.
#include "model/OverlayBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "model/AppModel.h"
#include "model/OverlaySeries.h"
#include "model/PlainOverlays.h"
#include "model/SessionWalk.h"

namespace vmr::test {
namespace {

// A pane's data under random change.
class Stream {
 public:
    explicit Stream(unsigned seed) : random_(seed) {
        const auto [from, to] = stretches()[seed % stretches().size()];
        future_ = futuresMinutes(from, to, seed, 21000);
        next_ = 100 + pick(2000);
        raw.assign(future_.begin(), future_.begin() + static_cast<std::ptrdiff_t>(next_));
        settings.vwapEnabled = settings.vwapNyEnabled = settings.showSecondary = settings.hfEnabled = true;
        settings.vixEnabled = settings.ema1Enabled = settings.ema2Enabled = true;
        settings.ema1Period = 9;
        settings.ema2Period = 200;
        settings.hfFallbackScale = 2e-7;
        settings.vixScale = 0.08;
        settings.vixSmooth = 5;
        for (const Candle& bar : raw) addSides(bar);
    }

    void change() {
        const std::size_t kind = pick(16), some = pick(raw.size() - 2);
        if (kind < 4) trade();
        if (kind >= 4 && kind < 7) appendBar();
        if (kind == 7)
            for (int i = 0; i < 90; ++i) appendBar();
        if (kind == 8) {
            appendBar();
            raw.erase(raw.begin());
        }
        if (kind == 9) raw[some].volume += 5;
        if (kind == 10) raw.erase(raw.begin() + static_cast<std::ptrdiff_t>(some));
        if (kind == 11) raw.back().open += 0.25;
        if (kind == 12) second.back().close += 1;
        if (kind == 13) hf[raw[some].time].c = step() * 1e7;
        if (kind == 14) changeLevels(plainSessionOpen(raw[some].time, settings.sessionHHMM));
        if (kind == 15) changeSettings();
        sideRevision += kind == 13 || kind == 14;
        aggregate(raw, settings.timeframe, bars);
    }

    OverlayInput input() const { return {bars, second, vix, hf, levels, sideRevision, settings}; }

    std::vector<Candle> raw, bars, second, vix;
    HfByMin hf;
    SRSessions levels;
    std::uint64_t sideRevision = 0;
    OverlaySettings settings;

 private:
    std::size_t pick(std::size_t count) { return random_() % count; }
    double step() { return static_cast<double>(pick(41)) - 20; }

    void trade() {
        Candle& last = raw.back();
        last.close += step() / 4;
        last.high = std::max(last.high, last.close);
        last.low = std::min(last.low, last.close);
    }
    void appendBar() {
        if (next_ == future_.size()) return;
        raw.push_back(future_[next_++]);
        addSides(raw.back());
        ++sideRevision;
    }
    void addSides(const Candle& bar) {
        if (pick(8) != 0) second.push_back({bar.time, bar.open / 4, bar.high / 4, bar.low / 4, bar.close / 4, 0});
        if (pick(8) != 0) vix.push_back({bar.time, pick(7) ? 18 + step() / 50 : 0, 0, 0, 18 + step() / 50, 0});
        if (pick(3) != 0) hf[bar.time].c = step() * 1e7;
    }
    void changeLevels(std::int64_t open) {
        levels[open] = {open,
                        pick(2) ? 0.0 : 21000,
                        {{3, "", 21300, 0}, {1, "", 21000 + step() * 10, 0}},
                        {{1, "", 20900 + step() * 10, 0}}};
    }
    void changeSettings() {
        constexpr bool OverlaySettings::*flags[] = {&OverlaySettings::vwapEnabled, &OverlaySettings::vwapNyEnabled,
                                                    &OverlaySettings::hfEnabled, &OverlaySettings::vixEnabled,
                                                    &OverlaySettings::ema1Enabled};
        const std::size_t kind = pick(8);
        if (kind < std::size(flags)) settings.*flags[kind] = !(settings.*flags[kind]);
        if (kind == 5) settings.timeframe = static_cast<int>(1 + pick(3) * 7);
        if (kind == 6) settings.sessionHHMM = settings.sessionHHMM == 930 ? 1800 : 930;
        if (kind == 7) settings.vixSmooth = static_cast<std::int64_t>(pick(50));
    }

    std::mt19937 random_;
    std::vector<Candle> future_;
    std::size_t next_ = 0;
};

void expectSame(const OverlaySet& kept, const OverlaySet& fresh) {
    ASSERT_EQ(kept.vwapMain, fresh.vwapMain);
    ASSERT_EQ(kept.vwapNY, fresh.vwapNY);
    ASSERT_EQ(kept.secondCandles, fresh.secondCandles);
    ASSERT_EQ(kept.hfLine, fresh.hfLine);
    ASSERT_EQ(kept.vixLine, fresh.vixLine);
    ASSERT_EQ(kept.ema1, fresh.ema1);
    ASSERT_EQ(kept.ema2, fresh.ema2);
}

void expectPlain(const OverlaySet& kept, const OverlayInput& in) {
    const OverlaySettings& on = in.settings;
    const int tf = on.timeframe, hhmm = on.sessionHHMM;
    if (on.vwapEnabled) expectNear(kept.vwapMain, plainVwap(in.bars, hhmm), "VWAP");
    if (on.vwapNyEnabled) expectNear(kept.vwapNY, plainNyVwap(in.bars, hhmm), "New York VWAP");
    expectNear(kept.secondCandles, plainSecond(in.bars, plainAggregate(in.secondaryRaw, tf), hhmm), "second");
    if (on.hfEnabled)
        expectNear(kept.hfLine, plainHf(in.bars, in.hfByMin, tf, hhmm, on.hfFallbackScale, in.srSessions), "HF");
    if (on.vixEnabled)
        expectNear(kept.vixLine, plainVix(in.bars, in.vix, tf, hhmm, on.vixScale, static_cast<int>(on.vixSmooth)),
                   "VIX");
    expectNear(kept.ema2, plainEma(in.bars, 200), "EMA");
}

TEST(OverlayBuilder, KeepsExactlyWhatAFreshBuildGives) {
    std::size_t shownNy = 0, points = 0;
    for (unsigned seed = 0; seed < 12; ++seed) {
        SessionTime session;
        Stream stream(seed);
        OverlayBuilder builder(session);
        for (int round = 0; round < 150; ++round) {
            SCOPED_TRACE(std::to_string(seed) + " " + std::to_string(round));
            stream.change();
            builder.update(stream.input());
            const OverlaySet& kept = builder.series();
            OverlayBuilder fresh(session);
            fresh.update(stream.input());
            ASSERT_NO_FATAL_FAILURE(expectSame(kept, fresh.series()));
            if (round % 75 == 74) {
                ASSERT_NO_FATAL_FAILURE(expectPlain(kept, stream.input()));
            }
            shownNy += kept.vwapNY.empty() ? 0 : 1;
            points += kept.hfLine.size() + kept.vixLine.size();
        }
    }
    EXPECT_GT(shownNy, 100U);
    EXPECT_GT(points, 100'000U);
}

// A session whose first bar still forms, while the VIX has run ahead.
TEST(OverlayBuilder, FollowsTheOpenOfASessionThatBegins) {
    using namespace date::literals;
    const std::int64_t open = newYorkMoment(date::local_days(2026_y / 6 / 10), 9, 30);
    SessionTime session;
    OverlayBuilder builder(session);
    Stream stream(3);
    stream.settings.sessionHHMM = 930;
    stream.bars = {{open - 60, 1, 1, 1, 1, 0}, {open, 100, 100, 100, 100, 0}};
    stream.vix = {{open, 20, 0, 0, 20, 0}, {open + 60, 20, 0, 0, 20, 0}, {open + 33300, 20, 0, 0, 20, 0}};
    for (const double price : {100.0, 104.0}) {
        stream.bars.back().open = price;
        builder.update(stream.input());
        EXPECT_EQ(builder.series().vixLine, (std::vector<OvPoint>{{1, price}}));
    }
}

TEST(OverlayBuilder, FewerThanTwoBarsEmptyEverySeries) {
    SessionTime session;
    Stream stream(1);
    OverlayBuilder builder(session);
    stream.change();
    builder.update(stream.input());
    stream.bars.resize(1);
    builder.update(stream.input());
    expectSame(builder.series(), {});
}

TEST(OverlayBuilder, TakesAnyTimesAndNumbers) {
    const double nan = std::nan("");
    SessionTime session;
    Stream stream(2);
    stream.bars = {{std::numeric_limits<std::int64_t>::min(), 1, 2, 3, 4, 5},
                   {-60, nan, nan, nan, nan, nan},
                   {0, 1e308, 1e308, 1e308, 1e308, 1e308},
                   {std::numeric_limits<std::int64_t>::max(), 1, 2, 3, 4, 5}};
    stream.second = stream.vix = stream.bars;
    for (const Candle& bar : stream.bars) stream.hf[bar.time].c = bar.close;
    OverlayBuilder builder(session);
    for (const auto& [tf, hhmm] : {std::pair{0, -5000}, {7, 1800}, {INT32_MAX, INT32_MAX}}) {
        stream.settings.timeframe = tf;
        stream.settings.sessionHHMM = hhmm;
        builder.update(stream.input());
        EXPECT_EQ(builder.series().ema1.size(), 4U);
    }
}

// In any order and over the clock changes, whatever the session's start.
TEST(SessionWalk, AnswersAsTheSessionClock) {
    std::mt19937 random(5);
    for (const auto& [from, to] : stretches())
        for (const int hhmm : {1800, 930, 0, 2430, -100}) {
            SessionTime session;
            SessionWalk walk(session, hhmm);
            std::int64_t t = from;
            for (int i = 0; i < 3000; ++i) {
                t = i % 3 == 0 ? from + static_cast<std::int64_t>(random()) % (to - from)
                               : t + random() % 20'000 - 10'000;
                ASSERT_EQ(walk.open(t), session.sessionOpenSec(t, hhmm)) << t << " " << hhmm;
            }
        }
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
    const Bars chart = {bar(0, 100), bar(33300, 100), bar(33360, 100)};
    for (const double broken : {0.0, -1.0, std::nan(""), 1e-320})
        EXPECT_TRUE(OverlaySeries::computeSecond(chart, {bar(0, broken), bar(33300, 5)}, 1, 1800, session).empty())
            << broken;
    // a first VIX bar whose open and close are 0 leaves its session without a line
    EXPECT_TRUE(OverlaySeries::computeVIX(chart, {bar(33300, 0), bar(33360, 25)}, 1, 1800, 1, 1, session).empty());
    HfByMin minutes;
    for (const Candle& at : chart) minutes[at.time].c = 1e8;
    EXPECT_TRUE(OverlaySeries::computeHFLine(chart, minutes, 1, 1800, 1e305, {}, session).empty());
}

}  // namespace
}  // namespace vmr::test
