// Strikes, walls, markers and the per-minute channels of an options source.
#include <gmock/gmock.h>

#include <cmath>

#include "market/BubbleParser.h"
#include "market/Coerce.h"
#include "market/HfHistoryParser.h"
#include "market/LevelsParser.h"
#include "market/MinuteChannel.h"
#include "market/StrikesParser.h"
#include "tests/market/ParsedJson.h"

namespace vmr {
namespace {

using test::json;
using testing::ElementsAre;
using testing::IsEmpty;

DerivedFields fieldsOf(const std::string& text) {
    DerivedFields fields;
    const Json object = json(text);
    for (const auto& [key, value] : object.members()) fields[std::string(key)] = object.at(value);
    return fields;
}

std::vector<double> strikes(const std::string& text) {
    std::vector<double> found;
    for (const StrikeRow& row : StrikesParser::parse(fieldsOf(text))) found.push_back(row.strike);
    return found;
}

TEST(FieldView, AnExpirationsOwnKeysWin) {
    const DerivedFields fields = fieldsOf(
        R"({"etfRatio":2,"hfTotal":5,"totalCallOI":7,"byExpiration":{"a":{"etfRatio":3,"hfTotal":null},"b":[1]}})");
    const auto seen = [&fields](const char* expiration, const char* key) {
        return coerce::dbl(FieldView::forExpiration(fields, expiration)[key]);
    };
    EXPECT_EQ(seen("a", "etfRatio"), 3);
    EXPECT_EQ(seen("a", "hfTotal"), std::nullopt);  // there, and nothing
    EXPECT_EQ(seen("a", "totalCallOI"), 7);
    for (const char* none : {"", "b", "c"}) EXPECT_EQ(seen(none, "etfRatio"), 2) << none;
    EXPECT_EQ(StrikesParser::totals(FieldView::forExpiration(fields, "a")), (HudMetrics{7, 0, 0, 0, 0}));
}

TEST(StrikesParser, SortsWhatCanBeRead) {
    const auto rows = StrikesParser::parse(fieldsOf(
        R"({"gexByStrike":[{"strike":"5.5","callGex":"1e3","putGex":-2,"callDex":3,"putDex":4,"callHf":5,"putHf":6,
            "callOI":7,"putOI":true,"other":9},{"callGex":1},{"strike":null},{"strike":"x"},
            {"strike":4,"callGex":"x","strike":8}]})"));
    EXPECT_THAT(rows, ElementsAre(StrikeRow{4}, StrikeRow{5.5, 1000, -2, 3, 4, 5, 6, 7, 1}));

    for (const char* none : {R"({})", R"({"gexByStrike":{"0":{"strike":1}}})", R"({"gexByStrike":[{"strike":1},2]})"})
        EXPECT_THAT(strikes(none), IsEmpty()) << none;

    const auto last = strikes(R"({"gexByStrike":[{"strike":"nan"},{"strike":3},{"strike":"nan"},{"strike":"-inf"},
                                 {"strike":1},{"strike":"inf"},{"strike":2}]})");
    ASSERT_EQ(last.size(), 7U);
    EXPECT_TRUE(std::isnan(last[5]) && std::isnan(last[6]));
    EXPECT_THAT(std::vector(last.begin(), last.begin() + 5), ElementsAre(-INFINITY, 1, 2, 3, INFINITY));
}

TEST(LevelsParser, LabelsTheStrikeAndStandsAtThePrice) {
    UuidSource ids(1);
    const auto levels = [&ids](const std::string& text) {
        std::vector<std::pair<std::string, double>> found;
        for (const PriceLevel& level : LevelsParser::parse(fieldsOf(text), ids)) {
            EXPECT_EQ(level, (PriceLevel{{}, level.label, level.price, 0.667, 0.667, 0.667}));
            found.emplace_back(level.label, level.price);
        }
        return found;
    };
    using Levels = std::vector<std::pair<std::string, double>>;
    const struct {
        const char* json;
        Levels levels;
    } cases[] = {
        {R"({"etfRatio":0.0405,"callWallStrike":500})", {{"Call Wall 500", 20.25}}},
        {R"({"putWallStrike":482.5,"callWallStrike":"490"})", {{"Call Wall 490", 490}, {"Put Wall 482.5", 482.5}}},
        {R"({"etfRatio":"x","indexEtfRatio":2,"putWallStrike":3})", {{"Put Wall 3", 6}}},
        {R"({"etfRatio":0,"indexEtfRatio":2,"callWallStrike":500})", {}},
        {R"({"etfRatio":"nan","callWallStrike":500})", {}},
        {R"({"etfRatio":10,"callWallStrike":1e308,"putWallStrike":-5})", {}},
        {R"({"callWallStrike":1e20})", {{"Call Wall 100000000000000000000", 1e20}}},
    };
    for (const auto& c : cases) EXPECT_EQ(levels(c.json), c.levels) << c.json;
}

