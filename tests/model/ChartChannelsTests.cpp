// The channels of charts, from the symbols' tables alone.
#include "model/ChartChannels.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "model/Catalog.h"
#include "model/HfScales.h"

namespace vmr::test {
namespace {

// The first channels of a chart; the other instrument's, the second source's and the session levels' come behind.
std::string chart(const std::string& bars, const std::string& source) {
    return fmt::format(
        "{0} {0}:1m {0}:trades meta:contracts meta:instruments {2}indices:I:VIX indices:I:VIX:1m derived:{1} "
        "derived:gexBubbles:{1} derived:hfTriangles:{1} derived:osc:{1} derived:hfHistory:{1}",
        bars, source, bars.starts_with("futures:") ? bars + ":quote " : "");
}

std::string other(const std::string& bars) { return fmt::format(" {0} {0}:1m {0}:trades", bars); }

TEST(ChartChannels, FollowFromTheSymbolAndItsSource) {
    const std::string nq = other("futures:NQM6"), es = other("futures:ESM6"), sr = " derived:srlevels:";
    const struct {
        const char *bars, *source, *mode, *symbol;
        double hfScale;
        std::string list;
    } cases[] = {
        {"futures:NQM6", "QQQ", "ETF", "NQ", 2e-7, chart("futures:NQM6", "QQQ") + es + sr + "NQ"},
        {"futures:CLN6", "USO", "ETF", "CL", 5e-6, chart("futures:CLN6", "USO") + sr + "CL"},
        {"stocks:META", "META", "ETF", "META", 2e-7, chart("stocks:META", "META")},
        {"futures:ESM6", "SPX", "INDEX", "ES", 2.5e-7, chart("futures:ESM6", "SPX") + nq + sr + "ES"},
        {"futures:GCQ6", "GLD", "INDEX", "GC", 4e-6, chart("futures:GCQ6", "GLD") + sr + "GC"},
        {"futures:ESM6", "SPY", "BOTH", "ES", 2e-7, chart("futures:ESM6", "SPY") + nq + " derived:SPX" + sr + "ES"},
        {"futures:RTYM6", "IWM", "BOTH", "RTY", 5e-7, chart("futures:RTYM6", "IWM") + " derived:RUT" + sr + "RTY"},
    };
    const Catalog catalog;
    const HfScales scales;
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.symbol) + " " + c.mode);
        const ChartChannels got =
            chartChannels({c.bars, std::string("derived:") + c.source, catalog, c.mode, "30d", scales, 1});
        EXPECT_EQ(fmt::format("{}", fmt::join(got.subscribedChans, " ")), c.list);
        EXPECT_EQ(got.currentSymbol(), c.symbol);
        EXPECT_EQ(got.hfScale, c.hfScale);
        EXPECT_EQ(got.oscPrimaryLabel, c.symbol);
        EXPECT_EQ(got.oscSingle, std::string(c.symbol) != "NQ");
    }
    HfScales named;
    named.set("NQ", 3);
    EXPECT_EQ(chartChannels({"futures:NQM6", "derived:QQQ", catalog, "ETF", "1d", named, 1}).hfScale, 3);
    const ChartChannels bare = chartChannels({"futures:NQM6", "", catalog, "BOTH", "1d", named, 7});
    EXPECT_EQ(bare.hfScale, 7) << "without a source the former chart's";
    EXPECT_EQ(bare.vixChannel, "indices:I:VIX1D:1m");
    EXPECT_EQ(bare.secondaryGexChannel + bare.oscChannel, "") << "nothing of a source";
}

}  // namespace
}  // namespace vmr::test
