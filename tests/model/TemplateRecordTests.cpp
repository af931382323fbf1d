// What a template holds, and how its date is shown.
#include "model/TemplateRecord.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "model/ChartTemplates.h"

namespace vmr::test {
namespace {

JsonMembers members(const std::string& text) { return jsonMembers(text).value(); }
JsonMembers viewOf(const std::string& text) { return members("{\"_view\":" + text + "}"); }

TEST(TemplateRecords, SettingsAreReadLenientlyAndTheSourceStays) {
    const auto read = TemplateRecord::config(
        members(
            R"({"gexSource":"INDEX","ema1Enabled":"yes","ema2Enabled":true,"initialCandles":5000,"_view":7,"x":{}})"),
        "BOTH");
    GexConfig expected;
    expected.gexSource = "BOTH";
    expected.ema2Enabled = true;
    expected.initialCandles = 1000;
    EXPECT_EQ(read, expected) << "what is missing or odd is the default";
    EXPECT_EQ(TemplateRecord::config({}, "\" odd")->gexSource, "\" odd");
}

TEST(TemplateRecords, AManualRangeStaysWhileTheMarketIsNear) {
    const struct {
        const char* view;
        std::vector<double> byHand, automatic;  // closes
    } cases[] = {
        {R"({"as":false,"pf":100,"pt":200})", {203, 96}, {206, 95, std::nan("")}},
        {R"({"as":false,"pf":"100","pt":"2e2"})", {204}, {205}},
        {R"({"as":false,"pf":-10,"pt":10})", {0}, {}},
        {R"({"as":true,"pf":100,"pt":200})", {}, {150}},
        {R"({"pf":100,"pt":200})", {}, {150}},
        {R"({"as":"false","pf":100,"pt":200})", {}, {150}},
        {R"({"as":0,"pf":100,"pt":200})", {}, {150}},
        {R"({"as":false,"pf":200,"pt":100})", {}, {150}},
        {R"({"as":false,"pf":100,"pt":100})", {}, {100}},
        {R"({"as":false,"pf":100})", {}, {150}},
        {R"({"as":false,"pf":"nan","pt":200})", {}, {150}},
        {R"({"as":false,"pf":100,"pt":"inf"})", {}, {150}},
    };
    for (const auto& [text, byHand, automatic] : cases) {
        const auto view = TemplateRecord::view(viewOf(text));
        ASSERT_TRUE(view) << text;
        for (const double close : byHand) {
            const ViewSetup near = TemplateRecord::viewNear(*view, close);
            EXPECT_TRUE(!near.autoY && near.low < near.high) << text << " at " << close;
        }
        for (const double close : automatic)
            EXPECT_TRUE(TemplateRecord::viewNear(*view, close).autoY) << text << " at " << close;
    }
    for (const char* none : {"[]", "null", "7"}) EXPECT_FALSE(TemplateRecord::view(viewOf(none))) << none;
    EXPECT_FALSE(TemplateRecord::view({}));
}

TEST(TemplateRecords, ADateIsToldInTheMachinesZone) {
    const char* const before = std::getenv("TZ");
    const std::string old = before ? before : "";
    ::setenv("TZ", "America/New_York", 1);
    ::tzset();
    for (const auto& [text, shown] : {std::pair("2026-06-10T14:00:05.123Z", "saved 6/10 10:00"),
                                      {"2026-06-10T14:00:05Z", "saved 6/10 10:00"},
                                      {"2026-01-01T04:59:59+00:00", "saved 12/31 23:59"},
                                      {"2026-11-05T08:07:00.5-0500", "saved 11/5 08:07"},
                                      {"2026-06-10T14:00:05", ""},
                                      {"2026-06-10", ""},
                                      {"2026-06-10T14:00Z", ""},
                                      {"2026-06-31T14:00:05Z", ""},
                                      {"yesterday, I think: Z-", ""},
                                      {"", ""}})
        EXPECT_EQ(ChartTemplates::fmtDate(text), shown) << text;
    before ? ::setenv("TZ", old.c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
}

}  // namespace
}  // namespace vmr::test
