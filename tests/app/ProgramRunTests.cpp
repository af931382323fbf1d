// The program as a process: exit status, what it prints, what it answers.
#include "tests/app/RunningProgram.h"

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

TEST(ProgramRun, AnswersEveryCommandAndWritesTheStateWhenItIsAskedToEnd) {
    RunningProgram program({"--practice", "--headless", "--clock", "2026-06-10T10:00", "--state", "end.json"});
    for (const auto& [command, answer] : {std::pair("set dexEnabled true", "ok set dexEnabled"),
                                          {"set dexEnabled 3", "error: wrong type for dexEnabled"},
                                          {"timeframe 5", "ok timeframe 5"},
                                          {"symbol AAPL", "ok symbol AAPL"},
                                          {"symbol XYZ", "error: unknown symbol XYZ"},
                                          {"frobnicate", "error: unknown command frobnicate"},
                                          {"state /no/such/folder/x", "error: cannot write /no/such/folder/x"}}) {
        program.say(command);
        auto line = program.line(20);
        while (line && !line->starts_with("[cmd] ")) line = program.line(20);
        EXPECT_TRUE(line.value_or("").starts_with(std::string("[cmd] ") + answer)) << command;
    }
    program.end(SIGTERM);
    const auto pane = program.file("end.json")["panes"][0];
    EXPECT_EQ(pane["timeframe"], 5);
    EXPECT_EQ(pane["chartChannel"], "stocks:AAPL");
    EXPECT_EQ(pane["config"]["dexEnabled"], true);
}

TEST(ProgramRun, ReceivesAMarketAndEndsAfterItsTime) {
    RunningProgram program({"--practice", "--headless", "--seconds", "6", "--state", "end.json"});
    EXPECT_NE(told(program).find("[relay] hello: "), std::string::npos);
    EXPECT_EQ(program.end(), 0);
    EXPECT_FALSE(program.file("end.json")["panes"][0]["candles"].empty());
}

}  // namespace
}  // namespace vmr
