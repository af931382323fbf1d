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
    bool elsewhere = true, here = false;
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < seen.size(); ++t) {
        threads.emplace_back([&, t] {
            if (t == 0) elsewhere = loop.isCurrent();
            for (int i = 0; i < each; ++i) loop.post([&, t, i] { seen[t].push_back(i); });
            loop.after(0.005, [&, t] { seen[t].push_back(-1); });
        });
    }
    for (auto& thread : threads) thread.join();
    loop.post([&] { here = loop.isCurrent(); });
    ASSERT_TRUE(runUntil([&] { return seen[0].size() + seen[1].size() + seen[2].size() == 3 * (each + 1); }));
    EXPECT_FALSE(elsewhere);
    EXPECT_TRUE(here);
    for (auto& list : seen) {
        std::erase(list, -1);
        EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
    }
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
    loop.cancel(SerialQueue::noTimer);
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
