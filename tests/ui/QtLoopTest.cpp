// The main loop over Qt's event loop.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ui/QtLoop.h"
#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

TEST(QtLoop, PostsRunInOrderAndNeverInsideTheCall) {
    QtLoop loop;
    std::string order;
    loop.post([&] {
        order += 'a';
        loop.post([&] { order += 'd'; });
        order += 'b';
    });
    loop.post([&] { order += 'c'; });
    EXPECT_EQ(order, "");
    ASSERT_TRUE(runUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, "abcd");
}

TEST(QtLoop, TakesTasksFromOtherThreads) {
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

TEST(QtLoop, TimersAreInOrderNeverEarlyAndEndWhenCancelled) {
    QtLoop loop;
    QElapsedTimer clock;
    clock.start();
    std::string order;
    double firstAt = 0;
    loop.after(0.030, [&] { order += 'c'; });
    loop.after(0.010, [&] {
        order += 'a';
        firstAt = static_cast<double>(clock.nsecsElapsed()) * 1e-9;
    });
    loop.after(0.020, [&] { order += 'b'; });
    loop.after(-5, [&] { order += '0'; });
    const auto cancelled = loop.after(0.015, [&] { order += 'X'; });
    loop.cancel(cancelled);
    loop.cancel(cancelled);
    int beats = 0;
    SerialQueue::TimerId beat = SerialQueue::noTimer;
    beat = loop.every(0, 0.004, [&] {
        if (++beats == 5) loop.cancel(beat);
    });
    ASSERT_TRUE(runUntil([&] { return order.size() == 4 && beats == 5; }));
    runFor(30);
    EXPECT_EQ(order, "0abc");
    EXPECT_EQ(beats, 5);
    EXPECT_GE(firstAt, 0.010);
}

TEST(QtLoop, TasksLeftAtTheEndAreDestroyedUnrun) {
    const auto token = std::make_shared<int>(0);
    {
        QtLoop loop;
        loop.post([token] { ++*token; });
        loop.after(0, [token] { ++*token; });
        loop.every(0, 1, [token] { ++*token; });
        EXPECT_EQ(token.use_count(), 4);
    }
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_EQ(*token, 0);
}

}  // namespace
}  // namespace vmr::test
