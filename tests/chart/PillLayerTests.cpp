// The texts that hang on lines: which there are, where they stand, and that none lies on another.
#include "chart/PillLayer.h"

#include <gmock/gmock.h>

#include <fmt/format.h>

#include <random>

#include "chart/AxisScale.h"
#include "chart/ChartView.h"
#include "support/StillAccount.h"
#include "tests/chart/ChartScene.h"
#include "tests/chart/FullScene.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Mark = PillLayer::Mark;

struct PillLayerTest : RecordedScene {
    SceneData data{bars(300), {.strikes = 0, .ribbons = 0}};
    StillAccount account{data.candles.back().close};
    ChartView view{{gpu, glyphs, session, time, queue, nullptr, nullptr}};
    const double close = data.candles.back().close;

    PillLayerTest() {
        data.series.secondCandles.clear();
        data.srLines.clear();
        data.levels.clear();
    }
    bool draw() override { return view.record(width, height, pixelRatio, time.monotonic()); }
    void show() {
        view.setContent(data.content());
        frame();
    }
    std::vector<Mark> marks(bool pills) const {
        std::vector<Mark> out;
        for (const Mark& mark : view.pills().marks())
            if (mark.pill == pills) out.push_back(mark);
        return out;
    }
    std::vector<std::string> texts(bool pills) const {
        std::vector<std::string> out;
        for (const Mark& mark : marks(pills)) out.emplace_back(mark.text);
        return out;
    }
    double xOf(double bar) { return AxisScale::xForIndex(view.renderer().camera().viewport(), bar, width); }
    double yOf(double price) { return AxisScale::yFor(view.renderer().camera().viewport(), price, height); }
    std::int64_t at(std::size_t bar) const { return data.candles[bar].time; }
};

TEST_F(PillLayerTest, EachSeriesWithAPointInViewHasItsPill) {
    OverlaySet& series = data.series;
    const auto line = [](double value) { return std::vector<OvPoint>{{200, value}, {250.5, value}, {299, value}}; };
    const auto flow = [&](double hf) { return std::vector<OvColorPoint>{{299, close, hf >= 0, close, hf}}; };
    const std::vector<OvCandle> pair{{299, close, close, close, close, 6986.5}};
    const auto price = [](double value) { return std::string(AxisScale::fmtPrice(value).text()); };
    using Bytes = std::array<int, 4>;
    constexpr int opacity = 217;  // of 255
    constexpr Bytes black{0, 0, 0, 255}, white{255, 255, 255, 255}, orange{255, 122, 0, 255};
    constexpr Bytes gold{255, 215, 0, opacity}, paleGold{255, 230, 128, opacity}, teal{90, 209, 191, opacity};
    constexpr Bytes blue{0, 80, 160, opacity}, red{160, 40, 40, opacity}, brown{90, 45, 5, opacity};
    const struct {
        const char* name;
        std::function<void()> change;
        std::string text;  // empty: none
        Bytes fill{}, letters{};
        bool values = true;
    } cases[] = {
        {"nothing", [] {}, ""},
        {"VWAP", [&] { series.vwapMain = line(close); }, "VWAP " + price(close), gold, black},
        {"without its value", [&] { series.vwapMain = line(close); }, "VWAP", gold, black, false},
        {"of New York", [&] { series.vwapNY = line(close); }, "VWAP NY", paleGold, black, false},
        {"and its value", [&] { series.vwapNY = line(21000); }, "VWAP NY 21,000.00", paleGold, black},
        {"flow in", [&] { series.hfLine = flow(12345); }, "HF 12.3K", blue, white},
        {"flow out", [&] { series.hfLine = flow(-1.5e6); }, "HF -1.50M", red, white},
        {"VIX", [&] { series.vixLine = line(close), series.vixSpot = 16.625; }, "VIX 16.62 30D", teal, white},
        {"VIX without a close", [&] { series.vixLine = line(close); }, "VIX -- 30D", teal, white},
        {"the pair's own close", [&] { series.secondCandles = pair; }, "ES 6,986.50", brown, orange},
        {"averages have none", [&] { series.ema1 = series.ema2 = line(close); }, ""},
        {"out of the prices in view", [&] { series.vwapMain = line(close + 9000); }, ""},
        {"no number", [&] { series.vwapMain = line(NAN); }, ""},
    };
    for (const auto& [name, change, text, fill, letters, values] : cases) {
        SCOPED_TRACE(name);
        series = {};
        data.style.lineRates = values;
        change();
        show();
        if (text.empty()) {
            EXPECT_TRUE(texts(true).empty());
            continue;
        }
        ASSERT_THAT(texts(true), ElementsAre(text));
        const Mark mark = marks(true)[0];
        const auto bytes = [](const Rgba& color) {
            Bytes out{};
            std::ranges::transform(color, out.begin(), [](float c) { return static_cast<int>(std::lround(c * 255)); });
            return out;
        };
        EXPECT_EQ(bytes(mark.fill), fill);
        EXPECT_EQ(bytes(mark.textColor), letters);
        EXPECT_EQ(mark.opacity, 1);
        const double letter = std::round(0.58F * 11) >= 6 ? 0.58 * 11 : 0, y = mark.tipY;
        EXPECT_NEAR(mark.box.x, xOf(299) + 15, 1e-9);
        EXPECT_NEAR(mark.box.y, y - 8, 1e-9);
        EXPECT_NEAR(mark.box.width, letter * static_cast<double>(text.size()) + 8, 1e-3);
        EXPECT_EQ(mark.box.height, 16);
        EXPECT_NEAR(mark.tipX, xOf(299), 1e-9);
    }
}

