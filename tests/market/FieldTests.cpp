// What a field means, whatever it was written as, and what is made of the derived ones: strikes, walls, markers, the
// per-minute channels, the oscillator and the support/resistance sessions.
#include <gmock/gmock.h>

#include <cmath>

#include "market/BubbleParser.h"
#include "market/Coerce.h"
#include "market/HfHistoryParser.h"
#include "market/LevelsParser.h"
#include "market/MinuteChannel.h"
#include "market/OscParser.h"
#include "market/SRLevelsParser.h"
#include "market/StrikesParser.h"

namespace vmr {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto nothing = std::nullopt;

Json json(const std::string& text) { return Json::parse(text).value(); }

DerivedFields fieldsOf(const std::string& text) {
    DerivedFields fields;
    const Json object = json(text);
    for (const auto& [key, value] : object.members()) fields[std::string(key)] = object.at(value);
    return fields;
}

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
        const auto value = json(row.json);
        RepairTally tally;
        EXPECT_EQ(coerce::dbl(value), row.dbl) << row.json;
        EXPECT_EQ(coerce::intv(value, tally), row.intv) << row.json;
        EXPECT_EQ(tally.count(), row.repairs) << row.json;
    }
    RepairTally tally;
    EXPECT_EQ(coerce::minuteInt(json(R"("60.9")"), tally), 60) << "a marker's minute is cut from any number";
    EXPECT_EQ(coerce::minuteInt(json(R"("nan")"), tally), nothing);
    EXPECT_EQ(tally.count(), 1u);
}

TEST(StrikesParser, SortsWhatCanBeRead) {
    const auto rows = [](const std::string& list) {
        return StrikesParser::parse(fieldsOf(R"({"gexByStrike":)" + list + "}"));
    };
    EXPECT_THAT(rows(R"([{"strike":"5.5","callGex":"1e3","putGex":-2,"callDex":3,"putDex":4,"callHf":5,"putHf":6,
                          "callOI":7,"putOI":true,"other":9},{"callGex":1},{"strike":null},{"strike":"x"},
                         {"strike":4,"callGex":"x","strike":8}])"),
                ElementsAre(StrikeRow{4}, StrikeRow{5.5, 1000, -2, 3, 4, 5, 6, 7, 1}));
    for (const char* none : {R"({"0":{"strike":1}})", R"([{"strike":1},2])"}) EXPECT_THAT(rows(none), IsEmpty());
}

TEST(LevelsParser, LabelsTheStrikeAndStandsAtThePrice) {
    using Levels = std::vector<std::pair<std::string, double>>;
    const std::pair<const char*, Levels> cases[] = {
        {R"({"etfRatio":0.0405,"callWallStrike":500})", {{"Call Wall 500", 20.25}}},
        {R"({"putWallStrike":482.5,"callWallStrike":"490"})", {{"Call Wall 490", 490}, {"Put Wall 482.5", 482.5}}},
        {R"({"etfRatio":"x","indexEtfRatio":2,"putWallStrike":3})", {{"Put Wall 3", 6}}},
        {R"({"etfRatio":0,"indexEtfRatio":2,"callWallStrike":500})", {}},
        {R"({"etfRatio":10,"callWallStrike":1e308,"putWallStrike":-5})", {}},
        {R"({"callWallStrike":1e20})", {{"Call Wall 100000000000000000000", 1e20}}},
    };
    UuidSource ids(1);
    for (const auto& [text, expected] : cases) {
        Levels found;
        for (const PriceLevel& level : LevelsParser::parse(fieldsOf(text), ids))
            found.emplace_back(level.label, level.price);
        EXPECT_EQ(found, expected) << text;
    }
}

TEST(BubbleParser, ReadsEachGroupByItselfAndWeighsTrianglesByTheLargestNet) {
    EXPECT_EQ(BubbleParser::bubblePts(
                  json(R"({"s":1,"dom":2,"pos":true,"s2":"x","dom2":1,"s3":"5","dom3":"x","pos3":"0"})"), 60),
              (std::vector<BubblePt>{{60, 1, 2, true, 0}, {60, 5, 0, false, 2}}));
    EXPECT_EQ(BubbleParser::bubblePts(
                  json(R"({"s":1,"dom":4,"pos":true,"s2":2,"dom2":5,"pos2":false,"s3":3,"dom3":6,"pos3":true})"), 60),
              (std::vector<BubblePt>{{60, 1, 4, true, 0}, {60, 2, 5, false, 1}, {60, 3, 6, true, 2}}));
    EXPECT_EQ(BubbleParser::trianglePts(json(R"({"d":[[1,-10],["2","4",9],[3],["x",1],[4,null],[5,0]]})"), 60),
              (std::vector<TrianglePt>{{60, 1, -10, 10}, {60, 2, 4, 10}, {60, 5, 0, 10}}));
    for (const char* none : {R"({"d":[[1,0],[2,-0.0]]})", R"({"d":[[1,5],7]})", R"({"d":{"a":[1,5]}})"})
        EXPECT_THAT(BubbleParser::trianglePts(json(none), 60), IsEmpty()) << none;
}

