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
    "2013-10-07T12:00:59.999Z,1313.9,1,usa\r\n"
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
        ASSERT_EQ(trades.size(), 4u);
        EXPECT_EQ(trades[1].bid, 1313.5);
        EXPECT_EQ(trades[2].ask, 1313.9);
        EXPECT_EQ(trades[3].ask, 1313.9) << "at the same price on the same side";
        const std::vector<Candle> bars{{noon, 1313.7, 1313.9, 1313.5, 1313.9, 4},
                                       {noon + 180, 1314.05, 1314.05, 1314.05, 1314.05, 5}};
        EXPECT_EQ(BarBook(*tape).upTo((noon + 3600) * 1000), bars);
        EXPECT_EQ(BarBook(*tape).upTo(noon * 1000 + 250).back(), (Candle{noon, 1313.7, 1313.7, 1313.5, 1313.5, 3}));
    }
}

TEST(Tape, SaysWhatIsWrongAndWhere) {
    const std::string head = "timestamp,price,size\n1,2,3\n";
    for (const auto& [text, fault] :
         {std::pair<std::string, std::string>("price,size\n", "its first line names no time column such as timestamp"),
          {"ts,price\n", "holds no trades"},
          {head + "1,two,3\n", "line 3: \"two\" is no price"},
          {head + std::string(1100000, '1'), "line 3 has no end"}}) {
        std::string error;
        EXPECT_FALSE(Tape::load(written("relay_bad.csv", text), 1, error)) << fault;
        EXPECT_TRUE(error.ends_with(fault)) << error;
        EXPECT_NE(error.find("relay_bad.csv"), std::string::npos);
    }
    std::string error;
    const std::string packed = written("relay_cut.csv.gz", sample, "wb");
    std::filesystem::resize_file(packed, std::filesystem::file_size(packed) - 12);
    EXPECT_FALSE(tapeSpan(packed, error));
    EXPECT_TRUE(error.ends_with("it is damaged or cut short")) << error;
}

TEST(Tape, ReadsTimesOfManyKinds) {
    for (const char* same : {"2013-10-07 12:00", "2013-10-07T08:00:00-04:00", "2013-10-07T17:30:00.0009+0530",
                             "1381147200.0", "1381147200000", "1381147200000999999"})
        EXPECT_EQ(tapeTime(same), noon * 1000) << same;
    for (const char* bad : {"", "-1", "noon", "2013-13-07", "2013-10-07T24:00", "2013-10-07T12:00X", "nan"})
        EXPECT_FALSE(tapeTime(bad)) << bad;
}

}  // namespace
}  // namespace vmr::relay
