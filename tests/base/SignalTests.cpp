// Change notices under subscription changes from inside.
#include "base/Signal.h"

#include <gmock/gmock.h>

namespace vmr {
namespace {

using testing::ElementsAre;

TEST(Signal, CallsInOrderAndAllowsChangesInsideANotice) {
    Signal<int> signal;
    std::vector<std::string> heard;
    Connection added;
    Connection second;
    const auto first = signal.connect([&](int n) {
        heard.push_back("first " + std::to_string(n));
        second.end();
        if (n == 1) added = signal.connect([&](int m) { heard.push_back("added " + std::to_string(m)); });
        if (n == 2) signal(3);
    });
    second = signal.connect([&](int n) { heard.push_back("second " + std::to_string(n)); });
    const auto third = signal.connect([&](int n) { heard.push_back("third " + std::to_string(n)); });

    signal(1);
    EXPECT_THAT(std::exchange(heard, {}), ElementsAre("first 1", "third 1"));
    signal(2);
    EXPECT_THAT(heard, ElementsAre("first 2", "first 3", "third 3", "added 3", "third 2", "added 2"));
}

}  // namespace
}  // namespace vmr
