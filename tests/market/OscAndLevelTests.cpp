// The oscillator's minutes and lines, and the support/resistance sessions.
#include <gmock/gmock.h>

#include "market/OscParser.h"
#include "market/SRLevelsParser.h"
#include "tests/market/ParsedJson.h"

namespace vmr {
namespace {

using test::json;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(OscParser, MergesNameByName) {
    OscByMin minutes;
    OscParser::merge(
        json(
            R"({"points":{"1700000000":{"nq":1,"es":"12.5","vix":2,"other":3},"60":{"x":1},"1000000000000":{"net":9}}})"),
        minutes);
    OscParser::merge(json(R"({"points":{"1700000000000":{"nq":5,"es":" 12.5","vix":null,"call":true,"put":-1},
                              "":{"nq":9},"1.5":{"nq":9},"x":{"nq":9},"120":[9],"-5":{"net":1}}})"),
                     minutes);
    for (const char* none : {R"({"points":[1]})", "[]", R"({"60":{"nq":7}})"}) OscParser::merge(json(none), minutes);

    OscMinute both;
    both.nq = 5;
    both.es = 12.5;
    both.vix = 2;
    both.call = 1;
    both.put = -1;
    OscMinute net9, net1;
    net9.net = 9;
    net1.net = 1;
    EXPECT_EQ(minutes, (OscByMin{{-5, net1}, {60, {}}, {1'700'000'000, both}, {1'000'000'000'000, net9}}));

    OscLines lines;
    lines.nq = {{1, 1}, {2, 2}};
    OscParser::build(minutes, lines);
    EXPECT_EQ(lines.nq, (std::vector<OscPt>{{1'700'000'000, 5}}));
    EXPECT_EQ(lines.net, (std::vector<OscPt>{{-5, 1}, {1'000'000'000'000, 9}}));
}

SRSessions merged(std::initializer_list<const char*> payloads) {
    SRSessions sessions;
    for (const char* payload : payloads) SRLevelsParser::merge(json(payload), sessions);
    return sessions;
}

TEST(SRLevelsParser, FindsEachSessionsTime) {
    EXPECT_EQ(merged({R"({"sessions":{"100":{"openPrice":1},"200":{"sessionOpenTs":"250.9","openPrice":2},
                          "x":{"sessionOpenTs":300},"y":{"openPrice":4},"0":{},"400":[1],"500":{"sessionOpenTs":0},
                          "600":{"sessionOpenTs":"x"}},"sessionOpenTs":900})"}),
              (SRSessions{
                  {100, {100, 1, {}, {}}}, {250, {250, 2, {}, {}}}, {300, {300, 0, {}, {}}}, {600, {600, 0, {}, {}}}}));
    EXPECT_EQ(merged({R"({"sessionOpenTs":100,"openPrice":"7"})", R"({"openPrice":8})", "[1]",
                      R"({"sessions":[],"sessionOpenTs":200})", R"({"sessions":{}})"}),
              (SRSessions{{100, {100, 7, {}, {}}}, {200, {200, 0, {}, {}}}}));
    // a session comes as a whole
    EXPECT_EQ(merged({R"({"sessionOpenTs":100,"openPrice":7,"up":[{"price":1}]})", R"({"sessionOpenTs":100})"}),
              (SRSessions{{100, {100, 0, {}, {}}}}));
    EXPECT_DEATH(merged({R"({"sessionOpenTs":1e300})"}), "velmora: fatal");
}

TEST(SRLevelsParser, ReadsLevels) {
    EXPECT_THAT(SRLevelsParser::levels(json(R"([{"i":"2.9","label":"a","price":"5","triggerTime":-1.5},{"label":"b"},
                                                {"price":"x"},{"price":6,"label":7},{"price":true,"i":null}])")),
                ElementsAre(SRLevel{2, "a", 5, -1}, SRLevel{0, "", 6, 0}, SRLevel{0, "", 1, 0}));
    // one entry that is no object empties the list, and nothing of it is read
    EXPECT_THAT(SRLevelsParser::levels(json(R"([{"price":1,"i":"inf"},2])")), IsEmpty());
    EXPECT_THAT(SRLevelsParser::levels(json(R"({"price":1})")), IsEmpty());
}

}  // namespace
}  // namespace vmr
