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
        {std::string_view("a\0b\x7f", 4), "a\\x00b\\x7f"},
        {"\xc2\x9b"
         "31m|\xc2\x85|\xc2\xa0",
         "\\x9b31m|\\x85|\xc2\xa0"},
        {"\u2028x\u2029y\u202ez\u2066w\u2069", "\\u2028x\\u2029y\\u202ez\\u2066w\\u2069"},
        {"raw \x9b"
         "31m",
         "raw \uFFFD31m"},
        {"cut \xe2\x86", "cut \uFFFD\uFFFD"},
        {"overlong \xc0\x9b \xe0\x80\x9b", "overlong \uFFFD\uFFFD \uFFFD\uFFFD\uFFFD"},
        {"surrogate \xed\xa0\x80", "surrogate \uFFFD\uFFFD\uFFFD"},
        {"too far \xf4\x90\x80\x80", "too far \uFFFD\uFFFD\uFFFD\uFFFD"}};
    for (const auto& [text, shown] : cases) EXPECT_EQ(harmlessText(text), shown);
}

TEST(Log, LinesOfManyThreadsComeWhole) {
    std::multiset<std::string> seen, expected;
    const Log log([&](std::string_view line) { seen.emplace(line); });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        const std::string text(200, static_cast<char>('a' + i));
        for (int n = 0; n < 100; ++n) expected.insert(text + "\n");
        threads.emplace_back([&log, text] {
            for (int n = 0; n < 100; ++n) log.line(text);
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(seen, expected);

    seen.clear();
    log.lines("one\n\ttwo\n\nthree");
    EXPECT_EQ(seen, (std::multiset<std::string>{"one\n", "\\ttwo\n", "\n", "three\n"}));
}

}  // namespace
}  // namespace vmr
