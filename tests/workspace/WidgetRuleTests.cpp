// Where a floating panel lies, and how a number glides.
#include <gtest/gtest.h>

#include <cmath>

#include "workspace/PanelPlacing.h"
#include "workspace/Tween.h"

namespace vmr {
namespace {

TEST(PanelPlacing, APanelKeepsWithinItsArea) {
    const PanelSize area{720, 436}, minimum{200, 120};
    const struct {
        const char* name;
        PanelPos pos;
        PanelSize size, area;
        double content;
        PanelPos placed;
        PanelSize sized;
    } cases[] = {
        {"where it fits", {100, 50}, {300, 200}, area, 0, {100, 50}, {300, 200}},
        {"past the right and the bottom", {500, 300}, {300, 200}, area, 0, {412, 228}, {300, 200}},
        {"past the left and the top", {-40, 7.5}, {300, 200}, area, 0, {8, 8}, {300, 200}},
        {"smaller than the least", {8, 8}, {10, 10}, area, 0, {8, 8}, {200, 120}},
        {"larger than the area", {8, 90}, {2000, 900}, area, 0, {8, 8}, {704, 420}},
        {"an area below the least", {90, 90}, {300, 300}, {150, 90}, 0, {8, 8}, {134, 74}},
        {"as high as its content", {8, 8}, {300, 20}, area, 166, {8, 8}, {300, 200}},
        {"content below the least", {8, 8}, {300, 400}, area, 20, {8, 8}, {300, 120}},
        {"content above the area", {8, 8}, {300, 20}, area, 900, {8, 8}, {300, 420}},
        {"no room at all", {9, 9}, {300, 200}, {10, 10}, 0, {8, 8}, {0, 0}},
    };
    for (const auto& one : cases) {
        const PanelSize size = clampedSize(one.size, minimum, one.area, one.content);
        EXPECT_EQ(size, one.sized) << one.name;
        EXPECT_EQ(clampedPos(one.pos, size, one.area), one.placed) << one.name;
    }
    EXPECT_EQ(clampedPos({8, 900}, {100, 10}, area).y, 436 - 52) << "a low panel, too, stays within reach";
}

TEST(PanelPlacing, WhatIsStoredComesBackAsFarAsItReads) {
    EXPECT_EQ(panelKey("account"), "vmr.panel.account");
    EXPECT_EQ(panelText({-0.5, 20}, {300, 1e6}), R"({"x":-0.5,"y":20,"w":300,"h":1000000})");
    EXPECT_EQ(parsePanel(panelText({-0.5, 20}, {300, 200})), (StoredPanel{-0.5, 20, 300, 200}));
    EXPECT_EQ(parsePanel(R"({"x":1,"w":"3","h":1e999})"), (StoredPanel{1, {}, {}, {}}));
    for (const char* text : {"", "[1,2,3,4]", "{", "null"}) EXPECT_EQ(parsePanel(text), StoredPanel()) << text;
}

TEST(Tween, GlidesFromWhatIsShownAndSnaps) {
    Tween tween(0.06);
    EXPECT_TRUE(std::isnan(tween.displayed(0)) && tween.arrived(0));
    tween.aim(100, 5);
    EXPECT_TRUE(tween.displayed(5) == 100 && tween.arrived(5)) << "the first is shown at once";
    tween.aim(200, 6);
    EXPECT_EQ(tween.displayed(6), 100);
    EXPECT_NEAR(tween.displayed(6 + 1.0 / 60), 200 - 94, 1e-9) << "one frame of 60 a second";
    EXPECT_NEAR(tween.displayed(6 + 0.5), 200 - 100 * std::pow(0.94, 30), 1e-9) << "whatever frames there were";
    EXPECT_EQ(tween.displayed(5.9), 100);

    tween.aim(-50, 6.5);  // half way, to the other side
    const double turn = 200 - 100 * std::pow(0.94, 30);
    EXPECT_NEAR(tween.displayed(6.5), turn, 1e-9);
    EXPECT_NEAR(tween.displayed(7), -50 + (turn + 50) * std::pow(0.94, 30), 1e-9);
    const double closeAt = 6.5 + std::log(0.1 / (turn + 50)) / std::log(0.94) / 60;  // 0.2 % of 50 away
    EXPECT_FALSE(tween.arrived(closeAt - 0.01));
    EXPECT_TRUE(tween.arrived(closeAt + 0.01) && tween.displayed(closeAt + 0.01) == -50);

    tween.aim(0, 20);
    EXPECT_FALSE(tween.arrived(22)) << "there is no 0.2 % of 0";
    EXPECT_TRUE(tween.arrived(26) && tween.displayed(26) == 0);
    for (const double none : {NAN, INFINITY}) {
        tween.aim(none, 30);
        EXPECT_TRUE(tween.arrived(30)) << none;
        tween.aim(7, 31);
        EXPECT_EQ(tween.displayed(31), 7) << "from nothing there is no way to glide";
    }
    tween.setSpeed(1);
    tween.aim(9, 32);
    tween.jump();
    EXPECT_EQ(tween.displayed(32), 9);
}

}  // namespace
}  // namespace vmr
