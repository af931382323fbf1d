// The settings: lenient reading, limits, setting by name, storing; and their colours.
#include <gmock/gmock.h>

#include <array>

#include "base/Json.h"
#include "base/NumberText.h"
#include "store/ConfigIO.h"
#include "store/HexColor.h"
#include "store/SettingTable.h"

namespace vmr {
namespace {

// Each key with its default, as the stored record's readers of other versions know them.
const char* const defaults =
    R"({"candleTheme":"mono","initialCandles":200,"lineRates":true,"lineOpacity":100.0,"gexEnabled":true,)"
    R"("gexLabels":true,"gexOpacity":62.0,"gexSource":"ETF","gexBubbles":true,"gexBubbleOpacity":100.0,)"
    R"("gexPosColor":"#26a69a","gexNegColor":"#ef5350","dexEnabled":false,"dexLabels":false,"wallsEnabled":true,)"
    R"("levelsEnabled":true,"sessionEnabled":true,"sessionStart":1800,"showOpen":true,"showPrev":true,)"
    R"("vwapEnabled":true,"vwapNyEnabled":false,"showSecondary":true,"hfEnabled":true,"hfScale":5.0,)"
    R"("hfLineOpacity":100.0,"hfLateralEnabled":true,"hfLateralMode":"separated","hfLateralOpacity":52.0,)"
    R"("hfBubbles":true,"hfCallColor":"#00bcd4","hfPutColor":"#ff7a00","hfTriangleOpacity":100.0,)"
    R"("hfPressure":false,"hfScaleBySymbol":{},"vixEnabled":true,"vixMode":"30d","vixScale":0.08,"vixSmooth":5,)"
    R"("ema1Enabled":false,"ema1Period":9,"ema1Color":"#00E5FF","ema2Enabled":false,"ema2Period":200,)"
    R"("ema2Color":"#FF7A00","oiEnabled":false,"oiOpacity":40.0,"showNyClock":true,"showCountdown":true,)"
    R"("simEnabled":false,"simBalance":50000.0,"simCommission":2.5,"oscEnabled":true,"oscHeight":200.0,)"
    R"("oscNq":true,"oscEs":true,"oscVix":true,"oscCall":true,"oscPut":true,"oscNet":true})";

GexConfig read(const std::string& json) {
    const auto config = GexConfig::fromJson(json);
    EXPECT_TRUE(config) << json;
    return config.value_or(GexConfig());
}

TEST(GexConfig, WritesItsSixtyKeysWithTheirDefaults) {
    const auto expected = Json::parse(defaults);
    const auto written = Json::parse(GexConfig().toJson());
    ASSERT_TRUE(expected && written);
    EXPECT_EQ(expected->size(), 60u);
    EXPECT_EQ(written->size(), expected->size());
    for (const auto& [key, value] : expected->members()) EXPECT_EQ((*written)[key].text(), value.text()) << key;
    EXPECT_EQ(read("{}"), GexConfig());
    for (const char* text : {"", "[]", "{\"a\":1,}", "\xff"}) EXPECT_FALSE(GexConfig::fromJson(text)) << text;
}

// Another value of the same type, within every limit.
std::string other(JsonView value) {
    if (value.kind() == JsonView::Kind::boolean) return value.boolean() ? "false" : "true";
    if (value.isString()) return "\"other \\\"text\\\" é\"";
    if (value.isObject()) return R"({"NQ":0.1,"":1e-9})";
    if (value.kind() == JsonView::Kind::integer) return std::to_string(value.integer() + 1);
    return doubleText(value.number() * 0.9 + 0.3);
}

TEST(GexConfig, EveryFieldSurvivesARoundTripAndTouchesNoOther) {
    const auto all = Json::parse(defaults);
    for (const auto& [key, value] : all->members()) {
        const std::string changed = other(value);
        const GexConfig one = read("{\"" + std::string(key) + "\":" + changed + "}");
        EXPECT_NE(one, GexConfig()) << key;
        EXPECT_EQ(read(one.toJson()), one) << key;
        const auto written = Json::parse(one.toJson());
        for (const auto& [otherKey, otherValue] : all->members())
            EXPECT_TRUE(otherKey == key || (*written)[otherKey].text() == otherValue.text()) << key << " " << otherKey;
        GexConfig set;
        EXPECT_EQ(set.set(key, changed), std::nullopt) << key;
        EXPECT_EQ(set, one) << key;
    }
}

TEST(GexConfig, AMistypedFieldGetsItsDefaultAndNoOther) {
    const auto all = Json::parse(defaults);
    for (const auto& [key, value] : all->members())
        for (const std::string wrong : {"null", "[]", "{\"a\":true}", "\"5\"", "true", "1.5"}) {
            if (!value.isObject() && Json::parse(wrong)->kind() == value.kind()) continue;
            const std::string name(key), neighbour = name == "oscNet" ? "oscPut" : "oscNet";
            GexConfig expected;
            EXPECT_THAT(expected.set(name, wrong).value_or(""), testing::StartsWith("wrong type for " + name));
            EXPECT_EQ(expected, GexConfig());
            expected.set(neighbour, "false");
            EXPECT_EQ(read("{\"" + name + "\":" + wrong + ",\"unknown\":{},\"" + neighbour + "\":false}"), expected)
                << name << " " << wrong;
        }
}

TEST(GexConfig, LimitsFourFieldsAndNoOthers) {
    const std::pair<const char*, std::int64_t> counts[] = {
        {"150", 200}, {"135", 200},   {"136", 136},  {"10", 30},     {"5000", 1000},
        {"-1", 30},   {"200.0", 200}, {"31.5", 200}, {"1e300", 200}, {"9223372036854775808", 200}};
    for (const auto& [stored, value] : counts)
        EXPECT_EQ(read("{\"initialCandles\":" + std::string(stored) + "}").initialCandles, value) << stored;
    const auto limited = [](const char* balance, const char* commission, const char* height) {
        GexConfig config;
        EXPECT_EQ(config.set("simBalance", balance), std::nullopt);
        EXPECT_EQ(config.set("simCommission", commission), std::nullopt);
        EXPECT_EQ(config.set("oscHeight", height), std::nullopt);
        return std::array{config.simBalance, config.simCommission, config.oscHeight};
    };
    EXPECT_EQ(limited("5", "-1", "50"), (std::array{1000.0, 0.0, 100.0}));
    EXPECT_EQ(limited("20000000", "50.05", "400.5"), (std::array{20000000.0, 50.0, 400.0}));
    EXPECT_EQ(read(R"({"lineOpacity":-1000})").lineOpacity, -1000);
    EXPECT_TRUE(read(R"({"hfScaleBySymbol":{"NQ":1,"ES":"x"}})").hfScaleBySymbol.empty());
    GexConfig odd;  // one field each, which the decoder itself would fail the record for
    odd.candleTheme = "\uFFFD";
    odd.oscNet = false;
    EXPECT_EQ(read(R"({"hfScale":1e400,"candleTheme":"\ud800","vixSmooth":-1e999,"oscNet":false})"), odd);
}

TEST(SettingTable, HasARowForEveryFieldSectionBySection) {
    const auto all = Json::parse(defaults);
    EXPECT_EQ(settingTable().size(), all->size());
    auto section = SettingSection::overlays;
    for (const Setting& one : settingTable()) {
        EXPECT_NE((*all)[one.name].kind(), JsonView::Kind::missing) << one.name;
        EXPECT_EQ(findSetting(one.name), &one) << "each once";
        EXPECT_GE(one.section, section) << one.name;
        section = one.section;
        const JsonView value = (*all)[one.name];
        if (value.isNumber()) {
            EXPECT_GT(one.step, 0) << one.name;
            EXPECT_TRUE(one.offered.least <= value.number() && value.number() <= one.offered.most) << one.name;
            EXPECT_TRUE(one.stored.least <= one.offered.least && one.offered.most <= one.stored.most) << one.name;
        }
    }
}

TEST(ConfigIO, LoadsWhatWasSavedAndWritesNothingItself) {
    MemoryPreferences preferences;
    preferences.set("gex-config", "broken");
    EXPECT_EQ(ConfigIO::load(preferences), GexConfig());
    EXPECT_EQ(preferences.get("gex-config"), "broken");
    GexConfig config;
    config.vixMode = "1d";
    ConfigIO::save(preferences, config);
    EXPECT_EQ(ConfigIO::load(preferences), config);
    for (const char* key : {"gex-last-symbol", "gex-timeframe", "another"}) preferences.set(key, "5");
    ConfigIO::reset(preferences);
    EXPECT_THAT(preferences.values(), testing::ElementsAre(testing::Pair("another", "5")));
}

TEST(HexColor, ReadsSixDigitsOrWhiteAndWritesRoundedLowerCase) {
    const Rgb orange{1, 122 / 255.0, 0};
    for (const char* text : {" #FF7A00 ", "ff7a00", "\tFf7a00"}) EXPECT_EQ(HexColor::rgb(text), orange) << text;
    for (const char* text : {"", "#fff", "ff7a0g", "##ff7a0", "#ff7a000", "0xff7a", "-f7a00", "ff7a00\n"})
        EXPECT_EQ(HexColor::rgb(text), (Rgb{1, 1, 1})) << text;
    EXPECT_EQ(HexColor::hex(orange), "#ff7a00");
    EXPECT_EQ(HexColor::hex({0.5 / 255, 1.5 / 255, 0.49 / 255}), "#010200");
}

}  // namespace
}  // namespace vmr
