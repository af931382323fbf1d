// Panes come and go, and leave nothing behind.
#include "workspace/PaneHost.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <random>

#include "tests/workspace/LivePanes.h"
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace vmr::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
constexpr bool sanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool sanitized = false;
#endif

// What the process holds now.
struct Holdings {
    std::ptrdiff_t threads = 0, files = 0;
    double liveMB = 0;  // allocated and not freed; 0 where the system cannot tell

    static std::ptrdiff_t entries(const char* folder) {
        std::error_code ignored;
        return std::distance(std::filesystem::directory_iterator(folder, ignored), {});
    }
    static Holdings now() {
        Holdings out{entries("/proc/self/task"), entries("/proc/self/fd"), 0};
#ifdef __GLIBC__
        malloc_trim(0);
        const auto heap = mallinfo2();
        out.liveMB = static_cast<double>(heap.uordblks + heap.hblkhd) / 1e6;
#endif
        return out;
    }
};

class PaneHostLife : public LivePanes {
 protected:
    /// Opens four panes and closes them in an order of chance, some of them before they are connected.
    void openAndCloseFour() {
        std::vector<int> open;
        while (open.size() < PaneHost::maxLive) {
            const auto number = host->open();
            ASSERT_TRUE(number);
            EXPECT_GT(*number, last);
            last = *number;
            host->find(last)->setFirstSymbol(symbols[open.size()]);
            open.push_back(last);
            if (random() % 3 == 0) {
                close(last);
                open.pop_back();
            }
        }
        EXPECT_FALSE(host->open()) << "a fifth pane";
        ASSERT_TRUE(runUntil([&] { return std::ranges::all_of(open, [&](int pane) { return streaming(pane); }); }));
        EXPECT_EQ(host->numbers(), open);
        std::ranges::shuffle(open, random);
        for (const int pane : open) {
            close(pane);
            if (random() % 2) runUntil([] { return false; }, 0.02);
        }
        EXPECT_TRUE(runUntil([&] { return host->endingThreads() == 0; }, PaneHost::longestEnd + 30));
    }
    void close(int pane) {
        const double before = clock.monotonic();
        EXPECT_EQ(host->close(pane), std::nullopt);
        longestClose = std::max(longestClose, clock.monotonic() - before);
    }

    const char* const symbols[PaneHost::maxLive] = {"NQ", "ES", "AAPL", "GC"};
    std::mt19937 random{7};
    int last = 0;
    double longestClose = 0;
};

TEST_F(PaneHostLife, FourPanesComeAndGoTenTimesAndLeaveNothingBehind) {
    ASSERT_EQ(host->open(), last = 1);
    ASSERT_TRUE(signIn(1));
    close(1);
    for (int warmUp = 0; warmUp < 3; ++warmUp) openAndCloseFour();
    ASSERT_TRUE(noSocketIsLeft());
    const Holdings before = Holdings::now();
    Holdings after;
    for (int round = 0; round < 10; ++round) {
        SCOPED_TRACE(round);
        openAndCloseFour();
        EXPECT_TRUE(noSocketIsLeft());
        // the relay's ends of the sockets are in this process too, and large documents are freed in the background
        EXPECT_TRUE(runUntil(
            [&] {
                after = Holdings::now();
                return after.files <= before.files && (sanitized || after.liveMB < before.liveMB + 1);
            },
            20));
        EXPECT_LE(after.threads, before.threads);
    }
    std::printf("live MB %.1f to %.1f, longest close %.1f ms\n", before.liveMB, after.liveMB, longestClose * 1000);
    EXPECT_TRUE(sanitized || longestClose < 0.2) << "seconds that the main loop stood still";
}

TEST_F(PaneHostLife, AClockThatIsSetBackOpensEveryChartAnew) {
    ASSERT_EQ(host->open(), 1);
    ASSERT_TRUE(signIn(1));
    ASSERT_EQ(host->open(), 2);
    const auto onTheFrontContract = [&](int pane) {
        const AppModel& model = *host->find(pane);
        const auto& map = model.catalog.contractOverrides.get();
        const auto front = map.find(model.currentSymbol());
        return streaming(pane) && front != map.end() && model.channels->chartChannel.ends_with(front->second);
    };
    ASSERT_TRUE(runUntil([&] { return onTheFrontContract(1) && onTheFrontContract(2); }));
    const auto bars = [&](int pane) -> auto& { return host->find(pane)->bars.candles; };
    const Candle mark{60, 1, 1, 1, 1, 1};  // that only a chart opened anew does without
    const auto marked = [&](int pane) { return !bars(pane).empty() && bars(pane).front() == mark; };
    for (const int pane : {1, 2}) {
        bars(pane).erase(bars(pane).begin(), bars(pane).begin() + 100);  // the oldest give way to new ones
        bars(pane).insert(bars(pane).begin(), mark);
    }
    sim.onTrade("GC", 4100);  // roots that no pane shows
    sim.onQuote("CL", 60, 60.01);
    const auto pricesKept = [&] { return sim.last("GC") || sim.quote("CL"); };
    clock.setNow(clock.now() + 30);
    runUntil([] { return false; }, 0.1);
    EXPECT_TRUE(marked(1) && marked(2) && pricesKept());
    clock.setNow(clock.now() - 7200);
    EXPECT_TRUE(runUntil([&] { return streaming(1) && streaming(2) && !marked(1) && !marked(2); }));
    EXPECT_FALSE(pricesKept()) << "they are the future's";
}

TEST_F(PaneHostLife, PanesShareTheSessionAndTheShownOneStays) {
    for (int number = 1; number <= 3; ++number) ASSERT_EQ(host->open(), number);
    ASSERT_TRUE(signIn(2));
    const auto all = [&](bool connected) {
        return runUntil([&] {
            return std::ranges::all_of(host->models(),
                                       [&](auto* model) { return model->session.connected == connected; });
        });
    };
    EXPECT_TRUE(all(true)) << "the others follow a sign-in";
    host->setShown(1, true);
    host->setActive(3);
    EXPECT_EQ(host->close(1), "a window shows pane 1");
    EXPECT_EQ(host->close(3), std::nullopt);
    EXPECT_EQ(host->close(3), "there is no pane 3");
    EXPECT_EQ(host->activeNumber(), 1);
    EXPECT_EQ(host->open(), 4) << "no number comes twice";
    EXPECT_TRUE(all(true)) << "a pane that is opened into a session connects at once";
    EXPECT_EQ(host->numbers(), (std::vector{1, 2, 4}));

    host->find(4)->signOut();
    EXPECT_TRUE(all(false)) << "and a sign-out";
    EXPECT_FALSE(host->find(1)->session.isSignedIn);
    EXPECT_FALSE(auth->refreshToken);
    ASSERT_TRUE(noSocketIsLeft());
    ASSERT_TRUE(signIn(1));
    EXPECT_TRUE(all(true));
}

}  // namespace
}  // namespace vmr::test
