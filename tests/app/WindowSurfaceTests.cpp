// The 3D view in the running window, driven by a real pointer and real keys.
#include "tests/app/DrivenWindow.h"

namespace vmr {
namespace {

using nlohmann::json;

class WindowSurface : public DrivenWindow {
 protected:
    using Place = std::vector<double>;

    void SetUp() override {
        DrivenWindow::SetUp();
        if (IsSkipped()) return;
        startMarket();
        const auto answer = program_->ask("do gex3D");
        ASSERT_TRUE(answer);
        if (answer->find("not part of this build") != std::string::npos)
            GTEST_SKIP() << "the 3D view is not part of this build";
        ASSERT_EQ(program_->ask("do gex3D"), "[cmd] ok gex3D off");
        EXPECT_EQ(program_->ask("set oscEnabled false"),
                  "[cmd] ok set oscEnabled");  // the chart is as high as its pane
    }
    const json& view() { return state_["panes"][0]["gex3DView"]; }
    bool becomes(const std::function<bool(const json& view)>& holds) {
        return until([&](const json&) { return holds(view()); });
    }
    void openByIcon() {
        act(toTool("gex3D") + " click 1");
        ASSERT_TRUE(
            becomes([](const json& now) { return now.is_object() && !now["bars"].empty() && now["area"][2] > 0; }));
        ASSERT_EQ(pane()["gex3DActive"], true);
    }
    // The window's place of one in the scene.
    std::string inScene(const Place& at) {
        return to(view()["area"][0].get<double>() + at[0], view()["area"][1].get<double>() + at[1]);
    }
    std::string toControl(const std::string& name) {
        EXPECT_TRUE(view()["controls"].contains(name)) << name << " in " << view()["controls"];
        const Place at = view()["controls"].value(name, Place{0, 0});
        return to(at[0], at[1]);
    }
    // The tallest bar, which no other hides.
    json tallest() {
        json found = view()["bars"][0];
        for (const json& bar : view()["bars"])
            if (bar["size"][1] > found["size"][1]) found = bar;
        return found;
    }
    void expectCameraMoved(const std::string& events, const char* field) {
        const json before = look()["panes"][0]["gex3DView"]["camera"];
        act(events);
        EXPECT_TRUE(becomes([&](const json& now) { return now["camera"][field] != before[field]; })) << events;
    }
    long residentKb() {
        std::ifstream status("/proc/" + std::to_string(program_->pid()) + "/status");
        for (std::string word; status >> word;)
            if (long kb = 0; word == "VmRSS:" && status >> kb) return kb;
        return 0;
    }
};

TEST_F(WindowSurface, PointerAndKeysReachAllOfIt) {
    openByIcon();
    const json bar = tallest();
    const std::string name = bar["name"], strike = name.substr(4, name.find('|', 4) - 4);
    act(inScene(bar["at"].get<Place>()));
    EXPECT_TRUE(becomes([&](const json& now) {
        return now["tooltip"].is_string() &&
               now["tooltip"].get<std::string>().starts_with("Strike " + strike + "  ·  ");
    })) << name
        << ": " << view()["tooltip"];
    act(" click 1");
    EXPECT_TRUE(until([&](const json& state) {
        const json& marked = state["panes"][0]["overlay"]["marked"];
        return view()["marked"] == std::stod(strike) && (marked.is_null() || marked["text"] == "Strike " + strike);
    }));

    const double middle = view()["area"][2].get<double>() / 2;
    act(inScene({middle, 20}));
    EXPECT_TRUE(becomes([](const json& now) { return now["tooltip"].is_null(); })) << "beside the bars";
    expectCameraMoved(inScene({middle, 80}) + " click 4", "distance");
    expectCameraMoved(" mousedown 1" + inScene({middle + 60, 100}) + inScene({middle + 90, 110}) + " mouseup 1", "yaw");
    expectCameraMoved(" mousedown 3" + inScene({middle + 20, 90}) + inScene({middle, 60}) + " mouseup 3", "target");
    EXPECT_EQ(view()["marked"], std::stod(strike)) << "a drag presses nothing";
    expectCameraMoved(" windowfocus --sync $W key Left", "yaw");
    expectCameraMoved(" key minus", "distance");
    const double viewed = look()["panes"][0]["viewport"]["count"];
    act(" key Home");
    EXPECT_TRUE(becomes([](const json& now) { return now["camera"]["target"] == json({0.0, 10.0, 0.0}); }));
    EXPECT_EQ(pane()["viewport"]["count"], viewed) << "none of it is for the chart";
    const std::size_t others = 3 + view()["expirations"].size();
    for (const char* tab : {" key Tab", " key shift+Tab"}) {
        std::string round;
        for (std::size_t i = 0; i <= others; ++i) round += tab;
        expectCameraMoved(round + " key Left", "yaw");  // back at the scene
    }

    act(toControl("rotate") + " click 1");
    EXPECT_TRUE(becomes([](const json& now) { return now["autoRotate"] == true && now["angle"] > 0.1; }));
    act(" windowunmap --sync $W sleep 0.2");
    const json hidden = look()["panes"][0]["gex3DView"]["angle"];
    act(" sleep 0.5");
    EXPECT_EQ(look()["panes"][0]["gex3DView"]["angle"], hidden) << "in a hidden window";
    act(" windowmap --sync $W");
    EXPECT_TRUE(becomes([&](const json& now) { return now["angle"] != hidden; })) << "it is shown again";
    act(toControl("rotate") + " click 1");
    EXPECT_TRUE(becomes([](const json& now) { return now["autoRotate"] == false; }));

    const std::string front = view()["expirations"][0];
    const auto hasRow = [&](const json& now) {
        for (const json& one : now["bars"])
            if (one["name"].get<std::string>().find("|" + front + "|") != std::string::npos) return true;
        return false;
    };
    EXPECT_TRUE(hasRow(view()));
    act(toControl("row " + front) + " click 1");
    EXPECT_TRUE(becomes([&](const json& now) { return now["hidden"] == json({front}) && !hasRow(now); }));

    act(" key Escape");
    EXPECT_TRUE(until([](const json& state) {
        const json& shown = state["panes"][0];
        return shown["gex3DActive"] == false && shown["gex3DView"].is_null() && shown["overlay"]["marked"].is_null();
    }));
}

TEST_F(WindowSurface, AMarkedStrikeIsALineOnTheChart) {
    openByIcon();
    // one whose price the chart shows
    const double ratio = pane()["etfRatio"], low = pane()["viewport"]["minP"], high = pane()["viewport"]["maxP"];
    ASSERT_GT(high, low);
    for (const json& bar : view()["bars"]) {
        const std::string name = bar["name"];
        const double price = std::stod(name.substr(4)) * ratio;
        if (price < low + (high - low) * 0.2 || price > high - (high - low) * 0.2) continue;
        act(inScene(bar["at"].get<Place>()) + " click 1");
        if (!until([&](const json&) { return view()["marked"].is_number(); })) continue;
        break;
    }
    const double strike = view()["marked"];
    EXPECT_TRUE(until([&](const json& state) { return state["panes"][0]["overlay"]["marked"].is_object(); })) << strike;
    const double y = pane()["overlay"]["marked"]["at"];
    const double share = (high - strike * ratio) / (high - low);
    EXPECT_NEAR(y / (800 - 44), share, 0.05);
    act(to(6, 400) + " click 1");
    EXPECT_TRUE(until([](const json& state) { return state["panes"][0]["gex3DActive"] == false; }))
        << "beside the card";
    EXPECT_TRUE(until([](const json& state) { return state["panes"][0]["overlay"]["marked"].is_null(); }));
}

TEST_F(WindowSurface, OpeningItTenTimesLeavesNothingBehind) {
    const auto opens = [&](int times) {
        for (int i = 0; i < times; ++i) {
            for (const char* then : {"on", "off"}) {
                ASSERT_EQ(program_->ask("do gex3D"), std::string("[cmd] ok gex3D ") + then);
                act(" sleep 0.6");  // some frames
            }
        }
    };
    opens(5);  // what is made once
    const long before = residentKb();
    opens(10);
    const long after = residentKb();
    ASSERT_GT(before, 0);
    // its textures alone take more than ten megabytes each time
    EXPECT_LT(after - before, 40'000) << "kB, of " << before;
}

// Some labels have no room here and were never shown.
TEST_F(WindowSurface, WhateverItStandsInCanEnd) {
    act(" windowsize --sync $W 500 420 sleep 0.3");
    for (const char* first : {" sleep 0.6", " sleep 0.01"}) {  // drawn, and hardly begun
        for (const bool window : {false, true}) {
            ASSERT_TRUE(program_->ask(window ? "window open" : "dual on"));
            const json newest = look()["windows"].back();
            EXPECT_EQ(program_->ask("@" + newest["panes"].back().dump() + " do gex3D"), "[cmd] ok gex3D on");
            act(first);
            ASSERT_TRUE(program_->ask(window ? "window close " + newest["number"].dump() : "dual off"));
        }
    }
    EXPECT_EQ(look()["windows"].size(), 1u);
    EXPECT_EQ(program_->ask("do gex3D"), "[cmd] ok gex3D on");
    act(" sleep 0.6");  // and so the program ends
}

}  // namespace
}  // namespace vmr
