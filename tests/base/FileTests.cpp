// Files replaced whole, and the preferences kept in one.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "base/FileReplace.h"
#include "base/Preferences.h"
#include "base/Uuid.h"

namespace vmr {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
 protected:
    ~Files() override { fs::remove_all(folder); }
    static unsigned modeOf(const fs::path& path) { return static_cast<unsigned>(fs::status(path).permissions()); }
    const fs::path folder = fs::temp_directory_path() / ("velmora-test-" + UuidSource().next().text());
};

TEST_F(Files, ReplaceMakesFoldersKeepsThingsPrivateAndLeavesNothingBeside) {
    const fs::path file = folder / "a" / "b" / "file.json";
    const ::mode_t old = ::umask(0);
    EXPECT_EQ(replaceFile(file, "one"), std::nullopt);
    ::umask(old);
    for (const auto& made : {folder / "a", folder / "a" / "b"}) EXPECT_EQ(modeOf(made), 0700u);
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
    EXPECT_FALSE(fs::exists(folder / "taken.new"));
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
    two.remove("a");
    one.set("c", "");
    const FilePreferences later(file);
    EXPECT_EQ(later.get("a"), std::nullopt) << "another's removal is picked up before a write";
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
    for (const char* key : {"a", "b"}) preferences.set(key, "1");
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << "said once: " << told;
    EXPECT_EQ(preferences.get("b"), "1");
    fs::remove(folder / "wall");
    preferences.set("c", "3");
    EXPECT_EQ(FilePreferences(folder / "wall" / "preferences.json").get("b"), "1") << "once writable, all is saved";
}

}  // namespace
}  // namespace vmr
