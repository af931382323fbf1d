// Delayed work whose owner may have gone.
#include "base/WeakTask.h"

#include <gmock/gmock.h>

#include <functional>
#include <vector>

namespace vmr {
namespace {

struct Owner {
    explicit Owner(std::vector<int>& heard) : heard_(heard) {}
    std::function<void(int)> task() {
        return weak_([this](int value) { heard_.push_back(value); });
    }
    std::vector<int>& heard_;
    WeakTask weak_;
};

TEST(WeakTask, RunsWhileItsOwnerIsThereAndWasNotTakenBack) {
    std::vector<int> heard;
    auto owner = std::make_unique<Owner>(heard);
    const auto first = owner->task();
    first(1);
    owner->weak_.cancel();
    const auto second = owner->task();
    first(2);
    second(3);
    owner.reset();
    second(4);
    EXPECT_THAT(heard, testing::ElementsAre(1, 3));
}

}  // namespace
}  // namespace vmr
