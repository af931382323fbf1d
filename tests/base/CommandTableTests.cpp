#include "base/CommandTable.h"

#include <gtest/gtest.h>

namespace vmr {
namespace {

TEST(CommandTable, ReadsWordsCountsThemAndTellsWhatIsWrong) {
    CommandTable table({" | ", [](const std::string& name) { return "what is " + name; },
                        [](const Command& command) { return command.name + " takes " + command.arguments; }});
    const auto told = [](CommandWords& words) -> CommandAnswer {
        std::string out = "ok";
        while (!words.empty()) out += " <" + words.next() + ">";
        return out;
    };
    table.add({"none", "", 0, 0, told});
    table.add({"pair", "A [B]", 1, 2, told, "give it A"});
    table.add({"rest", "TEXT", 1, Command::restOfLine,
               [](CommandWords& words) { return "ok " + std::string(words.rest()); }});
    table.add({"odd", "EVEN", 1, 1, [](CommandWords&) { return CommandAnswer(); }});
    for (const auto& [line, answer] : {std::pair("none", "ok"),
                                       {" \t none \r\n", "ok"},
                                       {"None", "error: what is None"},
                                       {"pair", "error: give it A"},
                                       {"pair  1\t2 ", "ok <1> <2>"},
                                       {"pair 1 2 3", "error: give it A"},
                                       {"rest", "error: rest takes TEXT"},
                                       {"rest  {\"a\":  1} \t", "ok {\"a\":  1}"},
                                       {"odd 1", "error: odd takes EVEN"}})
        EXPECT_EQ(table.run(line), answer) << line;
    EXPECT_EQ(table.help(), "none | pair A [B] | rest TEXT | odd EVEN");
}

}  // namespace
}  // namespace vmr
