// The 3D view without a toolkit: what stands where, what a ray meets, where the camera may go.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "model/Gex3DView.h"

namespace vmr {
namespace {

// Cells of 50 by 60 units: the first row lies in front.
const Gex3DData surface{5000.5,
                        {4990, 5000.5, 5001, 5010},
                        {"2026-06-10", "2026-06-12"},
                        {"6/10 (0DTE)", "6/12 (2DTE)"},
                        {{1e6, -2e6, 0, 4e6}, {0, 100, -3.94e6, 49}}};

/// Straight down on a place of the floor.
SceneRay downOn(double x, double z) { return {{x, 300, z}, {0, -1, 0}, {1, 0, 0}, {0, 0, -1}}; }

std::string under(const Gex3DScene& scene, double x, double z) {
    const auto hit = scene.barHit(downOn(x, z));
    return hit ? scene.bars[*hit].name : "";
}

TEST(Gex3DScene, BarsStandInTheirCells) {
    const Gex3DScene scene = Gex3DScene::build(surface);
    const struct {
        const char* name;
        double x, z, height;
        bool positive;
    } cases[] = {
        {"bar|4990|6/10 (0DTE)|+1.0", -75, 30, 22.5, true},   {"bar|5000.5|6/10 (0DTE)|-2.0", -25, 30, 45, false},
        {"bar|5010|6/10 (0DTE)|+4.0", 75, 30, 90, true},      {"bar|5000.5|6/12 (2DTE)|+0.0", -25, -30, 0.4, true},
        {"bar|5001|6/12 (2DTE)|-3.9", 25, -30, 88.65, false}, {"bar|5010|6/12 (2DTE)|+0.0", 75, -30, 0.4, true}};
    ASSERT_EQ(scene.bars.size(), std::size(cases)) << "a value of 0 has none";
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto& [name, x, z, height, positive] = cases[i];
        const Gex3DBar& bar = scene.bars[i];
        EXPECT_EQ(bar.name, name);
        EXPECT_EQ(bar.positive, positive) << name;
        EXPECT_DOUBLE_EQ(bar.box.size[1], height) << name;
        EXPECT_EQ(bar.box.place, (ScenePoint{x, bar.box.size[1] / 2, z})) << name;
        EXPECT_EQ(bar.box.size, (ScenePoint{31, bar.box.size[1], 33})) << name;
    }
    EXPECT_EQ(scene.peak, 4e6);
    EXPECT_EQ(scene.spotMarker, (SceneBox{{-25, 0.6, 0}, {1.2, 1.2, 120}}));
    EXPECT_EQ(scene.labels, (std::vector<SceneLabel>{{"5000.50", {-25, 3, 80}, 0.5},
                                                     {"4990", {-75, 0.5, 64}, 0.5},
                                                     {"5001", {25, 0.5, 64}, 0.5},
                                                     {"6/10 (0DTE)", {106, 0.5, 30}, 0.55, true},
                                                     {"6/12 (2DTE)", {106, 0.5, -30}, 0.55, true}}));

    const Gex3DScene hidden = Gex3DScene::build(surface, {"2026-06-10"});
    ASSERT_EQ(hidden.bars.size(), 3u);
    EXPECT_EQ(hidden.bars[1].box, (SceneBox{{25, 45, -30}, {31, 90, 33}})) << "the others keep their places";
    EXPECT_EQ(hidden.labels, scene.labels);
    EXPECT_TRUE(Gex3DScene::build({5000, {}, {"x"}, {"x"}, {{}}}).empty());
    EXPECT_TRUE(Gex3DScene::build({5000, {1, 2}, {}, {}, {}}).empty());

