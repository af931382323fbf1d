// A clock that is steered while the program runs, and those who wait for it.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "base/AsioLoop.h"
#include "base/MarketTimer.h"
#include "support/time/TestTime.h"

namespace vmr {
namespace {

using test::TestQueue;
using test::TestTime;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double noon = 1781100000;

struct Watched : testing::Test {
    TestTime time{noon};
    TestQueue queue{time};
    MarketTimer timer{time, queue};
    std::vector<double> ran;  // market times since noon
    Task note() {
        return [this] { ran.push_back(time.now() - noon); };
    }
    std::vector<double> during(double realSeconds) {
        ran.clear();
        return time.advance(realSeconds), ran;
    }
};

TEST_F(Watched, AClockStandsRunsOnAndJumps) {
    time.advance(10);
    time.setSpeed(4);
    EXPECT_EQ(time.now(), noon + 10) << "another speed does not move it";
    time.advance(2);
    time.pause();
    time.advance(100);
    EXPECT_EQ(time.now(), noon + 18);
    EXPECT_EQ(time.speed(), 4) << "that at which it will run on";
    time.setNow(noon - 50);
    time.advance(1);
    EXPECT_EQ(time.now(), noon - 50) << "set while it stands";
    time.resume();
    time.advance(1);
    EXPECT_EQ(time.now(), noon - 46);
    SteerableClock clock(noon, -1);
    EXPECT_EQ(clock.speed(), 1);
    for (const double bad : {0.0, -2.0, 10000.5, std::numeric_limits<double>::infinity(), std::nan("")})
        EXPECT_FALSE(clock.setSpeed(bad)) << bad;
    EXPECT_FALSE(clock.setNow(std::nan("")));
    EXPECT_EQ(clock.speed(), 1);
}

TEST_F(Watched, EverybodyHearsOfEachSteeringInOrderUntilTheyLetGo) {
    std::vector<std::pair<double, double>> heard;
    auto watch = time.onSteered(queue, [&](const ClockSteering& s) { heard.emplace_back(s.from - noon, s.to - noon); });
    time.pause();
    time.pause();
    time.setSpeed(1);
    time.setNow(noon + 60);
    time.setNow(noon - 60);
    time.resume();
    EXPECT_THAT(heard, IsEmpty()) << "never inside the call";
    time.runUntilIdle();
    EXPECT_THAT(heard, ElementsAre(std::pair(0, 0), std::pair(0, 60), std::pair(60, -60), std::pair(-60, -60)));
    time.pause();
    watch.reset();
    time.runUntilIdle();
    EXPECT_EQ(heard.size(), 4u) << "a notice on its way is dropped";
}

TEST_F(Watched, WaitsForAMomentOnce) {
    timer.after(3, note());  // replaced by the next
    timer.at(noon + 8, note());
    EXPECT_THAT(during(7), IsEmpty());
    time.setSpeed(0.25);
    EXPECT_THAT(during(3.5), IsEmpty());
    time.pause();
    EXPECT_THAT(during(1000), IsEmpty());
    time.setNow(noon + 2);
    time.resume();
    time.setSpeed(2);
    EXPECT_THAT(during(2.5), IsEmpty()) << "set back: the same moment";
    EXPECT_THAT(during(5), ElementsAre(8));
    EXPECT_FALSE(timer.active());
    timer.at(noon - 5, note());
    EXPECT_THAT(during(0), ElementsAre(17)) << "long past";
    timer.at(noon + 5000, note());
    time.pause();
    time.setNow(noon + 9000);
    EXPECT_THAT(during(10), ElementsAre(9000)) << "set forward while it stands";
}

TEST_F(Watched, WaitsForAWhileAndAgainWhenSetBack) {
    timer.after(8, note());
    EXPECT_THAT(during(6), IsEmpty());
    time.setNow(noon + 1);
    EXPECT_THAT(during(7.5), IsEmpty());
    EXPECT_THAT(during(1), ElementsAre(9));
}

TEST_F(Watched, RunsOnWholeMultiplesAtAnySpeed) {
    time.setNow(noon + 0.5);
    timer.every(1, note());
    EXPECT_THAT(during(2), ElementsAre(1, 2));
    time.setSpeed(4);
    EXPECT_THAT(during(0.5), ElementsAre(3, 4));
    time.setSpeed(0.5);
    EXPECT_THAT(during(2), ElementsAre(5));
    time.setNow(noon + 100.25);
    EXPECT_THAT(during(1.5), ElementsAre(100.25, 101)) << "those skipped count as one";
    time.setNow(noon - 7.5);
    EXPECT_THAT(during(2), ElementsAre(-7));
}

TEST_F(Watched, AFastClockLeavesMultiplesOut) {
    time.setSpeed(60);
    timer.every(1, note(), 0.25);
    EXPECT_THAT(during(1), ElementsAre(1, 16, 31, 46));
    time.setSpeed(6);
    EXPECT_THAT(during(0.625), ElementsAre(61, 63)) << "as soon as the distance to the last run allows";
}

}  // namespace
}  // namespace vmr
