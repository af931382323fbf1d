// Numbers in text: the grammar of strtod and of a strict integer, whatever the locale.
#include "base/NumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <locale>
#include <random>

namespace vmr {
namespace {

using namespace std::string_view_literals;
constexpr double inf = std::numeric_limits<double>::infinity();

TEST(NumberText, ReadsWhatStrtodReads) {
    const std::pair<std::string_view, double> cases[] = {
        {"1.5", 1.5},
        {"+1.5", 1.5},
        {"-1.5", -1.5},
        {"1e3", 1000},
        {"1E+3", 1000},
        {"5.", 5},
        {".5", 0.5},
        {"-0", 0.0},
        {"007", 7},
        {"0x10", 16},
        {"-0X1.8P1", -3},
        {"0x.8", 0.5},
        {"0x1p-2", 0.25},
        {"inf", inf},
        {"-Infinity", -inf},
        {"+INF", inf},
        {"1e400", inf},
        {"-1e400", -inf},
        {"1e-400", 0},
        {"0x1p1024", inf},
        {"0x1p-1200", 0},
        {"0e99999999999", 0},
        {"4.9e-324", 5e-324},
        {"0.1", 0.1},
        {"9007199254740993", 9007199254740992.0},
        {"1e9223372036854775807", inf},
        {"0.001e-9223372036854775807", 0},
        {"1e99999999999999999999", inf},
        {"1e-99999999999999999999", 0},
    };
    for (const auto& [text, value] : cases) {
        const auto read = parseDouble(text);
        ASSERT_TRUE(read) << text;
        EXPECT_EQ(*read, value) << text;
    }
    EXPECT_TRUE(std::signbit(*parseDouble("-0")));
    EXPECT_EQ(parseDouble("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(parseDouble(std::string(400, '9')), inf);
    for (const auto text : {"nan", "NaN", "+nan", "-nan", "nan()", "nan(12_ab)"}) {
        const auto read = parseDouble(text);
        ASSERT_TRUE(read) << text;
        EXPECT_TRUE(std::isnan(*read)) << text;
    }
}

TEST(NumberText, ReadsNothingFromAnythingElse) {
    const std::string_view cases[] = {
        "",        " ",         " 1.5",     "1.5 ",     "\t1",  "\n1",  "\v1",  "\f1",   "\r1", "\0"sv,
        "\0001"sv, "1\0"sv,     "1\0002"sv, "+",        "-",    "+-1",  "--1",  ".",     "e5",  "1e",
        "1e+",     "1,5",       "1_000",    "0x",       "0xg",  "0x1p", "0x-1", "0xinf", "1x0", "in",
        "infin",   "infinity1", "nan(",     "nan(a-b)", "nanx", "abc",  "1.5f", "1..5",  "٣",
    };
    for (const auto text : cases) EXPECT_EQ(parseDouble(text), std::nullopt) << "'" << text << "'";
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
                                                              {"-0", 0},
                                                              {"9223372036854775807", INT64_MAX},
                                                              {"-9223372036854775808", INT64_MIN}};
    for (const auto& [text, value] : good) EXPECT_EQ(parseInt(text), value) << text;
    for (const auto text : {""sv, "+"sv, "-"sv, "+-1"sv, "--1"sv, " 12"sv, "12 "sv, "12.5"sv, "1e3"sv, "0x10"sv,
                            "12\0"sv, "9223372036854775808"sv, "-9223372036854775809"sv, "abc"sv})
        EXPECT_EQ(parseInt(text), std::nullopt) << "'" << text << "'";
}

TEST(NumberText, TextReadsBackAsTheSameDouble) {
    std::mt19937_64 random(11);
    for (int round = 0; round < 20'000; ++round) {
        const std::uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        ASSERT_EQ(parseDouble(doubleText(value)), value);
    }
    EXPECT_EQ(doubleText(0.1), "0.1");
}

struct CommaPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(NumberText, LocaleDoesNotMatter) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    for (const char* name : {"de_DE.UTF-8", "de_DE", "pt_BR.UTF-8", "fr_FR.UTF-8"})
        if (std::setlocale(LC_ALL, name)) break;
    EXPECT_EQ(parseDouble("1234.5"), 1234.5);
    EXPECT_EQ(parseDouble("1,5"), std::nullopt);
    EXPECT_EQ(doubleText(1234567.5), "1234567.5");
    EXPECT_EQ(parseInt("1234567"), 1234567);
    std::locale::global(old);
    std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace vmr