TEST_F(PillLayerTest, OfACrowdTheLaterPillKeepsItsPlaceAndAllStandBesideEachOther) {
    OverlaySet& series = data.series;
    series.secondCandles = {{299, close, close, close, close, 6986.5}};
    series.vwapMain = series.vwapNY = {{299, close}};
    series.hfLine = {{299, close, true, close, 7}};
    series.vixLine = {{299, close}};
    show();
    ASSERT_THAT(texts(true), ElementsAre("VIX -- 30D", "HF 7", testing::StartsWith("VWAP NY"),
                                         testing::StartsWith("VWAP"), "ES 6,986.50"));
    const double y = yOf(close);
    const auto all = marks(true);
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i].tipY, y);
        EXPECT_NEAR(all[i].box.y + 8 - y, (std::array{0, -17, 17, -34, 34}[i]), 1e-9);
    }
}

TEST_F(PillLayerTest, InTheHistoryPillsNameTheLastPointInView) {
    data.series.vwapMain.clear();
    for (int i = 0; i < 300; ++i) data.series.vwapMain.push_back({i + 7.0, 21000.0 + i / 4.0});
    data.series.vwapNY = {{290, 21000}, {306, 21000}};
    for (const OvPoint& point : data.series.vwapMain)
        data.series.vixLine.push_back({point.idx, point.v + 20, 15 + point.idx / 100});
    data.series.vixSpot = 99.5;
    data.series.anchor = {at(299), 306};  // the series counts seven bars that are gone
    show();
    EXPECT_EQ(marks(true).size(), 3U);
    view.mirrorView(40, 100);
    view.mirrorPrice(20900, 21100);
    frame();
    const double right = PlotArea{width, height}.right();
    const double last = std::floor(40 + right / width * 100);
    ASSERT_EQ(marks(true).size(), 2U) << "the other begins later";
    EXPECT_EQ(marks(true)[0].text, fmt::format("VIX {:.2f} 30D", 15 + (last + 7) / 100)) << "not today's";
    const Mark pill = marks(true)[1];
    EXPECT_EQ(pill.text, "VWAP " + std::string(AxisScale::fmtPrice(21000 + last / 4).text()));
    EXPECT_NEAR(pill.tipX, xOf(last), 1e-9);
    EXPECT_EQ(pill.tipY, yOf(21000 + last / 4));
    EXPECT_LT(pill.fill[0], 0.6F) << "dimmed gold";
    EXPECT_LE(pill.box.right(), LineMarks::closeMarkEdge(width) + 2) << "before the strike bars";
    view.mirrorView(299 - 100 * (right - 40) / width, 100);  // the last bar is in view, with little room beside it
    frame();
    EXPECT_EQ(marks(true).size(), 3U);
    EXPECT_EQ(marks(true)[0].text, "VIX 99.50 30D");
    for (const Mark& mark : marks(true)) EXPECT_TRUE(mark.fill[1] > 0.8F && mark.box.right() < right) << mark.text;
}

