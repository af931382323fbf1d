// Files replaced whole, and the preferences kept in one.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "base/FileReplace.h"
#include "base/Paths.h"
#include "base/Preferences.h"

namespace vmr {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
 protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "velmora-test-XXXXXX").string();
        ASSERT_TRUE(::mkdtemp(name.data()));
        folder = name;
    }
    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    static mode_t modeOf(const fs::path& path) {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }
    fs::path folder;
};

TEST_F(Files, ReplaceMakesFoldersKeepsThingsPrivateAndLeavesNothingBeside) {
    const fs::path file = folder / "a" / "b" / "file.json";
    const ::mode_t old = ::umask(0);
    EXPECT_EQ(replaceFile(file, "one"), std::nullopt);
    ::umask(old);
    EXPECT_EQ(modeOf(file), 0600u);
    EXPECT_EQ(modeOf(folder / "a"), 0700u);
    EXPECT_EQ(modeOf(folder / "a" / "b"), 0700u);
    fs::permissions(file, fs::perms::all);
    for (const std::string& bytes : {std::string(3'000'000, 'x'), std::string("\0\xff\r\n\0", 5), std::string()}) {
        EXPECT_EQ(replaceFile(file, bytes), std::nullopt);
        EXPECT_EQ(modeOf(file), 0600u);
        EXPECT_EQ(readFile(file), bytes);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(file.parent_path()), fs::directory_iterator()), 1);
}

TEST_F(Files, AFailedReplaceTellsWhyAndLeavesTheOldFile) {
    const fs::path asFolder = folder / "taken";
    fs::create_directories(asFolder / "inside");
    EXPECT_THAT(replaceFile(asFolder, "x").value_or(""), testing::HasSubstr("cannot replace"));
    EXPECT_TRUE(fs::exists(asFolder / "inside"));
    ASSERT_EQ(replaceFile(folder / "file", "old"), std::nullopt);
    EXPECT_THAT(replaceFile(folder / "file" / "below", "x").value_or(""), testing::HasSubstr("cannot"));
    EXPECT_EQ(readFile(folder / "file"), "old");
    EXPECT_EQ(readFile(asFolder), std::nullopt);
}

TEST_F(Files, TwoPreferencesOnOneFileLoseNothing) {
    const fs::path file = folder / "preferences.json";
    FilePreferences one(file), two(file);
    one.set("a", "1");
    two.set("b", "quote \" and é and \n");
    one.set("c", "");
    two.remove("a");
    one.set("d", "4");
    EXPECT_EQ(one.get("a"), std::nullopt) << "another's removal is picked up before a write";
    const FilePreferences later(file);
    EXPECT_EQ(later.get("a"), std::nullopt);
    EXPECT_EQ(later.get("b"), "quote \" and é and \n");
    EXPECT_EQ(later.get("c"), "");
}

TEST_F(Files, AFileThatDoesNotDecodeIsKeptBeside) {
    const fs::path file = folder / "preferences.json";
    for (const std::string bad : {"{\"a\":", "[1]", "", "\xff\xfe"}) {
        ASSERT_EQ(replaceFile(file, bad), std::nullopt);
        FilePreferences preferences(file);
        EXPECT_EQ(preferences.get("a"), std::nullopt);
        EXPECT_EQ(readFile(file), bad) << "reading alone changes nothing";
        preferences.set("a", "new");
        EXPECT_EQ(readFile(folder / "preferences.json.bad"), bad);
        EXPECT_EQ(FilePreferences(file).get("a"), "new");
    }
    ASSERT_EQ(replaceFile(file, R"({"number":1,"text":"kept"})"), std::nullopt);
    EXPECT_EQ(FilePreferences(file).get("text"), "kept") << "beside a value that is no text";
}

TEST_F(Files, WithoutAWritableFolderValuesHoldInMemory) {
    ASSERT_EQ(replaceFile(folder / "wall", ""), std::nullopt);
    FilePreferences preferences(folder / "wall" / "preferences.json");
    testing::internal::CaptureStderr();
    preferences.set("a", "1");
    preferences.set("b", "2");
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_THAT(told, testing::StartsWith("velmora: settings are not saved: "));
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << "said once: " << told;
    EXPECT_EQ(preferences.get("b"), "2");
    fs::remove(folder / "wall");
    preferences.set("c", "3");
    EXPECT_EQ(FilePreferences(folder / "wall" / "preferences.json").get("b"), "2") << "once writable, all is saved";
}

TEST(Paths, FollowTheEnvironment) {
    ::setenv("XDG_CONFIG_HOME", "/somewhere/config", 1);
    ::setenv("XDG_DATA_HOME", "relative", 1);
    ::setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(Paths::user().config, "/somewhere/config/Velmora");
    EXPECT_EQ(Paths::user().data, "/home/someone/.local/share/Velmora") << "a relative XDG path does not count";
    EXPECT_EQ(Paths::practice().config, "/somewhere/config/Velmora/practice");
}

}  // namespace
}  // namespace vmr
