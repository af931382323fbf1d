// Delayed work whose owner may have gone.
#include "base/WeakTask.h"

#include <gmock/gmock.h>

#include <optional>

namespace vmr {
namespace {

TEST(WeakTask, RunsWhileItsOwnerIsThereAndWasNotTakenBack) {
    std::vector<int> heard;
    std::optional<WeakTask> owner(std::in_place);
    const auto hear = [&](int value) { heard.push_back(value); };
    const std::function<void(int)> first = (*owner)(hear);
    first(1);
    owner->cancel();
    const std::function<void(int)> second = (*owner)(hear);
    first(2);
    second(3);
    owner.reset();
    second(4);
    EXPECT_THAT(heard, testing::ElementsAre(1, 3));
}

}  // namespace
}  // namespace vmr
