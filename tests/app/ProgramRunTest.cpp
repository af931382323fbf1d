// The program as a process: exit status, what it prints, what it answers.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "base/Uuid.h"

namespace vmr {
namespace {

namespace fs = std::filesystem;

class ProgramRun : public testing::Test {
 protected:
    ProgramRun() : folder(fs::temp_directory_path() / ("velmora-run-" + UuidSource().next().text())) {
        fs::create_directories(folder);
    }
    ~ProgramRun() override {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    // Runs the program through the shell, without a display; standard error goes to the same text.
    void run(const std::string& before, const std::string& arguments, const std::string& input = "") {
        std::ofstream(folder / "in") << input;
        const std::string command = "cd '" + folder.string() + "' && env -u DISPLAY -u WAYLAND_DISPLAY HOME='" +
                                    folder.string() + "' XDG_CONFIG_HOME= XDG_DATA_HOME= " + before +
                                    " '" VMR_PROGRAM "' " + arguments + " < in 2>&1";
        FILE* pipe = ::popen(command.c_str(), "r");
        ASSERT_NE(pipe, nullptr);
        std::array<char, 4096> buffer;
        output.clear();
        while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe))
            output.append(buffer.data(), count);
        status = WEXITSTATUS(::pclose(pipe));
    }
    bool printed(const std::string& part) const { return output.find(part) != std::string::npos; }
    nlohmann::json state(const std::string& file) const {
        std::ifstream in(folder / file);
        return nlohmann::json::parse(in, nullptr, false);
    }

    fs::path folder;
    std::string output;
    int status = -1;
};

TEST_F(ProgramRun, SelfTestComesBeforeAnythingElse) {
    run("VMR_BARROLL_TEST=", "--no-such-option");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(output,
              "[barroll-test] PASS\n"
              "  futuros quieto: OK — 121 barras em 120 min\n"
              "  futuros ativo: OK — 121 barras em 120 min\n"
              "  ações quieto: OK — 301 barras em 300 min\n"
              "  ações ativo: OK — 301 barras em 300 min\n");
}

TEST_F(ProgramRun, SaysWhatIsMissing) {
    run("env -u VMR_RELAY_URL", "--headless --seconds 1");
    EXPECT_EQ(status, 2);
    EXPECT_TRUE(printed("VMR_RELAY_URL") && printed("--practice")) << output;
    run("VMR_RELAY_URL=ws://192.0.2.1/ VMR_API_KEY=k", "--headless --seconds 1");
    EXPECT_EQ(status, 2);
    EXPECT_TRUE(printed("VMR_RELAY_URL")) << output;
    run("", "--practice --headless --tape nowhere.csv --symbol GC");
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(printed("nowhere.csv")) << output;
}

TEST_F(ProgramRun, AnswersEveryCommandAndWritesTheState) {
    run("", "--practice --headless --clock 2026-06-10T10:00 --seconds 20 --state end.json",
        "set dexEnabled true\nset dexEnabled 3\nset nothing 1\ntimeframe 5\ntimeframe x\nsymbol AAPL\nsymbol XYZ\n"
        "open\nsign-in a\nfrobnicate\nstate middle.json\nstate /no/such/folder/x\nquit\n");
    EXPECT_EQ(status, 0);
    for (const char* line :
         {"[cmd] ok set dexEnabled", "[cmd] error: wrong type for dexEnabled",
          "[cmd] error: there is no setting nothing", "[cmd] ok timeframe 5", "[cmd] error: timeframe needs",
          "[cmd] ok symbol AAPL", "[cmd] error: unknown symbol XYZ", "[cmd] error: open needs",
          "[cmd] error: sign-in needs", "[cmd] error: unknown command frobnicate", "[cmd] ok state middle.json",
          "[cmd] error: cannot write /no/such/folder/x", "[cmd] ok quitting"})
        EXPECT_TRUE(printed(line)) << line << "\n" << output;
    const auto end = state("end.json");
    ASSERT_TRUE(end.is_object());
    EXPECT_NEAR(end["clock"].get<double>(), 1781100000, 25);
    const auto& pane = end["panes"][0];
    EXPECT_EQ(pane["timeframe"], 5);
    EXPECT_EQ(pane["chartChannel"], "stocks:AAPL");
    EXPECT_EQ(pane["config"]["dexEnabled"], true);
    EXPECT_EQ(pane["subscribedChans"].size(), 12u);
}

TEST_F(ProgramRun, EndsPolitelyOnRequestAndAfterItsTime) {
    run("timeout --foreground -s TERM 3", "--practice --headless --state end.json");
    EXPECT_TRUE(state("end.json").is_object()) << output;  // written although the process was asked to end
    run("", "--practice --headless --clock 2026-06-10T10:00 --seconds 6 --state end.json");
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(printed("[relay] hello: ")) << output;
    EXPECT_TRUE(printed("[app] → chart: ")) << output;
    EXPECT_FALSE(state("end.json")["panes"][0]["candles"].empty());
}

}  // namespace
}  // namespace vmr
