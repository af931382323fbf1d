// Which labels are drawn, and where.
#include "chart/BarLabelLayer.h"

#include <gmock/gmock.h>

#include <random>
#include <set>

#include "tests/chart/FakeGlyphs.h"
#include "tests/chart/RecordingGpu.h"

namespace vmr::test {
namespace {

/// Labels wear their number as their red, so that glyphs tell whose they are.
struct BarLabelLayerTest : testing::Test {
    static constexpr double right = 600 - 74, bottom = 400 - 22;
    RecordingGpu gpu;
    FrameArena arena{gpu};
    FakeGlyphs glyphs;
    BarLabelLayer layer{glyphs};
    std::vector<BarLabel> labels;

    void add(const char* text, double x, double y, std::optional<double> value, bool alignRight = true) {
        labels.push_back({x, y, text, 12, alignRight, static_cast<double>(labels.size()) / 1024, 0, 0.5, value});
    }
    bool draw(double ratio = 1) {
        gpu.beginFrame(600, 400, ratio);
        arena.beginFrame();
        ScreenFrame frame{gpu, arena, 600, 400, ratio, {}, {}};
        frame.barLabels = labels;
        const bool again = layer.drawAbove(frame);
        gpu.endFrame();
        return again;
    }
    struct Ink {
        std::size_t label;
        double left, top, right, bottom;
    };
    std::vector<Ink> inks(double ratio = 1) const {
        std::vector<Ink> list;
        const auto corners = gpu.draws.empty() ? std::vector<TextVertex>{} : gpu.vertices<TextVertex>(gpu.draws[0]);
        for (std::size_t i = 0; i < corners.size(); i += 4) {
            const auto &a = corners[i], &c = corners[i + 2];
            if (a.color[2] != 0.5F) continue;  // a shadow
            list.push_back({static_cast<std::size_t>(a.color[0] * 1024), a.position[0] / ratio, a.position[1] / ratio,
                            c.position[0] / ratio, c.position[1] / ratio});
        }
        return list;
    }
    std::set<std::size_t> drawn() const {
        std::set<std::size_t> numbers;
        for (const Ink& ink : inks()) numbers.insert(ink.label);
        return numbers;
    }
};

TEST_F(BarLabelLayerTest, TheMoreImportantOfTwoStays) {
    add("100 ", 300, 100, -9);
    add("101 ", 305, 102, 8);
    add("102 ", 300, 200, 1e9);
    add("Gamma Flip", 300, 203, {});
    add("Gamma Flip", 320, 302, {});
    add("KGS", 300, 303, {});
    add("104 ", 5, 300, 5, false);
    draw();
    EXPECT_THAT(drawn(), testing::ElementsAre(0, 3, 5, 6));
    std::swap(labels[0].value, labels[1].value);
    draw();
    EXPECT_THAT(drawn(), testing::ElementsAre(1, 3, 5, 6)) << "by size, not by sign or order";
}

TEST_F(BarLabelLayerTest, TextsNeverMeetNorLeaveThePlot) {
    std::mt19937 random(3);
    const auto between = [&](double lo, double hi) { return std::uniform_real_distribution(lo, hi)(random); };
    std::size_t seen = 0;
    for (int round = 0; round < 300; ++round) {
        const double ratio = round % 2 == 0 ? 1 : 1.5;
        labels.clear();
        for (int i = 0; i < 60; ++i) {
            const auto value = i % 10 == 0 ? std::nullopt : std::optional(between(-9, 9));
            add(value ? "21000.5 " : "Gamma Flip", between(-40, 640), between(-40, 440), value, i % 2 == 0);
            labels.back().fontSize = std::round(between(9, 13));
        }
        draw(ratio);
        const auto list = inks(ratio);
        seen += list.size();
        for (const Ink& a : list) {
            ASSERT_TRUE(a.left >= -1 && a.right <= right + 1 && a.top >= 0 && a.bottom <= bottom) << round;
            for (const Ink& b : list) {
                const bool meet = a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
                ASSERT_FALSE(meet && a.label != b.label) << round;
            }
        }
    }
    EXPECT_GT(seen, 300U * 50) << "most of what fits is drawn";
    EXPECT_TRUE(gpu.faults.empty());
}

}  // namespace
}  // namespace vmr::test
