#include "relay/CommandLine.h"

#include <gtest/gtest.h>

#include <fstream>

namespace vmr::relay {
namespace {

using Words = std::vector<std::string>;

RelayCommandLine read(const Words& words, const char* environment = nullptr) {
    return readRelayCommandLine(words, [&](const char* name) {
        const bool known = environment && std::string(name) == "VMR_CLOCK";
        return known ? std::optional<std::string>(environment) : std::nullopt;
    });
}

TEST(RelayCommandLine, SaysWhatIsWrong) {
    for (const auto& [words, error] : std::initializer_list<std::pair<Words, std::string>>{
             {{"--sped", "1"}, "unknown option --sped"},
             {{"--seed", "1", "--seed=2"}, "--seed is given twice"},
             {{"--busy", "1000.5"}, "--busy must be a number above 0, at most 1000, not 1000.5"},
             {{"--speed", "10001", "--replay", "a"}, "--speed must be a number above 0, at most 10000, not 10001"},
             {{"--clock", "2026-06-10@10001"}, "--clock is no moment: 2026-06-10@10001"},
             {{"--tape", "a"}, "--tape and --symbol go together"},
             {{"--replay", "a", "--speed", "2", "--clock", "2026-06-10"}, "--speed and --clock contradict each other"},
             {{"--replay", "/none"}, "the recording /none cannot be opened"}})
        EXPECT_EQ(read(words).error, error);
    EXPECT_EQ(read({"--templates", "t.json"}).relay.templates, "t.json");
    EXPECT_EQ(read({}, "soon").error, "VMR_CLOCK is no moment: soon");
}

TEST(RelayCommandLine, TheClockIsTheFirstOfOptionSpeedEnvironmentAndFile) {
    const std::string file = testing::TempDir() + "/relay_clock.csv";
    std::ofstream(file) << "ts,price\n1781100000,1\n1781100600,2\n";
    const Words tape{"--tape", file, "--symbol", "ES"};
    const auto with = [&](Words more, const char* environment) {
        more.insert(more.end(), tape.begin(), tape.end());
        return read(more, environment).clock;
    };
    EXPECT_EQ(with({"--clock", "2026-06-10T12:00"}, "2026-06-10"), (ClockSetting{1781107200, 1}));
    EXPECT_EQ(with({"--speed", "4"}, "2026-06-10"), (ClockSetting{1781100300, 4}));
    EXPECT_EQ(with({}, "2026-06-10T10:00Z@2"), (ClockSetting{1781085600, 2}));
    EXPECT_EQ(with({}, ""), (ClockSetting{1781100300, 1}));
    EXPECT_EQ(momentText(1781100300.9), "2026-06-10T14:05:00Z");
}

}  // namespace
}  // namespace vmr::relay
