// The kept series after every kind of change against the same made from nothing, and these against plain computations.
#include "model/OverlayBuilder.h"

#include <gtest/gtest.h>

#include <tuple>

#include "market/Bars.h"
#include "model/PlainOverlays.h"

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
    // a minute a bar from 18:00 on, everything shown
    OverlaySettings settings{1, 1800, true, true, true, true, true, true, true, 9, 200, 2e-7, 0.08, 5};

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
        if (pick(3) != 0) second.push_back({bar.time, bar.open / 4, bar.high / 4, bar.low / 4, bar.close / 4, 0});
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

auto allSeries(const OverlaySet& s) {
    return std::tie(s.vwapMain, s.vwapNY, s.vixLine, s.ema1, s.ema2, s.hfLine, s.secondCandles, s.vixSpot);
}

TEST(OverlayBuilder, KeepsExactlyWhatAFreshBuildGives) {
    std::map<std::string, std::size_t> points;
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
            ASSERT_EQ(allSeries(kept), allSeries(fresh.series()));
            if (const auto& bars = stream.input().bars; bars.size() > 1) {
                ASSERT_EQ(kept.anchor, (OverlaySet::Anchor{bars.back().time, static_cast<double>(bars.size() - 1)}));
            }
            if (round % 25 == 24) expectPlain(kept, stream.input(), "", points);
            if (HasFatalFailure()) return;
        }
    }
    for (const auto& [series, count] : points) EXPECT_GT(count, 1000U) << series;
}

}  // namespace
}  // namespace vmr::test
