#include "base/Log.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

namespace vmr {
namespace {

TEST(Log, NobodysTextDrivesATerminalOrBreaksALine) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"plain → äß 漢 🂡 back\\slash", "plain → äß 漢 🂡 back\\slash"},
        {"\x1b[2J\x1b]0;title\a", "\\x1b[2J\\x1b]0;title\\x07"},
        {"hello\r\n[cmd] ok quitting\t!", "hello\\r\\n[cmd] ok quitting\\t!"},
        {"\xc2\x9b"
         "31m|\xc2\x85|\xc2\xa0",
         "\\x9b31m|\\x85|\xc2\xa0"},
        {"\u2028x\u2029y\u202ez\u2066w\u2069", "\\u2028x\\u2029y\\u202ez\\u2066w\\u2069"},
        {"raw \x9b"
         "31m",
         "raw \uFFFD31m"},
        {"cut \xe2\x86", "cut \uFFFD\uFFFD"},
        {"overlong \xc0\x9b", "overlong \uFFFD\uFFFD"}};
    for (const auto& [text, shown] : cases) EXPECT_EQ(harmlessText(text), shown);
}

TEST(Log, LinesOfManyThreadsComeWhole) {
    std::multiset<std::string> seen;
    const Log log([&](std::string_view line) { seen.emplace(line); });
    {
        std::vector<std::jthread> threads;
        for (const char letter : {'a', 'b', 'c', 'd'})
            threads.emplace_back([&log, text = std::string(200, letter)] {
                for (int n = 0; n < 100; ++n) log.line(text);
            });
    }
    for (const char letter : {'a', 'b', 'c', 'd'}) EXPECT_EQ(seen.count(std::string(200, letter) + "\n"), 100U);
    seen.clear();
    log.lines("one\n\ttwo\n\nthree");
    EXPECT_EQ(seen, (std::multiset<std::string>{"one\n", "\\ttwo\n", "\n", "three\n"}));
}

}  // namespace
}  // namespace vmr
