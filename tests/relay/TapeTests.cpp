#include <gtest/gtest.h>
#include <zlib.h>

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

}  // namespace
}  // namespace vmr::relay
