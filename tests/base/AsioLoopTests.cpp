// The loop without a toolkit: order, timers and cancelling, from its own thread and from others.
#include "base/AsioLoop.h"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <latch>
#include <numeric>

namespace vmr {
namespace {

using testing::ElementsAre;

TEST(AsioLoop, RunsInOrderNeverInsideTheCallAndTimersByTime) {
    AsioLoop loop;
    std::vector<std::string> story;
    int ticks = 0;
    SerialQueue::TimerId repeating = SerialQueue::noTimer, sibling = SerialQueue::noTimer;
    loop.after(0.020, [&] { story.push_back("late"); });
    loop.after(0.005, [&] { story.push_back("early"); });
    const auto never = loop.after(0.001, [&] { story.push_back("cancelled"); });
    for (const auto timer : {never, never, SerialQueue::TimerId(12345), SerialQueue::noTimer}) loop.cancel(timer);
    repeating = loop.every(0.001, 0.001, [&] {
        if (++ticks == 3) loop.cancel(repeating);
    });
    loop.after(0.002, [&] { loop.cancel(sibling); });
    sibling = loop.after(0.004, [&] { story.push_back("cancelled by a task"); });
    loop.after(0.030, [&] { loop.quit(); });
    loop.post([&] {
        EXPECT_TRUE(loop.isCurrent());
        loop.post([&] { story.push_back("posted inside"); });
        story.push_back("a");
    });
    loop.post([&] { story.push_back("b"); });
    EXPECT_FALSE(loop.isCurrent());
    loop.run();
    EXPECT_THAT(story, ElementsAre("a", "b", "posted inside", "early", "late"));
    EXPECT_EQ(ticks, 3);
    EXPECT_FALSE(loop.isCurrent());
}

TEST(AsioLoop, ManyThreadsPostAndCancelAndEachKeepsItsOrder) {
    constexpr std::size_t threads = 4, each = 500;
    std::array<std::vector<std::size_t>, threads> order;
    std::atomic<int> fired = 0;
    std::latch done(threads * each * 2);
    {
        AsioThread worker("velmora.test");
        std::vector<std::thread> others;
        for (auto& own : order)
            others.emplace_back([&] {
                for (std::size_t i = 0; i < each; ++i) {
                    worker.loop().post([&, i] {
                        own.push_back(i);
                        done.count_down();
                    });
                    const auto timer = worker.loop().every(0.5, 1, [&] { ++fired; });
                    worker.loop().after(0, [&] { done.count_down(); });
                    worker.loop().cancel(timer);
                }
            });
        for (auto& other : others) other.join();
        done.wait();
    }
    std::vector<std::size_t> inOrder(each);
    std::iota(inOrder.begin(), inOrder.end(), 0U);
    for (const auto& own : order) EXPECT_EQ(own, inOrder);
    EXPECT_EQ(fired, 0);
}

TEST(AsioLoop, WhatIsStillQueuedIsDestroyedWithoutRunning) {
    // a task that, as it goes, cancels a timer of the loop that it was queued on
    struct CancelsAsItGoes {
        AsioLoop* loop;
        SerialQueue::TimerId timer;
        int* gone;
        ~CancelsAsItGoes() {
            loop->cancel(timer);
            ++*gone;
        }
    };
    int gone = 0;
    {
        AsioLoop loop;
        const auto timer = loop.every(1000, 1000, [] { FAIL(); });
        auto held = std::make_shared<CancelsAsItGoes>(CancelsAsItGoes{&loop, timer, &gone});
        gone = 0;
        loop.after(1000, [held = std::move(held)] { FAIL(); });
    }
    EXPECT_EQ(gone, 1);
}

}  // namespace
}  // namespace vmr
