// Panes come and go, and leave nothing behind.
#include "workspace/PaneHost.h"

#ifdef __linux__
#include <malloc.h>
#endif

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "tests/workspace/LivePanes.h"

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
    double megabytes = 0;

    static std::ptrdiff_t entries(const char* folder) {
        std::error_code ignored;
        return std::distance(std::filesystem::directory_iterator(folder, ignored), {});
    }
    static Holdings now() {
        Holdings out{entries("/proc/self/task"), entries("/proc/self/fd"), 0};
#ifdef __linux__
        malloc_trim(0);
#endif
        std::ifstream pages("/proc/self/statm");
        double whole = 0, resident = 0;
        if (pages >> whole >> resident) out.megabytes = resident * 4096 / 1e6;
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
    const Holdings before = Holdings::now();
    for (int round = 0; round < 10; ++round) {
        SCOPED_TRACE(round);
        openAndCloseFour();
        EXPECT_TRUE(noSocketIsLeft());
        // the relay's ends of the sockets are in this process too
        EXPECT_TRUE(runUntil([&] { return Holdings::now().files <= before.files; }, 20));
        EXPECT_LE(Holdings::now().threads, before.threads);
    }
    const Holdings after = Holdings::now();
    std::printf("threads %td to %td, files %td to %td, MB %.1f to %.1f, longest close %.1f ms\n", before.threads,
                after.threads, before.files, after.files, before.megabytes, after.megabytes, longestClose * 1000);
    if (!sanitized) {
        EXPECT_LT(after.megabytes, before.megabytes + 12);
        EXPECT_LT(longestClose, 0.1) << "seconds that the main loop stood still";
    }
}

TEST_F(PaneHostLife, PanesShareTheSessionAndTheShownOneStays) {
    for (int number = 1; number <= 3; ++number) ASSERT_EQ(host->open(), number);
    ASSERT_TRUE(signIn(2));
    const auto all = [&](bool connected) {
        return runUntil([&] {
            return std::ranges::all_of(host->models(), [&](auto* model) { return model->connected == connected; });
        });
    };
    EXPECT_TRUE(all(true)) << "the others follow a sign-in";
    host->setShown(1, true);
    host->setActive(3);
    EXPECT_EQ(host->close(1), "the window shows pane 1");
    EXPECT_EQ(host->close(3), std::nullopt);
    EXPECT_EQ(host->close(3), "there is no pane 3");
    EXPECT_EQ(host->activeNumber(), 1);
    EXPECT_EQ(host->open(), 4) << "no number comes twice";
    EXPECT_TRUE(all(true)) << "a pane that is opened into a session connects at once";
    EXPECT_EQ(host->numbers(), (std::vector{1, 2, 4}));

    host->find(4)->signOut();
    EXPECT_TRUE(all(false)) << "and a sign-out";
    EXPECT_FALSE(host->find(1)->isSignedIn);
    EXPECT_FALSE(auth->refreshToken);
    ASSERT_TRUE(noSocketIsLeft());
    ASSERT_TRUE(signIn(1));
    EXPECT_TRUE(all(true));
}

}  // namespace
}  // namespace vmr::test
