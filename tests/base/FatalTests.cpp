// What ends the process, and the one checked conversion that does so.
#include "base/Fatal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "base/CheckedInt.h"

namespace vmr {
namespace {

TEST(CheckedInt, TruncatesTowardZeroUpToTheLimits) {
    const std::pair<double, std::int64_t> cases[] = {
        {1.9, 1}, {-1.9, -1}, {-9223372036854775808.0, INT64_MIN}, {9223372036854774784.0, 9223372036854774784}};
    for (const auto& [value, whole] : cases) EXPECT_EQ(checkedInt(value, "x"), whole);
}

TEST(CheckedIntDeathTest, EndsTheProcessOutsideThem) {
    const double inf = std::numeric_limits<double>::infinity();
    for (const double value : {9223372036854775808.0, -9223372036854777856.0, inf, -inf, std::nan("")})
        EXPECT_DEATH(checkedInt(value, "the height"), "velmora: fatal: the height does not fit a 64-bit integer");
}

TEST(FatalDeathTest, TheHandlerSpeaksInsteadAndTheProcessEndsAllTheSame) {
    EXPECT_EXIT(
        {
            setFatalHandler(
                [](std::string_view reason) { fputs(("handled: " + std::string(reason)).c_str(), stderr); });
            fatal("no way on");
        },
        testing::KilledBySignal(SIGABRT), "handled: no way on");
}

}  // namespace
}  // namespace vmr