TEST_F(PillLayerTest, LinesSayWhatTheyAre) {
    const auto line = [&](const char* name, double price, std::size_t from, std::optional<std::size_t> to = {}) {
        data.srLines.push_back({price, at(from), to ? std::optional(at(*to)) : std::nullopt, name, false});
    };
    line("Open", 21020, 10, 150);
    line("Prev High", 21010.25, 20);
    line("R1", 21010.25, 150);
    line("S1", 20990, 5, 150);  // of two days
    line("S1", 20990, 150);
    line("", 20980, 5);
    line("Open", 21010.25, 5, 40);        // out of view below
    line("Prev Close", 21025, 140, 145);  // too short to be named
    data.levels = {{{}, "Call Wall 512", 21005, 1, 0, 0}, {{}, "Put Wall 512", 21005, 1, 0, 0}};
    show();
    view.mirrorPrice(20960, 21040);
    view.mirrorView(60, 400);
    frame();
    EXPECT_THAT(texts(false),
                UnorderedElementsAre("Call Wall 512 \u00b7 Put Wall 512 \u00b7 21,005.00", "Open 21,020.00",
                                     "R1 \u00b7 Prev High 21,010.25", "S1 20,990.00", "20,980.00"));
    const double column = LineMarks::closeMarkEdge(width) + 2;
    for (const Mark& mark : marks(false)) {
        EXPECT_NEAR(mark.box.right(), mark.text.starts_with("Open") ? xOf(150) : column, 1e-9) << mark.text;
        EXPECT_EQ(mark.opacity == 1, mark.text.find("Wall") != mark.text.npos) << "lines have a fifth less here";
        EXPECT_FLOAT_EQ(mark.ground()[3], 0.8F) << "faint texts keep what hides their lines";
    }
    view.mirrorView(0, 120);
    frame();
    EXPECT_THAT(texts(false), testing::Contains("Prev High \u00b7 Open 21,010.25"));
    data.style.showLevels = false;
    data.config.wallsEnabled = false;
    show();
    EXPECT_THAT(texts(false), UnorderedElementsAre("Open 21,020.00", "Prev High \u00b7 Open 21,010.25"));
    data.style.lineOpacity = 0;
    show();
    EXPECT_TRUE(texts(false).empty());
}

