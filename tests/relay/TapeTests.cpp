#include <gtest/gtest.h>
#include <zlib.h>

#include <filesystem>

#include "relay/BarBook.h"
#include "relay/Tape.h"
#include "relay/TapeReader.h"

namespace vmr::relay {
namespace {

constexpr std::int64_t noon = 1381147200;  // 2013-10-07T12:00Z

std::string written(const char* name, const std::string& text, const char* mode = "wbT") {
    const std::string file = testing::TempDir() + "/" + name;
    gzFile out = gzopen(file.c_str(), mode);
    gzwrite(out, text.data(), static_cast<unsigned>(text.size()));
    gzclose(out);
    return file;
}

const char* const sample =
    "timestamp,price,size,exchange\r\n"
    "2013-10-07T12:03:10Z,1314.05,5,usa\r\n"
    "2013-10-07T12:00:00.250Z,1313.7,2,usa\r\n"
    "2013-10-07T12:00:00.250Z,1313.5,1,usa\r\n"
    "2013-10-07T12:00:59.999Z,1313.9,0,usa\r\n"
    "\r\n"
    "2013-10-07T12:01:00.000Z,,4,usa\r\n";

TEST(Tape, ItsBarsAreThoseOfItsTradesInOrderPlainAndPacked) {
    for (const auto& [name, mode] : {std::pair("relay_tape.csv", "wbT"), {"relay_tape.csv.gz", "wb"}}) {
        std::string error;
        const std::string file = written(name, sample, mode);
        const auto span = tapeSpan(file, error);
        ASSERT_TRUE(span) << error;
        EXPECT_EQ(span->first, noon + 0.25);
        EXPECT_EQ(span->last, noon + 190);
        const auto tape = Tape::load(file, 0.1, error);
        ASSERT_TRUE(tape) << error;
        std::vector<Trade> trades;
        tape->minuteTrades(noon, trades);
        ASSERT_EQ(trades.size(), 3u);
        EXPECT_EQ(trades[1].bid, 1313.5);
        EXPECT_EQ(trades[2].ask, 1313.9);
        const std::vector<Candle> bars{{noon, 1313.7, 1313.9, 1313.5, 1313.9, 3},
                                       {noon + 180, 1314.05, 1314.05, 1314.05, 1314.05, 5}};
        EXPECT_EQ(BarBook(*tape).upTo((noon + 3600) * 1000), bars);
        EXPECT_EQ(BarBook(*tape).upTo(noon * 1000 + 250).back(), (Candle{noon, 1313.7, 1313.7, 1313.5, 1313.5, 3}));
    }
}

TEST(Tape, PlaysFromItsStartToItsEndAndThenRests) {
    std::string error, text = "Time , LAST\n";
    for (int i = 0; i < 30000; ++i) text += std::to_string(noon + i) + "," + std::to_string(100 + i % 7) + "\n";
    const auto tape = Tape::load(written("relay_long.csv", text), 0.25, error);
    ASSERT_TRUE(tape) << error;
    EXPECT_EQ(tape->size(), 30000u) << "also the rows that lie across two reads of the file";
    EXPECT_EQ(tape->historyStart(noon + 20000), noon);
    std::vector<Trade> trades;
    for (const auto& [minute, count] :
         {std::pair(noon - 60, 0u), {noon, 60u}, {noon + 29940, 60u}, {noon + 30000, 0u}}) {
        tape->minuteTrades(minute, trades);
        EXPECT_EQ(trades.size(), count) << minute;
    }
    EXPECT_EQ(tapeStart({1000, 11000}), 2800);
    EXPECT_EQ(tapeStart({1000, 3000}), 2000);
}

TEST(Tape, AnUnchangedPriceStaysOnItsSide) {
    std::string error;
    const auto tape = Tape::load(written("relay_sides.csv", "ts,price\n1,10\n2,9\n3,9\n4,10\n5,10\n"), 0.5, error);
    std::vector<Trade> trades;
    tape->minuteTrades(0, trades);
    std::vector<double> bids;
    for (const Trade& one : trades) {
        bids.push_back(one.bid);
        EXPECT_EQ(one.ask, one.bid + 0.5);
        EXPECT_EQ(one.size, 0);
    }
    EXPECT_EQ(bids, (std::vector<double>{9.5, 9, 9, 9.5, 9.5}));
}

TEST(Tape, SaysWhatIsWrongAndWhere) {
    const std::string head = "timestamp,price,size\n1,2,3\n";
    for (const auto& [text, fault] : {std::pair<std::string, std::string>("", "it is empty"),
                                      {"price,size\n", "its first line names no time column such as timestamp"},
                                      {"ts,cost\n", "its first line names no price column"},
                                      {"ts,price\n", "holds no trades"},
                                      {head + "\nsoon,2,3\n", "line 4: \"soon\" is no time"},
                                      {head + "1,two,3\n", "line 3: \"two\" is no price"},
                                      {head + "1,2,-3", "line 3: \"-3\" is no size"},
                                      {head + std::string(1100000, '1'), "line 3 has no end"}}) {
        std::string error;
        EXPECT_FALSE(Tape::load(written("relay_bad.csv", text), 1, error)) << fault;
        EXPECT_TRUE(error.ends_with(fault)) << error;
        EXPECT_NE(error.find("relay_bad.csv"), std::string::npos);
    }
    std::string error;
    const std::string packed = written("relay_cut.csv.gz", sample, "wb");
    std::filesystem::resize_file(packed, std::filesystem::file_size(packed) - 12);
    for (const auto& [file, fault] : {std::pair(packed, "it is damaged or cut short"),
                                      {testing::TempDir() + "/none.csv", "it cannot be opened"},
                                      {testing::TempDir(), "it is a folder"}}) {
        EXPECT_FALSE(tapeSpan(file, error));
        EXPECT_TRUE(error.ends_with(fault)) << error;
    }
}

TEST(Tape, ReadsTimesOfManyKinds) {
    for (const auto& [text, time] : {std::pair("2013-10-07T12:00:00Z", noon * 1000),
                                     {"2013-10-07 12:00", noon * 1000},
                                     {"2013-10-07T08:00:00-04:00", noon * 1000},
                                     {"2013-10-07T17:30:00.1239+0530", noon * 1000 + 123},
                                     {"2013-10-07T14:00:00,5+02", noon * 1000 + 500},
                                     {"2024-02-29", 1709164800000},
                                     {"1381147200", noon * 1000},
                                     {"1381147200.25", noon * 1000 + 250},
                                     {"1381147200250", noon * 1000 + 250},
                                     {"1381147200250999", noon * 1000 + 250},
                                     {"1381147200250999999", noon * 1000 + 250}})
        EXPECT_EQ(tapeTime(text), time) << text;
    for (const char* bad :
         {"", "-1", "noon", "2013-13-07", "2013-10-32", "2013-10-07T24:00", "2013-10-07T12:60", "2013-10-07T12",
          "2013-10-07T12:00X", "2013-10-07T12:00+24:00", "2201-01-01", "1969-12-31", "nan", "9223372036854775807"})
        EXPECT_FALSE(tapeTime(bad)) << bad;
}

}  // namespace
}  // namespace vmr::relay
