// What ends the process, and the one checked conversion that does so.
#include "base/Fatal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

#include "base/CheckedInt.h"

namespace vmr {
namespace {

TEST(CheckedInt, TruncatesTowardZeroUpToTheLimits) {
    EXPECT_EQ(checkedInt(1.9, "x"), 1);
    EXPECT_EQ(checkedInt(-1.9, "x"), -1);
    EXPECT_EQ(checkedInt(-0.0, "x"), 0);
    EXPECT_EQ(checkedInt(-9223372036854775808.0, "x"), INT64_MIN);
    EXPECT_EQ(checkedInt(9223372036854774784.0, "x"), 9223372036854774784);
}

TEST(CheckedIntDeathTest, EndsTheProcessOutsideThem) {
    const double inf = std::numeric_limits<double>::infinity();
    for (const double value : {9223372036854775808.0, -9223372036854777856.0, 1e300, inf, -inf, std::nan("")})
        EXPECT_DEATH(checkedInt(value, "the height"), "velmora: fatal: the height does not fit a 64-bit integer");
}

TEST(FatalDeathTest, TheHandlerSpeaksInsteadAndTheProcessEndsAllTheSame) {
    EXPECT_EXIT(
        {
            setFatalHandler([](std::string_view reason) {
                fprintf(stderr, "handled: %.*s", static_cast<int>(reason.size()), reason.data());
            });
            fatal("no way on");
        },
        testing::KilledBySignal(SIGABRT), "handled: no way on");
}

TEST(Fatal, AHandlerMayThrowItsWayOut) {
    setFatalHandler([](std::string_view reason) { throw std::runtime_error(std::string(reason)); });
    EXPECT_THROW(checkedInt(std::nan(""), "x"), std::runtime_error);
    setFatalHandler({});
}

}  // namespace
}  // namespace vmr
