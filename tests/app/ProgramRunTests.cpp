// The program as a process: exit status, what it prints, what it answers.
#include <random>
#include <set>

#include "base/FileReplace.h"
#include "relay/PracticeRelay.h"
#include "tests/app/RunningProgram.h"
#include "tests/app/SilentServer.h"

namespace vmr {
namespace {

// All that it prints until it ends.
std::string told(RunningProgram& program) {
    std::string all;
    while (const auto line = program.line(60)) all += *line + "\n";
    return all;
}

TEST(ProgramRun, SaysWhatIsMissing) {
    const std::pair<std::vector<std::string>, std::pair<int, const char*>> cases[] = {
        {{"--headless", "--seconds", "1"}, {2, "VMR_RELAY_URL"}},
        {{"--headless", "--seconds", "-1"}, {2, "--seconds needs a number above 0"}},
        {{"--practice", "--headless", "--tape", "nowhere.csv", "--symbol", "GC"}, {1, "nowhere.csv"}}};
    for (const auto& [words, expected] : cases) {
        RunningProgram program(words);
        const std::string all = told(program);
        EXPECT_NE(all.find(expected.second), std::string::npos) << all;
        EXPECT_EQ(program.end(), expected.first);
    }
}

TEST(ProgramRun, AnswersCommandsAndWritesTheStateWhenItIsAskedToEnd) {
    RunningProgram program({"--practice", "--headless", "--clock", "2026-06-10T10:00", "--state", "end.json"});
    for (const auto& [command, answer] : {std::pair("set dexEnabled true", "ok set dexEnabled"),
                                          {"set dexEnabled 3", "error: wrong type for dexEnabled"},
                                          {"symbol AAPL", "ok symbol AAPL"},
                                          {"state /no/such/folder/x", "error: cannot write /no/such/folder/x"}})
        EXPECT_TRUE(program.ask(command).value_or("").starts_with(std::string("[cmd] ") + answer)) << command;
    program.end(SIGTERM);
    const auto pane = program.file("end.json")["panes"][0];
    EXPECT_EQ(pane["chartChannel"], "stocks:AAPL");
    EXPECT_EQ(pane["config"]["dexEnabled"], true);
}

TEST(ProgramRun, ReceivesAMarketAndEndsAfterItsTime) {
    RunningProgram program({"--practice", "--headless", "--seconds", "6", "--state", "end.json"});
    EXPECT_NE(told(program).find("[relay] hello: "), std::string::npos);
    EXPECT_EQ(program.end(), 0);
    EXPECT_FALSE(program.file("end.json")["panes"][0]["candles"].empty());
}

TEST(ProgramRun, ReportsItsPaneAndHearsTheServicesNotices) {
    SystemClock clock;
    relay::PracticeRelay relay(clock, {});
    ASSERT_EQ(relay.start(), std::nullopt);
    relay.command("notice n1 Hello | All is well");
    relay.command("maintenance Soon");
    relay.command("release 99 9.9 https://v.test/get");
    RunningProgram program({"--headless", "--state", "end.json"}, relay.variables());
    program.ask("sign-in " + relay.email() + " " + relay.password());
    const auto reports = [&](const std::string& what) {
        for (const double end = clock.monotonic() + 20; clock.monotonic() < end; ::usleep(20000))
            if (relay.command("presence").find(what) != std::string::npos) return true;
        return false;
    };
    EXPECT_TRUE(reports(" NQ QQQ mac (")) << relay.command("presence");  // a roll of the contract may follow "online"
    program.ask("symbol ES");
    EXPECT_TRUE(reports(" heartbeat ES SPY mac (")) << relay.command("presence");
    for (const double end = clock.monotonic() + 20; clock.monotonic() < end; ::usleep(20000)) {
        program.ask("state now.json");
        if (program.file("now.json")["maintenance"] == "Soon") break;
    }
    EXPECT_EQ(program.end(SIGTERM), 0);
    EXPECT_TRUE(reports(" offline unknown unknown mac (")) << relay.command("presence");
    const auto state = program.file("end.json");
    EXPECT_EQ(state["announcement"], nlohmann::json({{"id", "n1"}, {"title", "Hello"}, {"message", "All is well"}}));
    EXPECT_EQ(state["maintenance"], "Soon");
    EXPECT_EQ(state["update"]["url"], "https://v.test/get");
}

TEST(ProgramRun, EndsInTimeThoughNobodyAnswers) {
    SystemClock clock;
    relay::PracticeRelay relay(clock, {});
    ASSERT_EQ(relay.start(), std::nullopt);
    for (const bool signsIn : {false, true}) {
        const SilentServer silent;
        auto variables = relay.variables();
        variables.emplace_back("VMR_RELAY_URL", silent.url("wss"));
        if (!signsIn) variables.emplace_back("VMR_IDENTITY_URL", silent.url("https"));
        RunningProgram program({"--headless", "--clock", "2026-06-10T10:00@10000"}, variables);
        program.say("sign-in " + relay.email() + " " + relay.password());
        ASSERT_TRUE(silent.isCalled(20)) << "the end finds it in the middle of TLS";
        const double before = clock.monotonic();
        EXPECT_EQ(program.end(SIGTERM), 0);
        EXPECT_LT(clock.monotonic() - before, 1.5);
    }
}

TEST(ProgramRun, KilledWhileSettingsChangeLeavesOldOrNewOnes) {
    const std::filesystem::path config = std::filesystem::temp_directory_path() / UuidSource().next().text();
    const std::filesystem::path file = config / "Velmora/practice/preferences.json";
    std::mt19937 random(std::random_device{}());
    const SystemClock clock;
    double stored = 200;  // the default, which stands while nothing else is stored
    int changed = 0;
    for (int run = 0; run < 12; ++run) {
        RunningProgram program({"--practice", "--headless"}, {{"XDG_CONFIG_HOME", config.string()}});
        std::set<double> possible{stored};
        double end = clock.monotonic() + 30;
        for (double height = 100; clock.monotonic() < end; height = height < 400 ? height + 1 : 100) {
            ASSERT_EQ(program.ask("set oscHeight " + std::to_string(height)), "[cmd] ok set oscHeight");
            if (possible.size() == 1) end = clock.monotonic() + std::uniform_real_distribution(0.05, 0.9)(random);
            possible.insert(height);
        }
        program.end(SIGKILL);
        EXPECT_FALSE(std::filesystem::exists(file.string() + ".bad"));
        const auto bytes = readFile(file);
        if (!bytes) continue;
        const auto object = nlohmann::json::parse(*bytes, nullptr, false);
        ASSERT_TRUE(object.is_object()) << *bytes;
        const double found = nlohmann::json::parse(object.value("gex-config", "{}")).value("oscHeight", 200.0);
        EXPECT_TRUE(possible.contains(found)) << found;
        changed += std::exchange(stored, found) != found;
    }
    EXPECT_GT(changed, 3);
    std::filesystem::remove_all(config);
}

}  // namespace
}  // namespace vmr
