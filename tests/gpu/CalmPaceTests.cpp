// How long a frame that nobody waits for waits.
#include "gpu/CalmPace.h"

#include <gtest/gtest.h>

#include <vector>

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

}  // namespace
}  // namespace vmr
