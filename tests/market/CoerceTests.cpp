// What a payload's field means, whatever it was written as.
#include "market/Coerce.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vmr {
namespace {

constexpr auto nothing = std::nullopt;

TEST(Coerce, ReadsEveryKindOfValue) {
    const struct {
        const char* json;
        std::optional<double> dbl;
        std::optional<std::int64_t> intv;
    } rows[] = {
        {"5", 5.0, 5},
        {"-0.0", 0.0, 0},
        {"-1.9", -1.9, -1},
        {"9007199254740993", 9007199254740992.0, 9007199254740993},
        {"-9223372036854775808.0", -9223372036854775808.0, INT64_MIN},
        {"true", 1.0, 1},
        {"null", nothing, nothing},
        {"[1]", nothing, nothing},
        {R"("1.5")", 1.5, nothing},
        {R"("0x10")", 16.0, nothing},
        {R"("+7")", 7.0, 7},
        {R"(" 12")", nothing, nothing},
        {R"("12\u0000")", nothing, nothing},
        {R"("9223372036854775808")", 9223372036854775808.0, nothing},
        {R"("inf")", HUGE_VAL, nothing},
    };
    for (const auto& row : rows) {
        const auto json = Json::parse(row.json);
        EXPECT_EQ(coerce::dbl(*json), row.dbl) << row.json;
        EXPECT_EQ(coerce::intv(*json), row.intv) << row.json;
    }
    EXPECT_EQ(coerce::minuteInt(*Json::parse(R"("60.9")")), 60) << "a marker's minute is cut from any number";
}

TEST(CoerceDeathTest, ANumberThatNoIntegerHoldsEndsTheProcess) {
    for (const char* json : {"9223372036854775808", "-1e300"})
        EXPECT_DEATH(coerce::intv(*Json::parse(json)), "velmora: fatal") << json;
    EXPECT_DEATH(coerce::minuteInt(*Json::parse(R"("nan")")), "velmora: fatal");
}

}  // namespace
}  // namespace vmr
