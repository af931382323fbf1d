// The key to the chart: each sample shows its mark, where it is asked to, and nothing outside.
#include "chart/ChartMarks.h"
#include "chart/OscGeometry.h"

#include <cstring>
#include <map>
#include <set>
#include <tuple>

#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

struct ChartMarksTest : RecordedScene {
    /// What lands within a sample: its shape and colour.
    using Paint = std::tuple<Pipeline, int, int, int>;
    struct Drawn {
        std::set<Paint> inside;
        std::vector<std::array<double, 2>> places;
    };
    static constexpr double cellX = 40, cellY = 30, frameWidth = 600, frameHeight = 200;
    MarkSamples samples{{gpu, glyphs, session, time, queue}};

    bool draw() override { return false; }

    template <class Vertex>
    void read(const RecordedFrames::DrawCall& call, Drawn& out, double x, double y) {
        for (const Vertex& vertex : recorded.vertices<Vertex>(call)) {
            float at[2];  // every kind begins with its place
            std::memcpy(at, &vertex, sizeof at);
            const auto place = recorded.screen(call, at[0], at[1]);
            out.places.push_back({place[0] - x, place[1] - y});
            if (place[0] < x || place[0] > x + MarkSamples::width || place[1] < y || place[1] > y + MarkSamples::height)
                continue;
            out.inside.insert({call.pipeline, vertex.color.r, vertex.color.g, vertex.color.b});
        }
    }
    void readAny(const RecordedFrames::DrawCall& call, Drawn& out, double x, double y) {
        using enum Pipeline;
        const auto is = [&](std::initializer_list<Pipeline> any) { return std::ranges::count(any, call.pipeline) > 0; };
        if (is({flat})) read<ChartVertex>(call, out, x, y);
        if (is({text})) read<TextVertex>(call, out, x, y);
        if (is({box})) read<BoxVertex>(call, out, x, y);
        if (is({rounded})) read<RoundVertex>(call, out, x, y);
        if (is({candle, dense, crowded})) read<CandleVertex>(call, out, x, y);
        if (is({ribbon, dashed})) read<LineVertex>(call, out, x, y);
        if (is({disc, triangle})) read<MarkerVertex>(call, out, x, y);
    }
    Drawn show(std::size_t mark, double x = cellX, double y = cellY) {
        gpu.beginFrame(frameWidth, frameHeight, pixelRatio);
        samples.draw(mark, x, y, frameWidth, frameHeight, pixelRatio);
        gpu.endFrame();
        recorded.take(gpu);
        Drawn out;
        for (const auto& call : recorded.draws) {
            EXPECT_TRUE(call.clip.left >= x && call.clip.top >= y && call.clip.right <= x + MarkSamples::width &&
                        call.clip.bottom <= y + MarkSamples::height);
            if (!call.opaque) readAny(call, out, x, y);
        }
        return out;
    }
};

TEST_F(ChartMarksTest, EachSampleShowsItsMark) {
    using enum Pipeline;
    const std::map<std::string_view, Pipeline> shapes{
        {"second", candle},     {"vwap", ribbon},     {"vwapNY", dashed},
        {"averages", ribbon},   {"hfLine", ribbon},   {"vix", ribbon},
        {"past", rounded},      {"gexBubbles", disc}, {"hfTriangles", triangle},
        {"hfWave", ribbon},     {"oiWave", ribbon},   {"gexBars", box},
        {"strikeNames", text},  {"secBars", box},     {"dexBars", box},
        {"walls", text},        {"levels", text},     {"sessionLines", dashed},
        {"position", text},     {"orders", text},     {"legs", text},
        {"axis", rounded},      {"watermark", text},  {"orderTags", rounded},
        {"oscIndices", ribbon}, {"oscFlow", ribbon}};
    std::set<Paint> bare;  // what every sample has
    const auto marks = chartMarks();
    ASSERT_EQ(marks.size(), shapes.size() + 2);
    for (std::size_t i = 0; i < 2; ++i) {
        const auto drawn = show(i).inside;
        EXPECT_TRUE(std::ranges::any_of(drawn, [](const Paint& one) { return std::get<0>(one) == candle; }));
        bare.insert(drawn.begin(), drawn.end());
    }
    for (std::size_t i = 2; i < marks.size(); ++i) {
        SCOPED_TRACE(marks[i].id);
        const Drawn drawn = show(i);
        const auto shape = shapes.find(marks[i].id);
        ASSERT_NE(shape, shapes.end());
        EXPECT_TRUE(std::ranges::any_of(
            drawn.inside, [&](const Paint& one) { return std::get<0>(one) == shape->second && !bare.contains(one); }));
        EXPECT_FALSE(marks[i].name.empty() || marks[i].meaning.empty());

        const Drawn elsewhere = show(i, 300, 90);
        ASSERT_EQ(elsewhere.places.size(), drawn.places.size());
        for (std::size_t k = 0; k < drawn.places.size(); ++k)
            for (const std::size_t axis : {0, 1}) EXPECT_NEAR(drawn.places[k][axis], elsewhere.places[k][axis], 1e-3);
    }
}

TEST_F(ChartMarksTest, SamplesWearTheColoursOfTheSettings) {
    RenderConfig look;
    look.bubblePos = {0.2F, 0.4F, 0.6F, 1};
    look.bubbleOpacity = 0;  // too faint to be seen
    look.bubblesEnabled = false;
    EXPECT_TRUE(samples.setLook(look, {}));
    EXPECT_FALSE(samples.setLook(look, {}));
    const auto marks = chartMarks();
    const auto colours = [&](std::string_view id) {
        const auto at = std::ranges::find(marks, id, &ChartMark::id) - marks.begin();
        return show(static_cast<std::size_t>(at)).inside;
    };
    for (std::size_t i = 0; i < oscSeries.size(); ++i) {
        const Rgba8 color(oscSeries[i].color);
        for (const Pipeline shape : {Pipeline::ribbon, Pipeline::rounded})
            EXPECT_TRUE(colours(i < 3 ? "oscIndices" : "oscFlow").contains({shape, color.r, color.g, color.b})) << i;
    }
    EXPECT_TRUE(colours("gexBubbles").contains({Pipeline::disc, 51, 102, 153}));
}

}  // namespace
}  // namespace vmr::test