// Whatever is on, from any camera, in any view: pills, labels, the account's boxes and the strikes' texts.
TEST_F(PillLayerTest, NoTextLiesOnAnotherNorLeavesThePlot) {
    data = SceneData(bars(300), {.ribbons = 5});
    for (std::size_t i = 0; i < 40; ++i)
        data.srLines.push_back({close - 30 + 1.5 * static_cast<double>(i), at(i * 6),
                                i % 3 == 0 ? std::optional(at(i * 6 + 50)) : std::nullopt, "R1", i % 2 == 0});
    ChartView all({gpu, glyphs, session, time, queue, nullptr, &account});
    all.setContent(data.content());
    std::mt19937 random(5);
    const auto between = [&](double lo, double hi) { return std::uniform_real_distribution(lo, hi)(random); };
    std::size_t seen = 0, movedStrikes = 0;
    for (int round = 0; round < 300 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        width = between(200, 2400);
        height = between(120, 1300);
        pixelRatio = 1 + round % 3 * 0.5;
        const std::array covered{PointRect{6, 6, between(20, width), 18.0 * (round % 4)},
                                 PointRect{8, height - 46, 90, 18}};
        all.setCovered(covered);
        all.mirrorView(between(-100, 250), between(20, 400));
        all.mirrorPrice(close - between(5, 80), close + between(5, 80));
        all.record(width, height, pixelRatio, time.monotonic());
        const auto others = all.pills().boxes();
        std::vector<PointRect> boxes(others.begin(), others.end());
        const std::size_t own = boxes.size() - all.pills().marks().size();  // those that stand fast come first
        EXPECT_TRUE(own >= 2 && boxes[own - 2] == covered[0] && boxes[own - 1] == covered[1]);
        seen += all.pills().marks().size();
        for (const auto& mark : all.barLabels().marks()) {
            boxes.push_back(mark.box);
            EXPECT_LE(std::abs(mark.y() - mark.label->y), LabelLayout::reach);
            movedStrikes += mark.moved();
        }
        const PlotArea plot{width, height};
        for (std::size_t i = own; i < boxes.size(); ++i) {
            const PointRect& a = boxes[i];
            EXPECT_TRUE(a.x >= 0 && a.y >= 0 && a.right() <= plot.right() && a.bottom() <= plot.bottom());
            for (std::size_t j = 0; j < i; ++j) {
                const PointRect& b = boxes[j];
                EXPECT_TRUE(a.x >= b.right() || b.x >= a.right() || a.y >= b.bottom() || b.y >= a.bottom());
            }
        }
        for (const Mark& mark : all.pills().marks())
            EXPECT_LE(std::abs(mark.box.y + 8 - mark.tipY), LabelLayout::reach);
    }
    EXPECT_GT(movedStrikes, 50U);
    EXPECT_GT(seen, 1000U);
}

TEST_F(PillLayerTest, AChartTellsWhatIsWrittenOnIt) {
    data.series.vwapMain = {{299, close}};
    data.series.vixLine = {{299, close + 2}};
    data.srLines = {{close - 20, at(5), std::nullopt, "S1", true}};
    EXPECT_FALSE(view.overlayFacts()) << "no frame yet";
    show();
    const OverlayFacts facts = *view.overlayFacts();
    ASSERT_EQ(facts.pills.size(), 2U);
    EXPECT_TRUE(facts.pills[0].text.starts_with("VWAP") && facts.pills[1].text.starts_with("VIX")) << "in their order";
    EXPECT_EQ(facts.pills[1].box, marks(true)[0].box);
    EXPECT_FLOAT_EQ(facts.pills[0].color[3], 0.85F);
    ASSERT_EQ(facts.labels.size(), 1U);
    EXPECT_TRUE(facts.labels[0].text.starts_with("S1 2"));
    EXPECT_GT(facts.times.size(), 1U);
    ASSERT_GT(facts.prices.size(), 5U);
    for (const auto& [text, y] : facts.prices)
        EXPECT_EQ(text, AxisScale::fmtPrice(AxisScale::priceAtY(*view.viewport(), y, height)).text());
    EXPECT_THAT(facts.watermark, ElementsAre("NQ 1m", "Velmora"));
    const auto first = std::ranges::find(recorded.draws, Pipeline::text, &RecordedFrames::DrawCall::pipeline);
    ASSERT_NE(first, recorded.draws.end());
    EXPECT_EQ(recorded.vertices<TextVertex>(*first).size(), 4U * (4 + 7)) << "the watermark, under all other texts";
    height = 60;
    frame();
    EXPECT_TRUE(view.overlayFacts()->watermark.empty());
}

TEST(AxisScale, FlowIsTold) {
    const struct {
        double value;
        const char* text;
    } cases[] = {{NAN, "HF --"},     {HUGE_VAL, "HF --"},     {0, "HF 0"},           {-999.4, "HF -999"},
                 {999.6, "HF 1000"}, {1000, "HF 1.0K"},       {-12345, "HF -12.3K"}, {999999, "HF 1000.0K"},
                 {1e6, "HF 1.00M"},  {-2.5e9, "HF -2500.00M"}};
    for (const auto& [value, text] : cases) EXPECT_EQ(AxisScale::fmtHFPill(value).text(), text);
}

}  // namespace
}  // namespace vmr::test
