// Numbers in text: the grammar of strtod and of a strict integer, whatever the locale.
#include "base/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <random>

namespace vmr {
namespace {

using namespace std::string_view_literals;
constexpr double inf = std::numeric_limits<double>::infinity();

// The words, and what is out of range one way or the other; the rest is compared with strtod below.
TEST(NumberText, ReadsWordsAndNumbersOutOfRange) {
    const std::pair<std::string_view, double> cases[] = {
        {"-0X1.8P1", -3},
        {"-Infinity", -inf},
        {"+INF", inf},
        {"1e400", inf},
        {"-1e400", -inf},
        {"1e-400", 0},
        {"0x1p1024", inf},
        {"0x1p-1200", 0},
        {"0e99999999999", 0},
        {"4.9e-324", 5e-324},
        {"9007199254740993", 9007199254740992.0},
        {"0.001e-9223372036854775807", 0},
        {"1e99999999999999999999", inf},
        {"1e-99999999999999999999", 0},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(parseDouble(text), value) << text;
    EXPECT_TRUE(std::signbit(*parseDouble("-0")));
    EXPECT_EQ(parseDouble("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(parseDouble(std::string(400, '9')), inf);
    for (const auto text : {"NaN", "-nan", "nan()", "nan(12_ab)"})
        EXPECT_TRUE(std::isnan(parseDouble(text).value_or(0))) << text;
    for (const auto text : {""sv, " 1.5"sv, "1.5 "sv, "\v1"sv, "\0"sv, "1\0002"sv, "1,5"sv, "1_000"sv, "0xinf"sv,
                            "0x-1"sv, "infin"sv, "nan("sv, "nan(a-b)"sv, "abc"sv, "1.5f"sv, "٣"sv})
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
    const std::pair<std::string_view, std::int64_t> good[] = {{"0", 0},
                                                              {"-7", -7},
                                                              {"+7", 7},
                                                              {"007", 7},
                                                              {"9223372036854775807", INT64_MAX},
                                                              {"-9223372036854775808", INT64_MIN}};
    for (const auto& [text, value] : good) EXPECT_EQ(parseInt(text), value) << text;
    for (const auto text : {""sv, "+"sv, "+-1"sv, "--1"sv, " 12"sv, "12 "sv, "12.5"sv, "1e3"sv, "0x10"sv, "12\0"sv,
                            "9223372036854775808"sv, "-9223372036854775809"sv})
        EXPECT_EQ(parseInt(text), std::nullopt) << "'" << text << "'";
}

struct CommaPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(NumberText, LocaleDoesNotMatter) {
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    EXPECT_EQ(parseDouble("1234.5"), 1234.5);
    EXPECT_EQ(parseDouble("1,5"), std::nullopt);
    EXPECT_EQ(doubleText(1234567.1), "1234567.1");
    std::locale::global(old);
}

}  // namespace
}  // namespace vmr
