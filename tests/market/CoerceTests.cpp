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
        std::uint64_t repairs = 0;
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
        {"9223372036854775808", 9223372036854775808.0, nothing, 1},
        {"-1e300", -1e300, nothing, 1},
    };
    for (const auto& row : rows) {
        const auto json = Json::parse(row.json);
        RepairTally tally;
        EXPECT_EQ(coerce::dbl(*json), row.dbl) << row.json;
        EXPECT_EQ(coerce::intv(*json, tally), row.intv) << row.json;
        EXPECT_EQ(tally.count(), row.repairs) << row.json;
    }
    RepairTally tally;
    EXPECT_EQ(coerce::minuteInt(*Json::parse(R"("60.9")"), tally), 60) << "a marker's minute is cut from any number";
    EXPECT_EQ(coerce::minuteInt(*Json::parse(R"("nan")"), tally), nothing);
    EXPECT_EQ(tally.count(), 1u);
}

}  // namespace
}  // namespace vmr
