// How long a frame that nobody waits for waits.
#include "gpu/CalmPace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "gpu/ScreenPace.h"

namespace vmr {
namespace {

TEST(CalmPace, FramesTakeATenthOfACoreAndNoneIsLate) {
    const struct {
        std::vector<double> costs;
        double after, wait;
    } cases[] = {{{}, 0, 0},  // nothing is known of the cost
                 {{0.01}, 0, 0.1}, {{0.01}, 0.06, 0.04},
                 {{0.01}, 0.5, 0}, {{0.01, 0.02}, 0, 0.13},  // the newer the more
                 {{5}, 0, 0.22},   {{-1, 0.01}, 0, 0.1}};
    for (const auto& [costs, after, wait] : cases) {
        CalmPace pace;
        pace.begun(1000);
        for (const double cost : costs) pace.shown(cost);
        EXPECT_NEAR(pace.wait(1000 + after), wait, 1e-9);
    }
}

TEST(ScreenPace, FramesComeALittleMoreOftenThanTheScreenShowsThem) {
    const struct {
        double rate, drawing, frames;  // seconds of drawing a frame; frames in ten seconds
    } cases[] = {{60, 0.004, 667}, {144, 0.004, 1600}, {0, 0.004, 667}, {NAN, 0.004, 667}, {60, 0.020, 500}};
    for (const auto& [rate, drawing, frames] : cases) {
        ScreenPace pace;
        int begun = 0;
        for (double now = 1000; now < 1010; ++begun) {
            const double late = begun % 3 == 0 ? 0.002 : 0;  // the next one makes up for it
            now += pace.wait(now) + (drawing < 0.01 ? late : 0);
            pace.begun(now, rate);
            now += drawing;
        }
        EXPECT_NEAR(begun, frames, 3) << rate;
        EXPECT_EQ(pace.wait(1012), 0) << "after a rest";
    }
}

}  // namespace
}  // namespace vmr
