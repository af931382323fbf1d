// The main loop over Qt's event loop.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "ui/UiWindow.h"
#include "ui/platform/QtLoop.h"

namespace vmr::test {
namespace {

TEST(QtLoop, TakesTasksFromOtherThreadsInTheirOrder) {
    QtLoop loop;
    constexpr int each = 2000;
    std::vector<std::vector<int>> seen(3);
    int late = 0;
    std::vector<std::thread> threads;
    for (auto& mine : seen) {
        threads.emplace_back([&] {
            EXPECT_FALSE(loop.isCurrent());
            for (int i = 0; i < each; ++i) loop.post([&mine, i] { mine.push_back(i); });
            loop.after(0.005, [&] { ++late; });
        });
    }
    for (auto& thread : threads) thread.join();
    ASSERT_TRUE(runUntil([&] { return seen[0].size() + seen[1].size() + seen[2].size() == 3 * each && late == 3; }));
    EXPECT_TRUE(loop.isCurrent());
    for (const auto& list : seen) EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
}

TEST(QtLoop, TimersAreInOrderAndEndWhenCancelled) {
    QtLoop loop;
    std::string order;
    loop.after(0.030, [&] { order += 'c'; });
    loop.after(0.020, [&] { order += 'b'; });
    loop.after(-5, [&] {
        loop.post([&] { order += '!'; });  // never inside the call
        order += 'a';
    });
    loop.cancel(loop.after(0.015, [&] { order += 'X'; }));
    SerialQueue::TimerId beat = SerialQueue::noTimer;
    int beats = 0;
    beat = loop.every(0, 0.004, [&] {
        if (++beats == 5) loop.cancel(beat);
    });
    runFor(100);
    EXPECT_EQ(order, "a!bc");
    EXPECT_EQ(beats, 5);
}

}  // namespace
}  // namespace vmr::test