TEST(BubbleParser, ReadsEachGroupByItself) {
    using Points = std::vector<BubblePt>;
    const auto points = [](const char* text) { return BubbleParser::bubblePts(json(text), 60); };
    EXPECT_EQ(points(R"({"s":1,"dom":2,"pos":true,"s2":"3","dom2":"x","pos2":"0","s3":5,"dom3":6,"pos3":1})"),
              (Points{{60, 1, 2, true, 0}, {60, 3, 0, false, 1}, {60, 5, 6, true, 2}}));
    EXPECT_EQ(points(R"({"s":null,"dom":1,"s2":"x","s3":5})"), (Points{{60, 5, 0, false, 2}}));
}

TEST(BubbleParser, WeighsTrianglesByTheLargestNet) {
    EXPECT_EQ(BubbleParser::trianglePts(json(R"({"d":[[1,-10],["2","4",9],[3],["x",1],[4,null],[5,0]]})"), 60),
              (std::vector<TrianglePt>{{60, 1, -10, 10}, {60, 2, 4, 10}, {60, 5, 0, 10}}));
    for (const char* none :
         {R"({"d":[[1,0],[2,-0.0]]})", R"({"d":[[1,5],7]})", R"({"d":[{"0":1,"1":5}]})", R"({"d":{"a":[1,5]}})"})
        EXPECT_THAT(BubbleParser::trianglePts(json(none), 60), IsEmpty()) << none;
    EXPECT_EQ(BubbleParser::trianglePts(json(R"({"d":[[1,"nan"],[2,3]]})"), 60).front().minuteMax, 3);
}

TEST(MinuteChannel, ReadsHistoriesAndSingleMinutes) {
    const auto minutes = [](const std::string& text, const MinuteChannel& channel) {
        std::map<std::int64_t, HfCandle> found;
        forEachMinute(json(text), channel, [&found](std::int64_t minute, JsonView object) {
            found[minute] = HfHistoryParser::hfCandle(object);
        });
        return found;
    };
    const HfByMin none;
    const HfCandle two{std::nullopt, std::nullopt, std::nullopt, 2};
    EXPECT_EQ(
        minutes(R"({"candles":{"60":{"o":1,"h":"2","l":true,"c":4},"+120":{"c":2},"-60":{},"":{"c":9},"1.5":{"c":9},
                          "x":{"c":9},"180":5,"99999999999999999999":{}}})",
                hfHistoryMinutes),
        (HfByMin{{60, {1, 2, 1, 4}}, {120, two}, {-60, {}}}));
    // an object under the snapshot's key decides, even if it is empty
    EXPECT_EQ(minutes(R"({"candles":{},"minuteTs":60,"candle":{"c":2}})", hfHistoryMinutes), none);
    EXPECT_EQ(minutes(R"({"candles":[1],"minuteTs":"60","candle":{"c":2}})", hfHistoryMinutes), (HfByMin{{60, two}}));
    EXPECT_EQ(minutes(R"({"minuteTs":60,"candle":[2]})", hfHistoryMinutes), none);
    // the text of a fraction is a minute on the marker channels alone
    for (const MinuteChannel* channel : {&bubbleMinutes, &triangleMinutes}) {
        const std::string single = R"({"minuteTs":"60.9",")" + std::string(channel->singleKey) + R"(":{"c":2}})";
        EXPECT_EQ(minutes(single, *channel), (HfByMin{{60, two}}));
        EXPECT_DEATH(minutes(R"({"minuteTs":"nan"})", *channel), "velmora: fatal");
    }
    EXPECT_EQ(minutes(R"({"minuteTs":"60.9","candle":{"c":2}})", hfHistoryMinutes), none);
}

}  // namespace
}  // namespace vmr
