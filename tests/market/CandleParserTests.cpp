// Bars from every shape of payload, and their merging.
#include "market/CandleParser.h"

#include <gtest/gtest.h>

#include <map>

#include "support/market/SyntheticMarket.h"

namespace vmr::test {
namespace {

Bars parse(const std::string& json, RepairTally& tally) {
    return CandleParser::parse(Json::parse(json).value(), tally);
}

Candle bar(std::int64_t time, double close = 1, double volume = 0) { return {time, 1, 2, 0.5, close, volume}; }

TEST(CandleParser, ReadsEveryShape) {
    const std::string p = R"("o":1,"h":2,"l":0.5,"c":1)";
    const struct {
        std::string json;
        Bars bars;
        std::uint64_t repairs = 0;
    } cases[] = {
        // an array, in arrival order; it counts as a whole, so the impossible time beside a null is never read
        {R"([{"ts":120000,)" + p + R"(},{"time":60,)" + p + R"(,"volume":7},{"ts":60000,"o":1}])",
         {bar(120), bar(60, 1, 7)}},
        {R"([{"ts":"inf",)" + p + "},null]", {}},
        // an object with an array, which if it does not count leaves the object's own bar
        {R"({"candles":[{"ts":1700000040500,)" + p + R"(,"v":"3","volume":9}]})", {bar(1700000040, 1, 3)}},
        {R"({"candles":[],)" + p + R"(,"ts":60000})", {}},
        {R"({"candles":[1],)" + p + R"(,"ts":60000})", {bar(60)}},
        // an object with keyed bars, sorted; the volume is v alone and the bar's own times do not count
        {R"({"candles":{"120":{)" + p + R"(},"60":{)" + p + R"(,"volume":9,"ts":999000,"time":5},"180.9":{)" + p +
             R"(,"v":4},"x":{)" + p + R"(}," 240":{)" + p + R"(},"300":7,"360":{"o":1},"0.5":{)" + p + "}}}",
         {bar(60), bar(120), bar(180, 1, 4)}},
        // one bar by minute, or else the object's own
        {R"({"minuteTs":"60","candle":{)" + p + R"(,"volume":5,"v":2}})", {bar(60, 1, 2)}},
        {R"({"minuteTs":60,"candle":{"o":1},"time":180,)" + p + "}", {bar(180)}},
        // a bar's fields: short names before long ones, milliseconds before seconds, any number's text
        {R"({"time":60,"ts":120000,)" + p + "}", {bar(120)}},
        {R"({"time":60,"ts":"x",)" + p + "}", {bar(60)}},
        {R"({"ts":"120000","open":"1","high":"2","low":"0.5","close":"0x4","volume":"5"})", {bar(120, 4, 5)}},
        {R"({"ts":60000,"open":9,"high":9,"low":9,"close":9,"volume":9,"v":5,)" + p + "}", {bar(60, 1, 5)}},
        {R"({"ts":60000,"o":null,"open":1,"h":2,"l":0.5,"c":true,"v":"x"})", {bar(60)}},
        {R"({"ts":999,"time":60,)" + p + "}", {}},
        {R"({"time":"60.5",)" + p + "}", {}},
        {R"({"ts":"inf","h":2,"l":3,"c":4})", {}},  // without its prices the time is never cut
        {R"("text")", {}},
        // a time that no integer holds costs its own bar, whatever else the bar has
        {R"([{"ts":"inf","time":60,)" + p + R"(},{"time":-1e300,)" + p + R"(},{"ts":60000,)" + p + "}]", {bar(60)}, 2},
        {R"({"candles":{"nan":{)" + p + R"(},"1e308":5,"60":{)" + p + "}}}", {bar(60)}, 2},
        {R"({"minuteTs":9223372036854775808,"candle":{)" + p + R"(},"time":180,)" + p + "}", {bar(180)}, 1},
    };
    for (const auto& c : cases) {
        RepairTally tally;
        EXPECT_EQ(parse(c.json, tally), c.bars) << c.json;
        EXPECT_EQ(tally.count(), c.repairs) << c.json;
    }
}

// The rule as it is told, over a map.
TEST(CandleParser, MergeEqualsAMapOnRandomSeries) {
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        const auto series = [&random](bool sorted) {
            Bars bars(random() % 40);
            for (Candle& one : bars)
                one = bar(static_cast<std::int64_t>(random() % 60) * 60 - 600, static_cast<double>(random() % 1000));
            if (sorted) std::ranges::stable_sort(bars, {}, &Candle::time);
            return bars;
        };
        const Bars existing = series(random() % 2), incoming = series(random() % 2);
        const std::size_t cap = random() % 50;
        std::map<std::int64_t, Candle> byTime;
        for (const Bars* bars : {&existing, &incoming})
            for (const Candle& one : *bars) byTime[one.time] = one;
        while (byTime.size() > cap) byTime.erase(byTime.begin());
        Bars expected;
        for (const auto& [time, one] : byTime) expected.push_back(one);
        ASSERT_EQ(CandleParser::merge(existing, incoming, cap), expected) << "round " << round;
        ASSERT_EQ(CandleParser::merge(expected, expected, cap), expected) << "the same snapshot twice changes nothing";
    }
}

}  // namespace
}  // namespace vmr::test
