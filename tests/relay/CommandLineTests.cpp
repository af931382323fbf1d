#include <gtest/gtest.h>

#include <fstream>

#include "relay/CommandLine.h"
#include "relay/Recording.h"

namespace vmr {
namespace {

RelayCommandLine read(const std::vector<std::string>& arguments, std::optional<std::string> clock = std::nullopt) {
    return readRelayCommandLine(arguments, [&](const char* name) {
        EXPECT_STREQ(name, "VMR_CLOCK");
        return clock;
    });
}

TEST(RelayCommandLine, ReadsItsOptions) {
    const auto line = read({"--port", "8081", "--rest-port=8082", "--seed", "7", "--token-life", "90.5"});
    EXPECT_EQ(line.error, "");
    EXPECT_EQ(line.relay.relayPort, 8081);
    EXPECT_EQ(line.relay.restPort, 8082);
    EXPECT_EQ(line.relay.seed, 7u);
    EXPECT_EQ(line.relay.tokenLife, 90.5);
    EXPECT_FALSE(line.clock);
    EXPECT_TRUE(read({"--port", "x", "--help"}).help);
    EXPECT_EQ(read({}, "2026-06-10T10:00Z@60").clock, (ClockSetting{1781085600, 60}));
    EXPECT_EQ(read({"--clock", "2026-06-10T10:00Z@2"}, "nonsense").clock, (ClockSetting{1781085600, 2}));
}

TEST(RelayCommandLine, NamesWhatIsWrong) {
    const std::vector<std::pair<std::vector<std::string>, const char*>> cases{
        {{"--colour"}, "unknown option --colour"},
        {{"stray"}, "unknown option stray"},
        {{"--port"}, "--port needs a value"},
        {{"--port", "65536"}, "--port must be 0 to 65535"},
        {{"--rest-port", "-1"}, "--rest-port must be"},
        {{"--seed", "1.5"}, "--seed must be"},
        {{"--token-life", "nan"}, "--token-life must be"},
        {{"--clock", "noon"}, "--clock is no moment: noon"},
        {{"--seed", "1", "--seed", "2"}, "--seed is given twice"},
        {{"--tape", "a.csv"}, "--tape and --symbol go together"},
        {{"--symbol", "GC"}, "--tape and --symbol go together"},
        {{"--speed", "2"}, "--speed goes with --tape"},
        {{"--tape", "a.csv", "--symbol", "GC", "--speed", "0"}, "--speed must be"},
        {{"--tape", "a.csv", "--symbol", "GC", "--speed", "2", "--clock", "2026-06-10"}, "contradict"},
        {{"--replay", "a.vmr", "--tape", "a.csv", "--symbol", "GC"}, "--tape and --replay contradict"},
        {{"--replay", "no-such.vmr"}, "no-such.vmr cannot be opened"},
        {{"--record"}, "--record needs a value"},
        {{"--tape", "no-such.csv", "--symbol", "GC"}, "no-such.csv: it cannot be opened"},
    };
    for (const auto& [arguments, error] : cases) {
        EXPECT_NE(read(arguments).error.find(error), std::string::npos) << read(arguments).error << " | " << error;
    }
    EXPECT_NE(read({}, "noon").error.find("VMR_CLOCK is no moment"), std::string::npos);
}

TEST(RelayCommandLine, ATapeSetsTheClockHalfAnHourIn) {
    const std::string file = testing::TempDir() + "/relay_command_line_tape.csv";
    std::ofstream(file) << "timestamp,price\n2013-10-07T12:00:00Z,1\n2013-10-07T14:00:00Z,2\n";
    const auto line = read({"--tape", file, "--symbol", "GC", "--speed", "20"}, "2026-06-10");
    ASSERT_TRUE(line.clock) << line.error;
    EXPECT_EQ(momentText(line.clock->start), "2013-10-07T12:30:00Z");
    EXPECT_EQ(line.clock->speed, 20);
    EXPECT_EQ(momentText(read({"--tape", file, "--symbol", "GC"}, "2013-10-07T13:00Z").clock->start),
              "2013-10-07T13:00:00Z");
}

TEST(RelayCommandLine, ARecordingSetsTheClockToItsFirstFrame) {
    const std::string file = testing::TempDir() + "/relay_command_line.vmr";
    std::string error;
    RecordingWriter::create(file, error)->write(1781085600500, "meta:contracts", Frame("{}"));
    const auto line = read({"--replay", file, "--speed", "5", "--record", "b.vmr"}, "2026-06-10");
    EXPECT_EQ(line.error, "");
    EXPECT_EQ(line.clock, (ClockSetting{1781085600.5, 5}));
    EXPECT_EQ(line.relay.replay, file);
    EXPECT_EQ(line.relay.record, "b.vmr");
}

}  // namespace
}  // namespace vmr
