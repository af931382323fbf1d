// The pane in virtual time as a test fixture, and how its values print.
#pragma once

#include <gmock/gmock.h>

#include "model/TestPane.h"

namespace vmr {

inline void PrintTo(const Candle& bar, std::ostream* out) {
    *out << "{" << bar.time << " " << bar.open << " " << bar.high << " " << bar.low << " " << bar.close << " v"
         << bar.volume << "}";
}

namespace test {

class PaneFixture : public testing::Test, public TestPane {
 protected:
    explicit PaneFixture(double start = wednesdayAt10, double speed = 1) : TestPane(start, speed) {}

    /// The whole minute in which the test starts.
    static constexpr std::int64_t minute = static_cast<std::int64_t>(wednesdayAt10);
};

}  // namespace test
}  // namespace vmr
