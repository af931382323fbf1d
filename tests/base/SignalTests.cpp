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

TEST(NoticeGate, TellsOnceWhenAllHasChanged) {
    NoticeGate gate;
    Observable<int> one{&gate}, two{&gate}, free;
    std::vector<std::string> heard;
    const auto hear = [&](const std::string& name) {
        return [&heard, &one, &two, name] { heard.push_back(name + " " + std::to_string(one) + std::to_string(two)); };
    };
    const Connection links[] = {one.changed.connect(hear("one")), two.changed.connect(hear("two")),
                                free.changed.connect(hear("free")), two.changed.connect([&] {
                                    const NoticeGate::Hold again(gate);
                                    if (one == 2) one = 7;
                                })};
    {
        const NoticeGate::Hold hold(gate);
        const NoticeGate::Hold inner(gate);
        two = 1;
        one = 2;
        two = 3;
        free = 1;
    }
    EXPECT_THAT(std::exchange(heard, {}), ElementsAre("free 23", "two 23", "one 73"));
    one = 4;
    EXPECT_THAT(heard, ElementsAre("one 43")) << "the gate is open";
    EXPECT_EQ(two.revision(), 2u);
}

}  // namespace
}  // namespace vmr
