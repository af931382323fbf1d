// Numbers in text: the grammar of strtod and of a strict integer.
#include "base/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace vmr {
namespace {

using namespace std::string_view_literals;

TEST(NumberText, AgreesWithStrtodOnRandomText) {
    constexpr std::string_view alphabet = "0123456789.eExXpP+-aAinf ";
    std::mt19937 random(7);
    for (int round = 0; round < 200'000; ++round) {
        std::string text;
        for (auto left = random() % 9; left > 0; --left) text += alphabet[random() % alphabet.size()];
        char* end = nullptr;
        const double expected = std::strtod(text.c_str(), &end);
        const bool whole = !text.empty() && text.front() != ' ' && *end == '\0';
        const auto read = parseDouble(text);
        ASSERT_EQ(read.has_value(), whole) << "'" << text << "'";
        if (whole) {
            ASSERT_TRUE(*read == expected || (std::isnan(*read) && std::isnan(expected))) << "'" << text << "'";
        }
    }
}

TEST(NumberText, ReadsStrictIntegers) {
    EXPECT_EQ(parseInt("+007"), 7);
    EXPECT_EQ(parseInt("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(parseInt("-9223372036854775808"), INT64_MIN);
    for (const auto text : {""sv, "+"sv, "+-1"sv, "--1"sv, " 12"sv, "12 "sv, "12.5"sv, "1e3"sv, "0x10"sv, "12\0"sv,
                            "9223372036854775808"sv, "-9223372036854775809"sv})
        EXPECT_EQ(parseInt(text), std::nullopt) << "'" << text << "'";
}

}  // namespace
}  // namespace vmr
