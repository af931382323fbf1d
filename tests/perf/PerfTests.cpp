#include "perf/Perf.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/time/TestTime.h"

namespace vmr::test {
namespace {

struct PerfTest : testing::Test {
    TestTime time;
    std::vector<std::string> lines;
    Perf perf{time, [this](const std::string& line) { lines.push_back(line); }};
};

TEST_F(PerfTest, ReportsEveryTwoSecondsWithFramesOnly) {
    perf.bump("flushDrag");
    perf.bump("flushDrag");
    perf.time("markers", 3);
    for (const double ms : {16.0, 16.1}) perf.turn(ms);
    for (int i = 1; i <= 20; ++i) perf.lag(i);
    for (int i = 0; i < 19; ++i) {
        time.advance(0.1);
        perf.frame(i < 10 ? 1 : 2, this);
    }
    time.advance(0.1);
    perf.frame(9, this);
    for (const double pause : {1.0, 10.0}) {
        time.advance(pause);
        perf.frame(4, this);
    }
    const std::vector<std::string> expected{
        "[perf] fps 10 | draw p50 2.00 p95 9.00 | mainlag p95 20.0 max 20.0 | body/s: flushDrag 1 | "
        "ms: markers p95 3.0  turn p95 16.1",
        // all begins anew, and a pause counts whole
        "[perf] fps 0 | draw p50 4.00 p95 4.00 | mainlag p95 0.0 max 0.0 | body/s: "};
    EXPECT_EQ(lines, expected);
}

TEST_F(PerfTest, OneBenchmarkJudgesByTheWorstOfSeveralPlots) {
    perf.uploaded(9e6);  // before it begins
    EXPECT_TRUE(perf.benchBegin());
    EXPECT_FALSE(perf.benchBegin()) << "another window's: the first one goes on";
    const int plots[2] = {};
    for (int i = 0; i <= 60; ++i) {  // 5 ms apart: one in 10 ms, the other in 20
        if (i % 2 == 0) perf.frame(1, &plots[0]);
        if (i % 4 == 1) perf.frame(1, &plots[1]);
        perf.uploaded(3000);
        time.advance(0.005);
    }
    perf.benchEnd();
    EXPECT_EQ(lines.at(3), "[bench] frameInterval ms : p50 20.00  p95 20.00  p99 20.00  max 20.00");
    EXPECT_EQ(lines.at(4), "[bench]   frames >16.7ms  : 14 / 14  (100.0%)");
    EXPECT_EQ(lines.at(7), "[bench] uploaded 4 kB a frame");
    EXPECT_EQ(lines.at(8), "[bench] VERDICT: frameInterval p95 FAIL ✗ (≥16ms)");
    EXPECT_TRUE(perf.benchBegin()) << "it is over";
}

TEST_F(PerfTest, BenchmarkCountsItsOwnWindowAndJudgesByTheFrameIntervals) {
    const auto bench = [&](std::vector<double> intervals) {
        perf.time("markers", 99);  // before the window
        perf.benchBegin();
        perf.frame(0.5, this);
        for (const double ms : intervals) {
            time.advance(ms / 1000);
            perf.frame(1.5, this);
        }
        perf.time("markers", intervals.back());
        perf.lag(3);
        perf.benchEnd();
        return std::exchange(lines, {});
    };
    bench({15, 40, 40, 40});  // an earlier one counts no more
    const auto fast = bench({15, 15, 15, 15});
    const std::vector<std::string> figures(fast.begin() + 2, fast.end() - 1);  // between two rules
    const std::vector<std::string> expected{"[bench] DONE  0.1s  frames=5  effFPS=83.3",
                                            "[bench] frameInterval ms : p50 15.00  p95 15.00  p99 15.00  max 15.00",
                                            "[bench]   frames >16.7ms  : 0 / 4  (0.0%)",
                                            "[bench] draw ms (CPU)    : p50 1.50  p95 1.50  p99 1.50  max 1.50",
                                            "[bench] mainlag ms       : p50 3.00  p95 3.00  p99 3.00  max 3.00",
                                            "[bench] markers ms : p50 15.00  p95 15.00  max 15.00",
                                            "[bench] VERDICT: frameInterval p95 PASS ✓ (<16ms)"};
    EXPECT_EQ(figures, expected);
}

}  // namespace
}  // namespace vmr::test
