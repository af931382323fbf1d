#include "perf/Perf.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/TestTime.h"

namespace vmr::test {
namespace {

struct PerfTest : testing::Test {
    TestTime time;
    std::vector<std::string> lines;
    Perf perf{time, [this](const std::string& line) { lines.push_back(line); }};

    std::string report() { return std::exchange(lines, {}).at(0); }
};

TEST_F(PerfTest, ReportsEveryTwoSecondsWithFramesOnly) {
    perf.bump("flushDrag");
    perf.bump("flushDrag");
    perf.bump("ChartOverlay");
    perf.time("markers", 3);
    perf.time("OverlayRebuild", 0.26);
    for (const double ms : {16.0, 16.1}) perf.turn(ms);
    for (int i = 1; i <= 20; ++i) perf.lag(i);
    for (int i = 0; i < 19; ++i) {
        time.advance(0.1);
        perf.frame(i < 10 ? 1 : 2);
    }
    EXPECT_TRUE(lines.empty());
    time.advance(0.1);
    perf.frame(9);
    EXPECT_EQ(report(),
              "[perf] fps 10 | draw p50 2.00 p95 9.00 | mainlag p95 20.0 max 20.0 | body/s: ChartOverlay 1  "
              "flushDrag 1 | ms: OverlayRebuild p95 0.3  markers p95 3.0  turn p95 16.1");
    // all begins anew, and a pause counts whole
    time.advance(10);
    perf.frame(4);
    EXPECT_EQ(report(), "[perf] fps 0 | draw p50 4.00 p95 4.00 | mainlag p95 0.0 max 0.0 | body/s: ");
}

TEST_F(PerfTest, PercentileTakesTheElementAtItsShareOfTheCount) {
    const auto of = [](std::vector<double> list, double p) { return Perf::percentile(list, p); };
    EXPECT_EQ(of({}, 0.95), 0);
    EXPECT_EQ(of({7}, 0.5), 7);
    EXPECT_EQ(of({4, 1, 3, 2}, 0.5), 3);
    EXPECT_EQ(of({4, 1, 3, 2}, 1.0), 4);
}

TEST_F(PerfTest, BenchmarkCountsItsOwnWindowAndJudgesByTheFrameIntervals) {
    const auto bench = [&](std::vector<double> intervals) {
        perf.time("markers", 99);  // before the window
        perf.benchBegin();
        perf.frame(0.5);
        for (const double ms : intervals) {
            time.advance(ms / 1000);
            perf.frame(1.5);
        }
        perf.time("markers", 2);
        perf.lag(3);
        perf.benchEnd();
        return std::exchange(lines, {});
    };
    const auto fast = bench({15, 15, 15, 15});
    std::string rule;
    for (int i = 0; i < 64; ++i) rule += "═";
    const std::vector<std::string> expected{"[bench] window OPEN — collecting per-frame metrics…",
                                            rule,
                                            "[bench] DONE  0.1s  frames=5  effFPS=83.3",
                                            "[bench] frameInterval ms : p50 15.00  p95 15.00  p99 15.00  max 15.00",
                                            "[bench]   frames >16.7ms  : 0 / 4  (0.0%)",
                                            "[bench] draw ms (CPU)    : p50 1.50  p95 1.50  p99 1.50  max 1.50",
                                            "[bench] mainlag ms       : p50 3.00  p95 3.00  p99 3.00  max 3.00",
                                            "[bench] markers ms : p50 2.00  p95 2.00  max 2.00",
                                            "[bench] VERDICT: frameInterval p95 PASS ✓ (<16ms)",
                                            rule};
    EXPECT_EQ(fast, expected);
    const auto slow = bench({15, 40, 40, 40});
    EXPECT_EQ(slow.at(4), "[bench]   frames >16.7ms  : 3 / 4  (75.0%)");
    EXPECT_EQ(slow.at(8), "[bench] VERDICT: frameInterval p95 FAIL ✗ (≥16ms)");
}

TEST_F(PerfTest, KeepsTheNewestSamplesOfAWindowThatNobodyDraws) {
    for (std::size_t i = 0; i < Perf::maxSamples; ++i) perf.lag(1000);
    for (std::size_t i = 0; i < Perf::maxSamples; ++i) perf.lag(1);
    time.advance(3);
    perf.frame(1);
    EXPECT_NE(report().find("mainlag p95 1.0 max 1.0"), std::string::npos);
}

}  // namespace
}  // namespace vmr::test
