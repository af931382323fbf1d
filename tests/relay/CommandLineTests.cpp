#include <gtest/gtest.h>

#include "relay/CommandLine.h"
#include "relay/Recording.h"

namespace vmr {
namespace {

RelayCommandLine read(const std::vector<std::string>& arguments, std::optional<std::string> clock = std::nullopt) {
    return readRelayCommandLine(arguments, [&](const char*) { return clock; });
}

TEST(RelayCommandLine, ReadsItsOptions) {
    const auto line = read({"--port", "8081", "--rest-port=8082", "--seed", "7", "--token-life", "90.5"});
    EXPECT_EQ(line.error, "");
    EXPECT_EQ(line.relay.relayPort, 8081);
    EXPECT_EQ(line.relay.restPort, 8082);
    EXPECT_EQ(line.relay.seed, 7u);
    EXPECT_EQ(line.relay.tokenLife, 90.5);
    EXPECT_EQ(read({}, "2026-06-10T10:00Z@60").clock, (ClockSetting{1781085600, 60}));
    EXPECT_EQ(read({"--clock", "2026-06-10T10:00Z@2"}, "nonsense").clock, (ClockSetting{1781085600, 2}));
}

TEST(RelayCommandLine, NamesWhatIsWrong) {
    const std::vector<std::pair<std::vector<std::string>, const char*>> cases{
        {{"--port"}, "--port needs a value"},
        {{"--port", "65536"}, "--port must be 0 to 65535"},
        {{"--seed", "1.5"}, "--seed must be"},
        {{"--clock", "noon"}, "--clock is no moment: noon"},
        {{"--tape", "a.csv"}, "--tape and --symbol go together"},
        {{"--tape", "a.csv", "--symbol", "GC", "--speed", "2", "--clock", "2026-06-10"}, "contradict"},
        {{"--replay", "a.vmr", "--tape", "a.csv", "--symbol", "GC"}, "--tape and --replay contradict"},
        {{"--replay", "no-such.vmr"}, "no-such.vmr cannot be opened"},
    };
    for (const auto& [arguments, error] : cases)
        EXPECT_NE(read(arguments).error.find(error), std::string::npos) << read(arguments).error << " | " << error;
}

TEST(RelayCommandLine, ARecordingSetsTheClockToItsFirstFrame) {
    const std::string file = testing::TempDir() + "/relay_command_line.vmr";
    std::string error;
    RecordingWriter::create(file, error)->write(1781085600500, "meta:contracts", Frame("{}"));
    const auto line = read({"--replay", file, "--speed", "5"}, "2026-06-10");
    EXPECT_EQ(line.error, "");
    EXPECT_EQ(line.clock, (ClockSetting{1781085600.5, 5}));
}

}  // namespace
}  // namespace vmr