    Gex3DData between{15, {10, 20}, {"x"}, {"x"}, {{0, 0}}};
    EXPECT_EQ(Gex3DScene::build(between).spotMarker.place[0], -50) << "the first of two that are as near";
    EXPECT_EQ(Gex3DScene::build(between).bars.size(), 0u);
}

TEST(Gex3DScene, SurfacesAreToldApartBySpotCountsAndTheLastValue) {
    Gex3DData inner = surface, last = surface, spot = surface, wider = surface;
    inner.net[0][1] = 7;
    last.net[1][3] = 50;
    spot.spot = 5000.25;
    wider.strikes.push_back(5011);
    EXPECT_EQ(dataID(inner), dataID(surface));
    for (const Gex3DData& other : {last, spot, wider}) EXPECT_NE(dataID(other), dataID(surface));
    EXPECT_EQ(dataID(std::nullopt), "");
    EXPECT_EQ(dataID(Gex3DData{5000.5, {}, {}, {}, {}}), "5000.5|0|0|0");
}

TEST(Gex3DScene, ARayMeetsWhatIsNearest) {
    const Gex3DScene scene = Gex3DScene::build(surface);
    EXPECT_EQ(under(scene, -25, 30), "bar|5000.5|6/10 (0DTE)|-2.0");
    EXPECT_EQ(under(scene, -25 + 15.4, 30 - 16.4), "bar|5000.5|6/10 (0DTE)|-2.0") << "its corner";
    EXPECT_EQ(under(scene, -25 + 15.6, 30), "") << "the floor beside it";
    EXPECT_EQ(under(scene, -25, 0), "") << "the spot's marker";
    EXPECT_EQ(under(scene, -25.2, -30), "") << "the marker lies over so low a bar";
    EXPECT_EQ(under(scene, 300, 0), "") << "nothing at all";

    // from the front, the nearer of two bars that stand behind each other, and what looks over it
    const SceneRay low{{-25, 20, 300}, {0, 0, -1}}, high{{75, 89, 300}, {0, 0, -1}}, label{{25, 0.5, 300}, {0, 0, -1}};
    EXPECT_EQ(scene.bars[*scene.barHit(low)].name, "bar|5000.5|6/10 (0DTE)|-2.0");
    EXPECT_EQ(scene.bars[*scene.barHit(high)].name, "bar|5010|6/10 (0DTE)|+4.0");
    EXPECT_EQ(scene.barHit(label), std::nullopt) << "a label before a bar";
    EXPECT_NE(scene.barHit({{25, 5, 300}, {0, 0, -1}}), std::nullopt) << "over the label";

    EXPECT_EQ(tooltipOf("bar|5000.5|6/10 (0DTE)|-2.0"), "Strike 5000.5  ·  6/10 (0DTE)  ·  GEX -2.0M");
    for (const char* other : {"", "floor", "bar|5000|x", "bar|5000|a|b|1.0"}) EXPECT_EQ(tooltipOf(other), std::nullopt);
}

class Gex3DViews : public testing::Test {
 protected:
    Gex3DViews() {
        view.area = {40, 60, 900, 600};
        view.take(surface);
    }
    // The tooltip with the pointer over the middle of a bar.
    std::string over(std::size_t bar) {
        view.setPointer(view.placeOf(view.scene().bars[bar]));
        return view.tooltip().value_or("");
    }
    Gex3DView view;
};

TEST_F(Gex3DViews, ThePointerFindsTheBarFromEverySide) {
    constexpr std::size_t tall = 2;  // that no other bar hides
    const std::string text = "Strike 5010  ·  6/10 (0DTE)  ·  GEX +4.0M";
    EXPECT_EQ(over(tall), text);
    view.camera.orbit(-90, 40);
    EXPECT_EQ(over(tall), text);
    view.camera.pan(60, -25);
    view.camera.dolly(70);
    EXPECT_EQ(over(tall), text);
    view.autoRotate = true;
    view.advance(2);
    EXPECT_NEAR(view.angle(), 0.5, 1e-12);
    EXPECT_EQ(over(tall), text) << "the content has turned";
    view.advance(6);
    EXPECT_NE(view.tooltip(), text) << "it turns away from a pointer at rest";
    view.area = {0, 0, 300, 700};
    EXPECT_EQ(over(tall), text) << "a view that is higher than wide";
    view.setPointer(std::nullopt);
    EXPECT_EQ(view.tooltip(), std::nullopt);
    view.home();
    view.camera.dolly(200);
    for (int side : {-1, 1}) {
        for (int i = 0; i < 40; ++i) view.camera.pan(side * 25, 0);
        const double x = (*view.placeOf(view.scene().bars[tall]))[0];
        ASSERT_TRUE(x < 0 || x > 300) << x;
        EXPECT_EQ(over(tall), "") << "a pointer beside the view";
    }
}

TEST(Gex3DLabels, HaveRoomForTheWidthThatTheirFontGives) {
    // in sizes of the text, as the program's font sets it
    for (const auto& [text, width] :
         {std::pair("585", 1.92), {"29600", 3.27}, {"596.35", 3.38}, {"6/10 (0DTE)", 5.46}}) {
        const double room = 2 * SceneLabel{.text = text}.halfWidth() / Gex3DScene::labelSize;
        EXPECT_GE(room, width) << text;
        EXPECT_LE(room, width * 1.1) << text;
    }
}

// 14 expirations and 12 strikes' labels in a small view, through a whole turn.
TEST_F(Gex3DViews, LabelsKeepOffEachOtherAndDoNotFlicker) {
    Gex3DData many{5000, {}, {}, {}, std::vector<std::vector<double>>(14, std::vector<double>(24, 1e6))};
    for (int s = 0; s < 24; ++s) many.strikes.push_back(4988 + s);
    for (int e = 0; e < 14; ++e) {
        many.expirations.push_back("2026-06-" + std::to_string(10 + e));
        many.expLabels.push_back("6/" + std::to_string(10 + e) + " (9DTE)");
    }
    view.area = {0, 0, 442, 342};
    view.take(many);
    const auto& labels = view.scene().labels;
    ASSERT_EQ(labels.size(), 27u);
    EXPECT_GT(view.labels().scale, 1.5) << "readable";
    const auto count = [&] { return std::count(view.labels().shown.begin() + 13, view.labels().shown.end(), true); };
    EXPECT_TRUE(view.labels().shown[13]) << "the nearest";
    EXPECT_GE(count(), 3);
    EXPECT_LT(count(), 14);

    std::vector<int> changes(labels.size());
    std::vector<bool> before = view.labels().shown;
    view.autoRotate = true;
    for (double turned = 0; turned < 6.3; turned += 0.02) {
        view.advance(0.02 / Gex3DView::turnsBy);
        const SceneRay axes = view.camera.rayThrough(221, 171, 442, 342).inTurned(view.angle());
        std::vector<std::array<double, 4>> boxes;  // left, top, right, bottom
        for (std::size_t i = 0; i < labels.size(); ++i) {
            changes[i] += view.labels().shown[i] != before[i];
            if (!view.labels().shown[i]) continue;
            const double half = labels[i].halfWidth() * view.labels().scale,
                         up = Gex3DScene::labelSize * view.labels().scale / 2,
                         shift = labels[i].outside ? half * axes.right[0] : 0;
            const auto corner = [&](double x, double y) {
                Gex3DBar at{{labels[i].place, {}}, 0, 0, false, {}};
                for (std::size_t k = 0; k < 3; ++k)
                    at.box.place[k] += axes.right[k] * (shift + x * half) + axes.up[k] * y * up;
                return *view.placeOf(at);
            };
            const auto a = corner(-1, 1), b = corner(1, -1);
            for (const auto& [left, top, right, bottom] : boxes)
                EXPECT_TRUE(b[0] < left + 1 || a[0] > right - 1 || b[1] < top + 1 || a[1] > bottom - 1)
                    << labels[i].text << " at " << view.angle();
            boxes.push_back({a[0], a[1], b[0], b[1]});
            EXPECT_TRUE(a[0] > -10 && b[0] < 452) << labels[i].text << " is cut at " << view.angle();
        }
        before = view.labels().shown;
    }
    for (std::size_t i = 0; i < labels.size(); ++i) EXPECT_LE(changes[i], 12) << labels[i].text;

    Gex3DScene scene = view.scene();
    const SceneRay before4988{{scene.labels[1].place[0], 0.5, 300}, {0, 0, -1}};
    EXPECT_EQ(scene.barHit(before4988), std::nullopt);
    EXPECT_NE(scene.barHit(before4988, 1, std::vector<bool>(27, false)), std::nullopt) << "a label that is not shown";
}

TEST_F(Gex3DViews, DataChangesWhatIsShownButNotHow) {
    view.autoRotate = true;
    view.advance(1);
    view.setHidden("2026-06-12", true);
    const auto revision = view.revision();
    Gex3DData next = surface;
    next.net[0][0] = 9e6;
    EXPECT_FALSE(view.take(next)) << "an inner value alone";
    EXPECT_EQ(view.revision(), revision);
    next.spot = 5001;
    next.expLabels = {"6/10 (-1DTE)", "6/12 (1DTE)"};
    EXPECT_TRUE(view.take(next));
    EXPECT_EQ(view.scene().bars.size(), 3u) << "hidden rows stay hidden past midnight, too";
    EXPECT_TRUE(view.autoRotate);
    EXPECT_NEAR(view.angle(), 0.25, 1e-12);
    view.home();
    EXPECT_EQ(view.angle(), 0);
    view.startOver();
    EXPECT_TRUE(view.loading() && view.scene().empty() && view.hidden().empty());
}

TEST(OrbitCamera, BeginsAsToldAndStaysOverTheFloor) {
    OrbitCamera camera;
    const auto near = [](const ScenePoint& a, const ScenePoint& b) {
        return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]) < 1e-9;
    };
    const ScenePoint first{139.38294591105623, 79.93483318692975, 241.41834402657415};
    EXPECT_TRUE(near(camera.position(), first));
    EXPECT_TRUE(near(camera.target(), {0, 10, 0}));
    EXPECT_EQ(OrbitCamera::fieldOfView(900, 600), 45);
    const auto middle = camera.project({0, 10, 0}, 900, 600);
    EXPECT_NEAR((*middle)[0], 450, 1e-9);
    EXPECT_NEAR((*middle)[1], 300, 1e-9);
    EXPECT_EQ(camera.project({300, 160, 500}, 900, 600), std::nullopt) << "behind it";

    camera.orbit(10, 0);
    EXPECT_LT(camera.position()[0], first[0]) << "the scene follows the pointer to the right";
    camera.home();
    camera.pan(10, 10);
    EXPECT_GT((*camera.project({0, 10, 0}, 900, 600))[0], 450) << "and so it does here";
    EXPECT_GT((*camera.project({0, 10, 0}, 900, 600))[1], 300);
    camera.home();
    camera.dolly(20);
    EXPECT_NEAR(camera.distance(), std::hypot(first[0], first[1] - 10, first[2]) - 20, 1e-9);

    for (const double drag : {1e4, -1e4}) {
        camera.orbit(drag, drag);
        camera.pan(drag, -drag);
        camera.dolly(drag);
        EXPECT_GE(camera.position()[1], 3 - 1e-9) << drag;
        EXPECT_GE(camera.distance(), 30) << drag;
        EXPECT_LE(camera.distance(), 800) << drag;
        EXPECT_LE(std::abs(camera.target()[0]), 100) << drag;
        EXPECT_GE(camera.target()[1], 0) << drag;
    }
    camera.home();
    EXPECT_TRUE(near(camera.position(), first));
}

}  // namespace
}  // namespace vmr
