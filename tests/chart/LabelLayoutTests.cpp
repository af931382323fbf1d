// Where texts go that would lie on each other.
#include "chart/LabelLayout.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vmr::test {
namespace {

using enum LabelRank;

TEST(LabelLayout, TheLesserTextStepsAsideOrFades) {
    struct Case {
        const char* name;
        std::vector<LabelBox> boxes;  // in the view from 0 to 200
        std::vector<double> places;   // -1: not shown
    };
    const auto box = [](double y, LabelRank rank, double left = 0, bool fixed = false) {
        return LabelBox{.left = left, .right = left + 50, .height = 16, .wantedY = y, .rank = rank, .fixed = fixed};
    };
    const Case cases[] = {
        {"room for all", {box(50, level), box(67, level)}, {50, 67}},
        {"the lesser goes to the side that it lies on", {box(55, level), box(50, pill), box(45, wall)}, {67, 50, 33}},
        {"of a rank the first stays", {box(50, level), box(50, level), box(50, level)}, {50, 33, 67}},
        {"a third finds no room on the near side", {box(50, pill), box(52, wall), box(54, level)}, {50, 67, 33}},
        {"side by side", {box(50, pill), box(50, level, 50)}, {50, 50}},
        {"the view's edges", {box(3, pill), box(196, pill), box(-20, wall), box(232, wall)}, {8, 192, -1, -1}},
        {"fixed ones stay, the others make room",
         {box(50, pill), box(50, trading, 0, true), box(60, trading, 0, true), box(-30, trading, 0, true)},
         {33, 50, 60, -30}},
        {"no room within reach",
         {box(42, trading, 0, true), box(58, trading, 0, true), box(74, trading, 0, true), box(26, trading, 0, true),
          box(90, trading, 0, true), box(10, trading, 0, true), box(50, pill)},
         {42, 58, 74, 26, 90, 10, -1}},
        {"what stands at its price is not pushed away by its like",
         {box(50, pill), box(52, strike), box(68, strike)},
         {50, 33, 68}},
        {"no price", {box(NAN, pill), box(50, level)}, {-1, 50}},
    };
    LabelLayout layout;
    for (const auto& [name, boxes, places] : cases) {
        SCOPED_TRACE(name);
        layout.clear();
        for (const LabelBox& one : boxes) layout.add(one);
        layout.arrange(0, 200);
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            const LabelBox& placed = layout.boxes()[i];
            EXPECT_NEAR(placed.opacity > 0 ? placed.y : -1, places[i], 1e-9) << i;
        }
    }
}

}  // namespace
}  // namespace vmr::test
