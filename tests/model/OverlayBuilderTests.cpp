// The kept series against the same made from nothing, after every kind of change.
#include "model/OverlayBuilder.h"

#include <gtest/gtest.h>

#include <limits>

#include "model/AppModel.h"
#include "model/OverlaySeries.h"
#include "support/SyntheticMarket.h"

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
        switch (pick(16)) {
            case 0:
            case 1:
            case 2:
            case 3:
                trade();
                break;
            case 4:
            case 5:
            case 6:
                appendBar();
                break;
            case 7:
                for (int i = 0; i < 90; ++i) appendBar();
                break;
            case 8:
                appendBar();
                raw.erase(raw.begin());
                break;
            case 9:
                raw[pick(raw.size())].volume += 5;
                break;
            case 10:
                raw.erase(raw.begin() + static_cast<std::ptrdiff_t>(pick(raw.size() - 2)));
                break;
            case 11:
                raw.back().open += 0.25;
                break;
            case 12:
                second.back().close += 1;
                break;
            case 13:
                hf[raw[pick(raw.size())].time].c = step() * 1e7;
                ++sideRevision;
                break;
            case 14:
                changeLevels();
                break;
            default:
                changeSettings();
                break;
        }
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
        if (pick(8) != 0) vix.push_back({bar.time, 18 + step() / 50, 0, 0, 18 + step() / 50, 0});
        if (pick(3) != 0) hf[bar.time].c = step() * 1e7;
    }
    void changeLevels() {
        const std::int64_t open = plainSessionOpen(raw[pick(raw.size())].time, settings.sessionHHMM);
        levels[open] = {open, 0, {{1, "", 21000 + step() * 10, 0}}, {{1, "", 20900 + step() * 10, 0}}};
        ++sideRevision;
    }
    void changeSettings() {
        switch (pick(8)) {
            case 0:
                settings.timeframe = static_cast<int>(1 + pick(3) * 7);
                break;
            case 1:
                settings.sessionHHMM = settings.sessionHHMM == 930 ? 1800 : 930;
                break;
            case 2:
                settings.vwapEnabled = !settings.vwapEnabled;
                break;
            case 3:
                settings.vwapNyEnabled = !settings.vwapNyEnabled;
                break;
            case 4:
                settings.hfEnabled = !settings.hfEnabled;
                break;
            case 5:
                settings.vixEnabled = !settings.vixEnabled;
                break;
            case 6:
                settings.ema1Enabled = !settings.ema1Enabled;
                break;
            default:
                settings.vixSmooth = static_cast<std::int64_t>(pick(50));
                break;
        }
    }

    std::mt19937 random_;
    std::vector<Candle> future_;
    std::size_t next_ = 0;
};

// The series from nothing, by the pure functions alone.
OverlaySet fromNothing(const OverlayInput& in, SessionTime& session) {
    const OverlaySettings& on = in.settings;
    OverlaySet set;
    using namespace OverlaySeries;
    const std::int64_t last = in.bars.back().time;
    if (on.vwapEnabled) set.vwapMain = computeVWAP(in.bars, on.sessionHHMM, session);
    if (on.vwapNyEnabled && showsNyVWAP(last, on.sessionHHMM, session)) set.vwapNY = computeVWAP(in.bars, 930, session);
    if (on.showSecondary)
        set.secondCandles = computeSecond(in.bars, in.secondaryRaw, on.timeframe, on.sessionHHMM, session);
    if (on.hfEnabled)
        set.hfLine = computeHFLine(in.bars, in.hfByMin, on.timeframe, on.sessionHHMM, on.hfFallbackScale, in.srSessions,
                                   session);
    if (on.vixEnabled)
        set.vixLine = computeVIX(in.bars, in.vix, on.timeframe, on.sessionHHMM, on.vixScale, on.vixSmooth, session);
    if (on.ema1Enabled) set.ema1 = computeEMA(in.bars, on.ema1Period);
    if (on.ema2Enabled) set.ema2 = computeEMA(in.bars, on.ema2Period);
    return set;
}

TEST(OverlayBuilder, KeepsExactlyWhatAFreshBuildGives) {
    std::size_t shownNy = 0, points = 0;
    for (unsigned seed = 0; seed < 12; ++seed) {
        SessionTime session;
        Stream stream(seed);
        OverlayBuilder builder(session);
        for (int round = 0; round < 150; ++round) {
            stream.change();
            builder.update(stream.input());
            const OverlaySet& kept = builder.series();
            const OverlaySet fresh = fromNothing(stream.input(), session);
            ASSERT_EQ(kept.vwapMain, fresh.vwapMain) << seed << " " << round;
            ASSERT_EQ(kept.vwapNY, fresh.vwapNY) << seed << " " << round;
            ASSERT_EQ(kept.secondCandles, fresh.secondCandles) << seed << " " << round;
            ASSERT_EQ(kept.hfLine, fresh.hfLine) << seed << " " << round;
            ASSERT_EQ(kept.vixLine, fresh.vixLine) << seed << " " << round;
            ASSERT_EQ(kept.ema1, fresh.ema1) << seed << " " << round;
            ASSERT_EQ(kept.ema2, fresh.ema2) << seed << " " << round;
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
    EXPECT_EQ(builder.series().vixSpot, stream.vix.back().close);
    EXPECT_FALSE(builder.series().ema1.empty());
    const auto all = stream.bars;
    stream.bars.resize(1);
    builder.update(stream.input());
    const OverlaySet& none = builder.series();
    EXPECT_TRUE(none.vwapMain.empty() && none.vwapNY.empty() && none.vixLine.empty() && none.ema1.empty() &&
                none.ema2.empty() && none.hfLine.empty() && none.secondCandles.empty());
    EXPECT_TRUE(none.vixSpot);
    stream.bars = all;
    builder.update(stream.input());
    EXPECT_EQ(builder.series().hfLine, fromNothing(stream.input(), session).hfLine);
}

TEST(OverlayBuilder, TakesAnyTimesAndNumbers) {
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min(),
                           highest = std::numeric_limits<std::int64_t>::max();
    const double nan = std::nan("");
    SessionTime session;
    Stream stream(2);
    stream.raw = {{lowest, 1, 2, 3, 4, 5},
                  {-60, nan, nan, nan, nan, nan},
                  {0, 1e308, 1e308, 1e308, 1e308, 1e308},
                  {highest, 1, 2, 3, 4, 5}};
    stream.bars = stream.second = stream.vix = stream.raw;
    for (const Candle& bar : stream.raw) stream.hf[bar.time].c = bar.close;
    OverlayBuilder builder(session);
    for (const int tf : {0, 1, 7, std::numeric_limits<int>::max()})
        for (const int hhmm : {1800, 0, -5000, 999'999, std::numeric_limits<int>::max()}) {
            stream.settings.timeframe = tf;
            stream.settings.sessionHHMM = hhmm;
            builder.update(stream.input());
            EXPECT_EQ(builder.series().ema1.size(), 4U);
        }
}

}  // namespace
}  // namespace vmr::test
