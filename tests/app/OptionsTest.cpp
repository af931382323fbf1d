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

TEST(Options, TakesValuesEitherWayAndPrefersTheArgumentToTheEnvironment) {
    const Lookup lookup = [](const char* name) {
        return std::string(name) == "VMR_CLOCK" ? std::optional<std::string>("2026-06-10T14:00Z@2") : std::nullopt;
    };
    const auto given = std::get<Options>(parseOptions({"--clock", "2026-06-10", "--window=800x500"}, lookup));
    EXPECT_EQ(given.clock, (ClockSetting{1781064000, 1}));
    EXPECT_EQ(given.width, 800);
    EXPECT_EQ(given.height, 500);
    EXPECT_EQ(std::get<Options>(parseOptions({}, lookup)).clock, (ClockSetting{1781100000, 2}));
}

TEST(Options, RefusesWithTheReason) {
    const struct {
        std::vector<std::string> arguments;
        std::string part;
    } cases[] = {
        {{"--fast"}, "unknown option --fast"},
        {{"--seconds"}, "--seconds needs a value"},
        {{"--seconds", "-1"}, "above 0"},
        {{"--seconds", "inf"}, "above 0"},
        {{"--seed", "x"}, "whole number"},
        {{"--clock", "yesterday"}, "needs a moment"},
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
