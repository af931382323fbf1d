// The command line: what is understood, and what is refused with which words.
#include "app/Options.h"

#include <gtest/gtest.h>

namespace vmr {
namespace {

using Lookup = std::function<std::optional<std::string>(const char*)>;
const Lookup emptyEnvironment = [](const char*) { return std::nullopt; };

std::string problemOf(const std::vector<std::string>& arguments, const Lookup& lookup = emptyEnvironment) {
    const auto parsed = parseOptions(arguments, lookup);
    const auto* problem = std::get_if<std::string>(&parsed);
    return problem ? *problem : "";
}

TEST(Options, ReadsEveryOption) {
    const auto parsed = parseOptions({"--practice", "--headless", "--seconds", "2.5", "--state=out.json", "--seed", "9",
                                      "--clock", "2026-06-10T10:00@60", "--tape", "t.csv", "--symbol", "GC", "--speed",
                                      "30", "--token-life", "5", "--window", "800x500"},
                                     emptyEnvironment);
    ASSERT_TRUE(std::holds_alternative<Options>(parsed)) << std::get<std::string>(parsed);
    const auto& o = std::get<Options>(parsed);
    EXPECT_TRUE(o.practice && o.headless);
    EXPECT_EQ(o.seconds, 2.5);
    EXPECT_EQ(o.stateFile, "out.json");
    EXPECT_EQ(o.seed, 9u);
    EXPECT_EQ(o.clock, (ClockSetting{1781100000, 60}));
    EXPECT_EQ(o.tapeFile, "t.csv");
    EXPECT_EQ(o.tapeSymbol, "GC");
    EXPECT_EQ(o.speed, 30.0);
    EXPECT_EQ(o.tokenLife, 5.0);
    EXPECT_EQ(o.width, 800);
    EXPECT_EQ(o.height, 500);
}

TEST(Options, TheArgumentWinsOverTheEnvironmentsClock) {
    const Lookup lookup = [](const char* name) {
        return std::string(name) == "VMR_CLOCK" ? std::optional<std::string>("2026-06-10T14:00Z@2") : std::nullopt;
    };
    EXPECT_EQ(std::get<Options>(parseOptions({}, lookup)).clock, (ClockSetting{1781100000, 2}));
    EXPECT_EQ(std::get<Options>(parseOptions({"--clock", "2026-06-10"}, lookup)).clock, (ClockSetting{1781064000, 1}));
}

TEST(Options, RefusesWithTheReason) {
    const struct {
        std::vector<std::string> arguments;
        std::string part;
    } cases[] = {
        {{"--fast"}, "unknown option --fast"},
        {{"--fast", "1"}, "unknown option --fast"},
        {{"--seconds"}, "--seconds needs a value"},
        {{"--seconds", "-1"}, "above 0"},
        {{"--seconds", "1s"}, "above 0"},
        {{"--seconds", "inf"}, "above 0"},
        {{"--seed", "x"}, "whole number"},
        {{"--clock", "yesterday"}, "needs a moment"},
        {{"--clock", "2026-06-10@0"}, "needs a moment"},
        {{"--clock", "2026-02-30"}, "needs a moment"},
        {{"--window", "800"}, "needs a size"},
        {{"--tape", "t.csv", "--symbol", "GC"}, "need --practice"},
        {{"--practice", "--tape", "t.csv"}, "go together"},
        {{"--practice", "--speed", "2"}, "needs --tape"},
        {{"--headless", "--screenshot", "a.png"}, "needs a window"},
    };
    for (const auto& c : cases)
        EXPECT_NE(problemOf(c.arguments).find(c.part), std::string::npos) << c.part << " | " << problemOf(c.arguments);
}

}  // namespace
}  // namespace vmr
