// Numbers in text: the grammar of strtod and of a strict integer.
#include "base/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace vmr {
namespace {

using namespace std::string_view_literals;
constexpr double inf = std::numeric_limits<double>::infinity();

// The words, and what is out of range one way or the other; the rest is compared with strtod below.
TEST(NumberText, ReadsWordsAndNumbersOutOfRange) {
    for (const std::string text : {"INF", "Infinity", "1e400", "0x1p1024", "1e99999999999999999999"}) {
        EXPECT_EQ(parseDouble("+" + text), inf) << text;
        EXPECT_EQ(parseDouble("-" + text), -inf) << text;
    }
    for (const char* text : {"1e-400", "0x1p-1200", "0e99999999999", "0.001e-9223372036854775807"})
        EXPECT_EQ(parseDouble(text), 0) << text;
    EXPECT_TRUE(std::signbit(*parseDouble("-0")));
    EXPECT_EQ(parseDouble("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(parseDouble(std::string(400, '9')), inf);
    for (const auto text : {"NaN", "-nan", "nan()", "nan(12_ab)"})
        EXPECT_TRUE(std::isnan(parseDouble(text).value_or(0))) << text;
    for (const auto text : {"\0"sv, "1\0002"sv, "1,5"sv, "0xinf"sv, "0x-1"sv, "nan("sv, "nan(a-b)"sv, "٣"sv})
        EXPECT_EQ(parseDouble(text), std::nullopt) << "'" << text << "'";
}

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
