// Change notices under subscription changes from inside, and the small value types of the folder.
#include "base/Signal.h"

#include <gmock/gmock.h>

#include "base/Uuid.h"

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

TEST(Signal, AConnectionMayEndItselfOutliveItsSignalAndBeReplaced) {
    Connection outlives;
    int calls = 0;
    {
        Signal<> signal;
        outlives = signal.connect([&] {
            ++calls;
            outlives.end();
        });
        signal();
        signal();
        outlives = signal.connect([&] { calls += 10; });
        outlives = signal.connect([&] { calls += 100; });
        signal();
    }
    EXPECT_EQ(calls, 101);
}

TEST(Observable, GivesNoticeOfDifferencesAndOfEveryEdit) {
    Observable<std::string> text;
    int notices = 0;
    const auto connection = text.changed.connect([&] { ++notices; });
    text = "a";
    text = "a";
    EXPECT_EQ(notices, 1);
    text.edit([](std::string& value) { value += ""; });
    EXPECT_EQ(notices, 2);
}

TEST(Uuid, IsVersionFourUniqueAndRepeatableBySeed) {
    UuidSource seeded(5), again(5), other;
    for (int i = 0; i < 100; ++i) {
        const Uuid id = seeded.next();
        ASSERT_EQ(id, again.next());
        EXPECT_NE(id, other.next());
        EXPECT_THAT(id.text(),
                    testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    }
}

}  // namespace
}  // namespace vmr
