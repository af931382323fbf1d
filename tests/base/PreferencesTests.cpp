// The preferences in their file: written behind, shared with other processes, never half written.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "base/FileLock.h"
#include "base/FileReplace.h"
#include "base/Preferences.h"
#include "base/Uuid.h"
#include "support/time/TestTime.h"

namespace vmr {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

struct Stored : testing::Test {
    Stored() { fs::create_directories(folder); }
    ~Stored() override { fs::remove_all(folder); }
    /// What a process that starts now reads.
    std::optional<std::string> later(const char* key) { return FilePreferences(file, writer).get(key); }
    const fs::path folder = fs::temp_directory_path() / ("velmora-test-" + UuidSource().next().text());
    const fs::path file = folder / "preferences.json";
    test::TestTime time;
    test::TestQueue writer{time};
};

TEST_F(Stored, ChangesInARowAreOneWriteAMomentLater) {
    FilePreferences preferences(file, writer);
    int made = 0;
    for (int i = 0; i < 300; ++i) {
        preferences.setLater("record", [&made, i] { return ++made, std::to_string(i); });
        time.advance(0.001);
    }
    EXPECT_EQ(preferences.writes(), 1) << "0.3 s are over";
    EXPECT_EQ(made, 1);
    preferences.set("a", "1");
    EXPECT_EQ(preferences.get("record"), "299");
    EXPECT_EQ(preferences.get("a"), "1") << "in memory at once";
    EXPECT_EQ(later("a"), std::nullopt);
    time.advance(FilePreferences::pace);
    time.advance(100);
    EXPECT_EQ(preferences.writes(), 2) << "only what has changed is written";
    EXPECT_EQ(later("record"), "299");
    preferences.remove("a");
    preferences.flush();
    preferences.flush();
    EXPECT_EQ(preferences.writes(), 3);
    EXPECT_EQ(later("a"), std::nullopt);
    { FilePreferences(file, writer).set("b", "2"); }
    EXPECT_EQ(later("b"), "2") << "an orderly end writes";
}

TEST_F(Stored, TwoOnOneFileLoseNothingButARaceForOneKey) {
    const std::string others = R"([1, {"\"}]": 1e400}, "\ud800"])";
    ASSERT_EQ(replaceFile(file, R"({ "number" :123456789012345678901.50 ,"list":)" + others +
                                    R"(,"text":"kept","none":null,"wild":"\udc00 \u00e9"})"),
              std::nullopt);
    FilePreferences one(file, writer), two(file, writer);
    one.set("a", "1");
    one.set("both", "one");
    one.flush();
    two.set("b", "quote \" and é and \n");
    two.set("both", "two");
    two.remove("a");
    two.flush();
    EXPECT_EQ(two.get("a"), std::nullopt);
    one.set("c", "");
    EXPECT_EQ(one.get("b"), std::nullopt) << "seen after the next write";
    one.flush();
    EXPECT_EQ(one.get("b"), "quote \" and é and \n");
    EXPECT_EQ(one.get("a"), std::nullopt) << "removed by the other";
    for (const auto& [key, value] :
         {std::pair("a", std::optional<std::string>()), {"both", "two"}, {"c", ""}, {"text", "kept"}})
        EXPECT_EQ(later(key), value) << key;
    two.remove("text");
    two.flush();
    EXPECT_EQ(later("c"), "") << "what the other has written since";
    EXPECT_EQ(later("wild"), "\uFFFD é") << "half a character costs no more than itself";
    for (const char* kept : {"\"number\": 123456789012345678901.50,", "\"none\": null,"})
        EXPECT_THAT(*readFile(file), HasSubstr(kept));
    EXPECT_THAT(*readFile(file), HasSubstr("\"list\": " + others + ","));
}

TEST_F(Stored, AWriterWaitsForTheLockAndTheLastOneDoesNotWaitForEver) {
    FilePreferences preferences(file, writer);
    const FileLock other(folder / "preferences.json.lock");
    ASSERT_EQ(other.state(), FileLock::State::held);
    preferences.set("a", "1");
    time.advance(FilePreferences::pace + 0.1);
    EXPECT_FALSE(fs::exists(file));
    preferences.flush();
    EXPECT_EQ(later("a"), "1");
}

TEST_F(Stored, AFileThatDoesNotDecodeIsKeptBeside) {
    for (const std::string bad : {"{\"a\":", "[1]", "", "\xff\xfe"}) {
        std::ofstream(file) << bad;
        fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
        FilePreferences preferences(file, writer);
        EXPECT_EQ(preferences.get("a"), std::nullopt);
        EXPECT_EQ(readFile(file), bad) << "reading alone changes nothing";
        preferences.set("a", "new");
        preferences.flush();
        const fs::path aside = folder / "preferences.json.bad";
        EXPECT_EQ(readFile(aside), bad);
        EXPECT_EQ(fs::status(aside).permissions(), fs::perms::owner_read | fs::perms::owner_write);
        EXPECT_EQ(later("a"), "new");
        FilePreferences broken(file, writer);
        ASSERT_EQ(replaceFile(file, bad), std::nullopt);
        broken.removeSetAside();
        broken.remove("a");
        broken.flush();
        EXPECT_FALSE(fs::exists(aside)) << "neither the old copy nor a new one";
    }
}

TEST_F(Stored, WithoutAWritableFolderValuesHoldInMemory) {
    ASSERT_EQ(replaceFile(folder / "wall", ""), std::nullopt);
    FilePreferences preferences(folder / "wall" / "preferences.json", writer);
    testing::internal::CaptureStderr();
    for (const char* key : {"a", "b"}) {
        preferences.set(key, "1");
        time.advance(1);
    }
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << "said once: " << told;
    EXPECT_EQ(preferences.get("b"), "1");
    fs::remove(folder / "wall");
    preferences.set("c", "3");
    time.advance(1);
    EXPECT_EQ(FilePreferences(folder / "wall" / "preferences.json", writer).get("b"), "1")
        << "once writable, all is saved";
}

TEST_F(Stored, ThreeProcessesWithFourHundredChangesEachLoseNone) {
    std::vector<pid_t> children;
    for (int process = 0; process < 3; ++process) {
        children.push_back(::fork());
        if (children.back() != 0) continue;
        // no threads here: the thread sanitizer allows none behind a fork
        {
            FilePreferences preferences(file, writer);
            for (int i = 0; i < 400; ++i) {
                preferences.set(std::to_string(process) + "/" + std::to_string(i % 50), std::to_string(i));
                preferences.set("race", std::to_string(process));
                if (i % 20 == 0) preferences.flush();
                if (i % 20 == 10) time.advance(FilePreferences::pace);
            }
        }
        std::_Exit(0);  // without the tests' ends
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    FilePreferences all(file, writer);
    for (int process = 0; process < 3; ++process)
        for (int i = 350; i < 400; ++i)
            EXPECT_EQ(all.get(std::to_string(process) + "/" + std::to_string(i % 50)), std::to_string(i));
    EXPECT_THAT(all.get("race").value_or(""), testing::MatchesRegex("[012]"));
    EXPECT_FALSE(fs::exists(folder / "preferences.json.bad"));
}

}  // namespace
}  // namespace vmr
