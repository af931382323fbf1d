// The keys of the running window, pressed for real.
#include <array>

#include "tests/app/DrivenWindow.h"

namespace vmr {
namespace {

using nlohmann::json;

class WindowKeys : public DrivenWindow {
 protected:
    void SetUp() override {
        DrivenWindow::SetUp();
        if (IsSkipped()) return;
        startMarket();
        act(" windowfocus --sync $W");
    }
    void layout(const std::string& name) { ASSERT_EQ(std::system(("setxkbmap " + name).c_str()), 0); }
    bool becomes(std::size_t pane, const char* field, const json& value) {
        return until([&](const json& state) { return state["panes"][pane]["config"][field] == value; });
    }
    json configOf(std::size_t pane) { return look()["panes"][pane]["config"]; }
    std::string toast(std::size_t pane) {
        const json& shown = state_["panes"][pane]["toast"];
        return shown.is_object() ? shown["title"].get<std::string>() + ": " + shown["detail"].get<std::string>() : "";
    }
    bool open(const char* panel) { return state_["panes"][0]["panels"]["open"][panel]; }
    static std::string over(double x) { return to(x, 400); }
};

struct Flip {
    const char *key, *field, *title;
};
constexpr Flip flips[]{{"g", "gexBubbles", "GEX Dominance"}, {"h", "hfBubbles", "HF Dominance"},
                       {"d", "dexEnabled", "DEX Bars"},      {"w", "hfLateralEnabled", "HF Waveform"},
                       {"x", "gexEnabled", "GEX Bars"},      {"f", "hfEnabled", "HF Line"},
                       {"v", "vwapEnabled", "VWAP"},         {"i", "vixEnabled", "VIX"},
                       {"p", "hfPressure", "HF Pressure"},   {"o", "oiEnabled", "OI Waveform"},
                       {"dollar", "simEnabled", "Simulator"}};

TEST_F(WindowKeys, FlipTheirFieldAndSaySo) {
    // on the first two keyboards a dollar takes Shift, or has a key of its own, and the digits take Shift
    for (const char* keyboard : {"de", "fr", "us"}) {
        layout(keyboard);
        for (const auto& [key, field, title] : flips) {
            json expected = configOf(0);
            expected[field] = !expected[field].get<bool>();
            act(std::string(" key ") + key);
            EXPECT_TRUE(becomes(0, field, expected[field])) << key << " on " << keyboard;
            EXPECT_EQ(state_["panes"][0]["config"], expected) << key << " changes nothing else";
            EXPECT_EQ(toast(0), std::string(title) + (expected[field] ? ": On" : ": Off"));
        }
        const bool on = configOf(0)["simEnabled"];
        act(" key dollar sleep 0.1 key shift+g");
        EXPECT_TRUE(becomes(0, "simEnabled", !on)) << keyboard;
        act(" key 12");  // the keyboard's key "3", without Shift
        EXPECT_TRUE(until([](const json& state) { return state["panes"][0]["timeframe"] == 3; })) << keyboard;
        act(" key 1");
        EXPECT_TRUE(until([](const json& state) { return state["panes"][0]["timeframe"] == 1; })) << keyboard;
        act(" key slash sleep 0.3 type --delay 30 es");
        act(" key Return");
        EXPECT_TRUE(until([](const json& state) { return state["panes"][0]["currentSymbol"] == "ES"; })) << keyboard;
        EXPECT_EQ(program_->ask("symbol NQ"), "[cmd] ok symbol NQ");
        ASSERT_TRUE(until([](const json& state) { return state["panes"][0]["currentSymbol"] == "NQ"; }));
    }
    EXPECT_EQ(configOf(0)["gexBubbles"], true) << "three times with Shift, and three without";
    json lines = configOf(0);
    EXPECT_EQ(program_->ask("set wallsEnabled false"), "[cmd] ok set wallsEnabled");
    act(" key l");
    EXPECT_TRUE(becomes(0, "levelsEnabled", false));
    EXPECT_EQ(configOf(0)["sessionEnabled"], false);
    EXPECT_EQ(toast(0), "Lines: Off");
    for (const char* name : {"Index", "ETF + Index", "ETF"}) {
        act(" key s");
        EXPECT_TRUE(until([&](const json&) { return toast(0) == std::string("GEX Source: ") + name; })) << toast(0);
    }

    const json before = configOf(0);
    act(" key ctrl+g key alt+d key super+x sleep 0.2");
    EXPECT_EQ(configOf(0), before) << "with a modifier it is another key";
    act(" key t key ctrl+comma");
    EXPECT_TRUE(until([&](const json&) { return open("templates") && open("config"); }));
    EXPECT_EQ(program_->ask("do account"), "[cmd] ok account on");
    for (const char* left : {"templates account", "account", ""}) {
        act(" key Escape");
        EXPECT_TRUE(until([&](const json&) {
            std::string now;
            for (const char* panel : {"config", "templates", "account"})
                if (open(panel)) now += (now.empty() ? "" : " ") + std::string(panel);
            return now == left;
        })) << left;
    }
}

TEST_F(WindowKeys, ShowTheKeyToTheChart) {
    const auto shows = [&](const std::string& sheet) {
        return until([&](const json& state) { return state["windows"][0]["sheet"] == sheet; });
    };
    const auto names = [&](const char* name) {
        return json(state_["windows"][0]["sheetNames"]).dump().find(std::string("\"") + name + "\"") !=
               std::string::npos;
    };
    act(" key question");
    ASSERT_TRUE(shows("marks"));
    EXPECT_TRUE(names("Bars") && names("Working orders"));
    act(" key Next key End sleep 0.2 key Right");
    ASSERT_TRUE(shows("keys"));
    EXPECT_TRUE(names("GEX Bars"));
    act(" key Right");
    ASSERT_TRUE(shows("gestures"));
    EXPECT_TRUE(names("Double click"));
    act(" key Down key Escape");
    ASSERT_TRUE(shows(""));
    EXPECT_TRUE(state_["windows"][0]["sheetNames"].empty());
    act(toTool("chartKey") + " click 1");
    ASSERT_TRUE(shows("marks"));
    act(" key Escape");
    ASSERT_TRUE(shows(""));
    EXPECT_EQ(program_->ask("do keys"), "[cmd] ok keys");
    ASSERT_TRUE(shows("keys"));
    act(" type --delay 20 zoom");
    act(" key Right key Right sleep 0.2");
    EXPECT_TRUE(shows("keys")) << "what is typed stays";
    act(" key Escape");
    ASSERT_TRUE(shows(""));
}

TEST_F(WindowKeys, GoToThePaneUnderThePointer) {
    EXPECT_EQ(program_->ask("dual on"), "[cmd] ok dual pane 2");
    ASSERT_TRUE(until(
        [](const json& state) { return state["panes"].size() == 2 && state["panes"][1]["viewport"].is_object(); }));
    const bool on = configOf(0)["dexEnabled"];
    act(over(900) + " key d");
    EXPECT_TRUE(becomes(1, "dexEnabled", !on));
    EXPECT_EQ(configOf(0)["dexEnabled"], on);
    act(over(300) + " key d");
    EXPECT_TRUE(becomes(0, "dexEnabled", !on));
    // over neither: beside the window
    act(" mousemove 1800 1200 sleep 0.1 key d key d key d sleep 0.2");
    EXPECT_EQ(configOf(0)["dexEnabled"], !on);
    EXPECT_EQ(configOf(1)["dexEnabled"], !on);
    // the hand is on the keyboard
    act(" key ctrl+Tab key d");
    EXPECT_TRUE(becomes(1, "dexEnabled", on));
    act(" key ctrl+Tab key d");
    EXPECT_TRUE(becomes(0, "dexEnabled", on));
    act(over(900) + " key 4");
    EXPECT_TRUE(until([](const json& state) { return state["panes"][1]["timeframe"] == 5; }));
    EXPECT_EQ(state_["panes"][0]["timeframe"], 1);
}

TEST_F(WindowKeys, AreTypedIntoTextFieldsAndMayBeChanged) {
    const json before = configOf(0);
    act(" key slash sleep 0.3 type --delay 20 ghdwxfviopls");
    act(" key question key dollar sleep 0.2 key Escape sleep 0.3");
    EXPECT_EQ(configOf(0), before);
    act(" key ctrl+k sleep 0.3 type --delay 20 'dex bars'");
    act(" key Return");
    EXPECT_TRUE(becomes(0, "dexEnabled", !before["dexEnabled"].get<bool>()));

    // the key of the GEX markers goes to the DEX bars, after a warning
    act(" key question sleep 0.4 key Right sleep 0.2 key Down sleep 0.1 type --delay 20 'dex bars'");
    act(" sleep 0.2 key Tab key Return sleep 0.1 key g sleep 0.1");
    EXPECT_EQ(look()["hotkeys"]["gexBubbles"], "G") << "not without Enter";
    act(" key Return sleep 0.2");
    EXPECT_TRUE(until([](const json& state) { return state["hotkeys"]["dexEnabled"] == "G"; }));
    EXPECT_EQ(state_["hotkeys"]["gexBubbles"], "");
    act(" key Escape sleep 0.3 key g");
    EXPECT_TRUE(becomes(0, "dexEnabled", before["dexEnabled"]));
    EXPECT_EQ(configOf(0)["gexBubbles"], before["gexBubbles"]);
    EXPECT_EQ(program_->ask("key reset"), "[cmd] ok keys reset");
    act(" key d");
    EXPECT_TRUE(becomes(0, "dexEnabled", !before["dexEnabled"].get<bool>()));

    act(over(400) + " key ctrl+shift+s sleep 0.6 key ctrl+a type --delay 10 shot.png");
    act(" key Return sleep 0.5");
    EXPECT_TRUE(std::filesystem::file_size(program_->home / "shot.png") > 10000);
    act(" key ctrl+n");
    EXPECT_TRUE(until([](const json& state) { return state["windows"].size() == 2; }));
    act(" windowfocus --sync $W key ctrl+q");
    EXPECT_EQ(program_->end(), 0);
    program_.reset();
}

}  // namespace
}  // namespace vmr
