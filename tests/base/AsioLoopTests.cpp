// The loop without a toolkit: order, timers and cancelling, from its own thread and from others.
#include "base/AsioLoop.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <latch>

namespace vmr {
namespace {

using testing::ElementsAre;

TEST(AsioLoop, RunsInOrderAndNeverInsideTheCall) {
    AsioLoop loop;
    std::vector<std::string> story;
    EXPECT_FALSE(loop.isCurrent());
    loop.post([&] {
        EXPECT_TRUE(loop.isCurrent());
        story.push_back("a");
        loop.post([&] { story.push_back("posted inside"); });
        loop.after(-1, [&] {
            story.push_back("after");
            loop.quit();
        });
        story.push_back("a ends");
    });
    loop.post([&] { story.push_back("b"); });
    EXPECT_TRUE(story.empty());
    loop.run();
    EXPECT_THAT(story, ElementsAre("a", "a ends", "b", "posted inside", "after"));
    EXPECT_FALSE(loop.isCurrent());
}

TEST(AsioLoop, TimersFireByTimeRepeatAndEnd) {
    AsioLoop loop;
    std::vector<std::string> story;
    int ticks = 0;
    loop.after(0.020, [&] { story.push_back("late"); });
    loop.after(0.005, [&] { story.push_back("early"); });
    const auto never = loop.after(0.001, [&] { story.push_back("cancelled"); });
    loop.cancel(never);
    loop.cancel(never);
    loop.cancel(12345);
    loop.cancel(SerialQueue::noTimer);
    SerialQueue::TimerId repeating = SerialQueue::noTimer;
    repeating = loop.every(0.001, 0.001, [&] {
        if (++ticks == 3) loop.cancel(repeating);
        ASSERT_LE(ticks, 3);
    });
    SerialQueue::TimerId sibling = SerialQueue::noTimer;
    loop.after(0.002, [&] { loop.cancel(sibling); });
    sibling = loop.after(0.004, [&] { story.push_back("cancelled by a task"); });
    loop.after(0.030, [&] { loop.quit(); });
    loop.run();
    EXPECT_THAT(story, ElementsAre("early", "late"));
    EXPECT_EQ(ticks, 3);
}

TEST(AsioLoop, ManyThreadsPostAndCancel) {
    std::atomic<int> ran = 0;
    constexpr int threads = 4, each = 500;
    std::latch done(threads * each * 2);
    {
        AsioThread worker("velmora.test");
        std::vector<std::thread> others;
        for (int t = 0; t < threads; ++t)
            others.emplace_back([&] {
                for (int i = 0; i < each; ++i) {
                    worker.loop().post([&] {
                        ++ran;
                        done.count_down();
                    });
                    const auto timer = worker.loop().every(0.5, 1, [&] { ran += 1'000'000; });
                    worker.loop().after(0, [&] {
                        ++ran;
                        done.count_down();
                    });
                    worker.loop().cancel(timer);
                }
            });
        for (auto& other : others) other.join();
        done.wait();
    }
    EXPECT_EQ(ran, threads * each * 2);
}

TEST(AsioLoop, PostsOfOneThreadKeepTheirOrder) {
    AsioThread worker("velmora.test.order");
    std::vector<int> order;
    std::promise<void> done;
    for (int i = 0; i < 1000; ++i) worker.loop().post([&order, i] { order.push_back(i); });
    worker.loop().post([&] { done.set_value(); });
    done.get_future().wait();
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(order.size(), 1000u);
}

TEST(AsioLoop, WhatIsStillQueuedIsDestroyedWithoutRunning) {
    // a task that, as it goes, cancels a timer of the loop that it was queued on
    struct CancelsAsItGoes {
        AsioLoop* loop;
        SerialQueue::TimerId timer;
        std::atomic<int>* gone;
        ~CancelsAsItGoes() {
            loop->cancel(timer);
            ++*gone;
        }
    };
    std::atomic<int> gone = 0;
    {
        AsioLoop loop;
        const auto timer = loop.every(1000, 1000, [] { FAIL(); });
        auto held = std::make_shared<CancelsAsItGoes>(CancelsAsItGoes{&loop, timer, &gone});
        gone = 0;
        loop.after(1000, [held = std::move(held)] { FAIL(); });
    }
    EXPECT_EQ(gone, 1);
    std::weak_ptr<int> weak;
    {
        AsioThread worker("velmora.test.end");
        auto held = std::make_shared<int>(0);
        weak = held;
        worker.loop().after(1000, [held = std::move(held)] { FAIL(); });
    }
    EXPECT_TRUE(weak.expired());
}

TEST(AsioLoop, RemembersItsLongestTurn) {
    AsioLoop loop;
    loop.post([&] {
        const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
        while (std::chrono::steady_clock::now() < until) {
        }
    });
    loop.post([&] { loop.quit(); });
    loop.run();
    EXPECT_GE(loop.longestTurn(), 0.002);
    loop.resetLongestTurn();
    EXPECT_EQ(loop.longestTurn(), 0);
}

}  // namespace
}  // namespace vmr
