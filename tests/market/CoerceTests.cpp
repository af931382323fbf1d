// What a payload's field means, whatever it was written as.
#include "market/Coerce.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vmr {
namespace {

constexpr auto nothing = std::nullopt;

struct Row {
    const char* json;
    std::optional<double> dbl;
    std::optional<std::int64_t> intv;
    bool boolean;
};

TEST(Coerce, ReadsEveryKindOfValue) {
    const Row rows[] = {
        {"5", 5.0, 5, true},
        {"-0.0", 0.0, 0, false},
        {"1.9", 1.9, 1, true},
        {"-1.9", -1.9, -1, true},
        {"9007199254740993", 9007199254740992.0, 9007199254740993, true},
        {"9223372036854775807", 9223372036854775808.0, INT64_MAX, true},
        {"-9223372036854775808.0", -9223372036854775808.0, INT64_MIN, true},
        {"true", 1.0, 1, true},
        {"false", 0.0, 0, false},
        {"null", nothing, nothing, false},
        {"[1]", nothing, nothing, false},
        {R"("1.5")", 1.5, nothing, true},
        {R"("0x10")", 16.0, nothing, true},
        {R"("+7")", 7.0, 7, true},
        {R"(" 12")", nothing, nothing, false},
        {R"("12\u0000")", nothing, nothing, false},
        {R"("")", nothing, nothing, false},
        {R"("-0")", 0.0, 0, false},
        {R"("abc")", nothing, nothing, false},
        {R"("9223372036854775808")", 9223372036854775808.0, nothing, true},
        {R"("inf")", HUGE_VAL, nothing, true},
    };
    for (const Row& row : rows) {
        const auto json = Json::parse(row.json);
        ASSERT_TRUE(json) << row.json;
        EXPECT_EQ(coerce::dbl(*json), row.dbl) << row.json;
        EXPECT_EQ(coerce::intv(*json), row.intv) << row.json;
        EXPECT_EQ(coerce::intVal(*json), row.intv.value_or(0)) << row.json;
        EXPECT_EQ(coerce::boolean(*json), row.boolean) << row.json;
    }
    EXPECT_EQ(coerce::dbl(JsonView()), nothing);
    EXPECT_TRUE(coerce::boolean(*Json::parse(R"("nan")")));
}

TEST(Coerce, AMarkersMinuteIsCutFromAnyNumber) {
    const std::pair<const char*, std::optional<std::int64_t>> rows[] = {
        {R"("60.9")", 60}, {"-1.9", -1}, {"true", 1}, {R"("x")", nothing}, {"null", nothing}};
    for (const auto& [json, value] : rows) EXPECT_EQ(coerce::minuteInt(*Json::parse(json)), value) << json;
}

TEST(CoerceDeathTest, ANumberThatNoIntegerHoldsEndsTheProcess) {
    for (const char* json : {"9223372036854775808", "-1e300"}) {
        const auto value = Json::parse(json);
        EXPECT_DEATH(coerce::intv(*value), "velmora: fatal") << json;
        EXPECT_DEATH(coerce::minuteInt(*value), "velmora: fatal") << json;
    }
    for (const char* json : {R"("nan")", R"("1e30")"})
        EXPECT_DEATH(coerce::minuteInt(*Json::parse(json)), "velmora: fatal") << json;
}

}  // namespace
}  // namespace vmr