TEST(MinuteChannel, ReadsHistoriesAndSingleMinutes) {
    const HfCandle two{std::nullopt, std::nullopt, std::nullopt, 2};
    const struct {
        const char* payload;
        HfByMin minutes;
        const MinuteChannel& channel = hfHistoryMinutes;
        std::uint64_t repairs = 0;
    } cases[] = {
        {R"({"candles":{"60":{"o":1,"h":"2","l":true,"c":4},"+120":{"c":2},"-60":{},"":{"c":9},"1.5":{"c":9},
                        "x":{"c":9},"180":5,"99999999999999999999":{}}})",
         {{60, {1, 2, 1, 4}}, {120, two}, {-60, {}}}},
        // an object under the snapshot's key decides, even if it is empty
        {R"({"candles":{},"minuteTs":60,"candle":{"c":2}})", {}},
        {R"({"candles":[1],"minuteTs":"60","candle":{"c":2}})", {{60, two}}},
        // the text of a fraction is a minute on the marker channels alone
        {R"({"minuteTs":"60.9","candle":{"c":2}})", {}},
        {R"({"minuteTs":"60.9","bubble":{"c":2}})", {{60, two}}, bubbleMinutes},
        {R"({"minuteTs":"60.9","triangle":{"c":2}})", {{60, two}}, triangleMinutes},
        {R"({"minuteTs":"inf","triangle":{"c":2}})", {}, triangleMinutes, 1},
        {R"({"minuteTs":1e308,"candle":{"c":2}})", {}, hfHistoryMinutes, 1},
    };
    for (const auto& c : cases) {
        HfByMin found;
        RepairTally tally;
        forEachMinute(json(c.payload), c.channel, tally, [&found](std::int64_t minute, JsonView object) {
            found[minute] = HfHistoryParser::hfCandle(object);
        });
        EXPECT_EQ(found, c.minutes) << c.payload;
        EXPECT_EQ(tally.count(), c.repairs) << c.payload;
    }
}

TEST(OscParser, MergesNameByName) {
    OscByMin minutes;
    for (const char* payload : {R"({"points":{"1700000000":{"nq":1,"es":"12.5","other":3},"60":{"x":1}}})",
                                R"({"points":{"1700000000000":{"nq":5,"es":" 12.5","vix":null,"call":true},
                                              "1.5":{"nq":9},"x":{"nq":9},"120":[9],"-5":{"net":1}}})",
                                R"({"points":[1]})", R"({"60":{"nq":7}})"})
        OscParser::merge(json(payload), minutes);
    EXPECT_EQ(minutes.size(), 3u);
    OscLines expected;
    expected.nq = {{1'700'000'000, 5}};
    expected.es = {{1'700'000'000, 12.5}};
    expected.call = {{1'700'000'000, 1}};
    expected.net = {{-5, 1}};
    EXPECT_EQ(OscParser::build(minutes), expected);
}

TEST(SRLevelsParser, FindsEachSessionsTimeAndReadsItsLevels) {
    SRSessions sessions;
    RepairTally tally;
    for (const char* payload :
         {R"({"sessions":{"100":{"openPrice":1},"200":{"sessionOpenTs":"250.9","openPrice":2},
                                    "x":{"sessionOpenTs":300},"y":{"openPrice":4},"0":{},"400":[1],
                                    "500":{"sessionOpenTs":0},"600":{"sessionOpenTs":"nan"}},"sessionOpenTs":900})",
          R"({"openPrice":8})", R"({"sessions":[],"sessionOpenTs":700,"openPrice":"7"})",
          // a session comes as a whole
          R"({"sessionOpenTs":300,"openPrice":7,"up":[{"price":1}]})", R"({"sessionOpenTs":300})"})
        SRLevelsParser::merge(json(payload), sessions, tally);
    EXPECT_EQ(sessions,
              (SRSessions{
                  {100, {100, 1, {}, {}}}, {250, {250, 2, {}, {}}}, {300, {300, 0, {}, {}}}, {700, {700, 7, {}, {}}}}));
    EXPECT_EQ(tally.count(), 1u) << "a time that no integer holds";
    EXPECT_THAT(SRLevelsParser::levels(json(R"([{"i":"2.9","label":"a","price":"5","triggerTime":-1.5},{"label":"b"},
                                                {"price":"x"},{"price":6,"label":7},{"price":true,"i":null},
                                                {"price":7,"i":"nan"},{"price":8,"triggerTime":1e308},{"i":"inf"}])"),
                                       tally),
                ElementsAre(SRLevel{2, "a", 5, -1}, SRLevel{0, "", 6, 0}, SRLevel{0, "", 1, 0}));
    EXPECT_EQ(tally.count(), 3u) << "each costs its own level";
    // one entry that is no object empties the list, and nothing of it is read
    EXPECT_THAT(SRLevelsParser::levels(json(R"([{"price":1,"i":"inf"},2])"), tally), IsEmpty());
    EXPECT_EQ(tally.count(), 3u);
}

}  // namespace
}  // namespace vmr
