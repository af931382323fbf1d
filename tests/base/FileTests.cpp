// Files replaced whole, and for their owner alone.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "base/FileLock.h"
#include "base/FileReplace.h"
#include "base/PrivateFile.h"
#include "base/ReducedMotion.h"
#include "base/RenderDevice.h"
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
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1) << "nothing beside";
    ASSERT_EQ(replaceFile(folder / "file", "old"), std::nullopt);
    EXPECT_THAT(replaceFile(folder / "file" / "below", "x").value_or(""), testing::HasSubstr("cannot"));
    EXPECT_EQ(readFile(folder / "file"), "old");
    EXPECT_EQ(readFile(asFolder), std::nullopt);
    for (const char* name : {"file.0123456789abcdef.new", "file.new", "file.json", "other.0123456789abcdef.new"})
        std::ofstream(folder / name) << "left";
    removeLeftovers(folder / "file");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 5) << "but for its own";
    EXPECT_FALSE(fs::exists(folder / "file.0123456789abcdef.new"));
}

TEST_F(Files, WhatIsOpenToOthersIsClosedAndNoLinkIsFollowed) {
    const fs::path open = folder / "open", file = open / "file", linked = folder / "linked";
    fs::create_directories(open);
    std::ofstream(file) << "secret";
    std::ofstream(linked) << "theirs";
    for (const fs::path& one : {open, file, linked}) fs::permissions(one, fs::perms::all);
    EXPECT_EQ(readPrivateFile(file), "secret");
    EXPECT_EQ(modeOf(file), 0700u);
    EXPECT_EQ(FileLock(open / "lock").state(), FileLock::State::held);
    EXPECT_EQ(modeOf(open), 0700u) << "a folder that was there, too";
    fs::remove(file);
    fs::create_symlink(linked, file);
    EXPECT_EQ(readPrivateFile(file), std::nullopt);
    EXPECT_EQ(FileLock(file).state(), FileLock::State::unavailable);
    EXPECT_TRUE(writeNewPrivateFile(file, "x"));
    EXPECT_EQ(replaceFile(file, "mine"), std::nullopt);
    EXPECT_EQ(readFile(linked).value_or("") + readFile(file).value_or(""), "theirsmine");
    fs::permissions(open, fs::perms::all | fs::perms::sticky_bit);
    EXPECT_THAT(replaceFile(file, "x").value_or(""), testing::HasSubstr("users share"));
    EXPECT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(readPrivateFile(folder / "pipe"), std::nullopt) << "without waiting for its other end";
}

TEST_F(Files, AnotherUserReadsNothingAndPlantsNothing) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can act as another user";
    constexpr uid_t nobody = 65534;
    const fs::path own = folder / "own", theirs = folder / "theirs";
    ASSERT_EQ(replaceFile(own / "file", "secret"), std::nullopt);
    fs::create_directories(theirs);
    std::ofstream(theirs / "file") << "planted";
    fs::permissions(folder, fs::perms::all);
    ASSERT_EQ(::chown(theirs.c_str(), nobody, nobody) | ::chown((theirs / "file").c_str(), nobody, nobody), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        if (::setgid(nobody) != 0 || ::setuid(nobody) != 0) std::_Exit(3);
        const bool reads = readFile(own / "file") || readPrivateFile(own / "file");
        const bool writes = !replaceFile(own / "file", "x") || FileLock(own / "lock").state() == FileLock::State::held;
        std::error_code failed;
        fs::create_directory_symlink(own, folder / "link", failed);
        std::_Exit(reads + 2 * writes);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(readPrivateFile(theirs / "file"), std::nullopt);
    for (const auto& [path, problem] : {std::pair(theirs / "file", "belongs to another user"),
                                        {folder / "link" / "file", "is a link of another user"}})
        EXPECT_THAT(replaceFile(path, "x").value_or(""), testing::HasSubstr(problem));
    EXPECT_EQ(readFile(own / "file"), "secret");
}

// The second interface, the card beside which the processor draws, the answer that was wrong.
TEST_F(Files, SamplesGoByWhatDrewTheLastWindow) {
    const auto card = Rasteriser::card, processor = Rasteriser::processor;
    const struct {
        const char* wanted;
        std::optional<Rasteriser> found;
        bool device;
        int samples;
    } cases[] = {{"", {}, true, 4},    {"", {}, false, 1},         {"", processor, true, 1},
                 {"", card, false, 4}, {"4", processor, false, 4}, {"1", card, true, 1},
                 {"2", {}, true, 4},   {"14", processor, true, 1}};
    for (const auto& [wanted, found, device, samples] : cases)
        EXPECT_EQ(samplesAPixel(wanted, found, device), samples) << wanted << device;

    const fs::path file = folder / "rasteriser";
    const RasteriserRecord first(file, "default"), vulkan(file, "vulkan"), odd(file, "no word\n");
    EXPECT_EQ(first.found(), std::nullopt);
    first.keep(processor);
    vulkan.keep(card);
    odd.keep(card);
    EXPECT_EQ(first.found(), processor) << "beside the second";
    EXPECT_EQ(vulkan.found(), card);
    first.keep(card);
    EXPECT_EQ(readFile(file), "default card\nvulkan card\n");
    ASSERT_EQ(replaceFile(file, "default gone\nvulkan processor"), std::nullopt);
    EXPECT_EQ(first.found(), std::nullopt);
    EXPECT_EQ(vulkan.found(), processor);
}

TEST_F(Files, WhetherThingsKeepStillIsTheVariablesAndThenTheDesktops) {
    std::map<std::string, std::string> variables{{"HOME", folder / "home"}};
    const auto still = [&] {
        return wantsReducedMotion([&](const char* name) {
            const auto found = variables.find(name);
            return found == variables.end() ? std::nullopt : std::optional(found->second);
        });
    };
    const auto write = [](const fs::path& file, const char* text) { EXPECT_EQ(replaceFile(file, text), std::nullopt); };
    EXPECT_FALSE(still());
    write(folder / "home/.config/gtk-3.0/settings.ini", "[Settings]\ngtk-enable-animations = false\r\n");
    EXPECT_TRUE(still());
    write(folder / "home/.config/gtk-4.0/settings.ini", "gtk-enable-animations=1");
    EXPECT_FALSE(still()) << "the newer one";
    write(folder / "home/.config/kdeglobals", "[KDE]\nAnimationDurationFactor=0.0\n");
    EXPECT_TRUE(still());
    variables["XDG_CONFIG_HOME"] = folder / "config";
    EXPECT_FALSE(still());
    write(folder / "config/kdeglobals", "AnimationDurationFactor=0.5\nAnimation=0");
    EXPECT_FALSE(still());
    for (const auto& [wanted, expected] : {std::pair("1", true), {"0", false}, {"", false}}) {
        variables["VMR_REDUCED_MOTION"] = wanted;
        EXPECT_EQ(still(), expected) << wanted;
    }
}

}  // namespace
}  // namespace vmr
