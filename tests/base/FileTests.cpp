// Files replaced whole.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "base/FileReplace.h"
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

}  // namespace
}  // namespace vmr
