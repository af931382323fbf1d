#include "workspace/WindowCommands.h"

#include <string>
#include <utility>

#include "base/NumberText.h"

namespace vmr {

namespace {

std::string noRoom() { return std::string("error: ") + PaneHost::noRoomText; }

CommandAnswer runWindow(ShellWindows& windows, CommandWords& words) {
    const std::string what = words.next();
    if (what == "open" && words.empty()) {
        const WindowPanes* window = windows.open();
        return window ? "ok window " + std::to_string(window->number()) : noRoom();
    }
    const auto number = what == "close" ? parseInt(words.next()) : std::nullopt;
    if (!number || *number < 1 || *number > INT32_MAX) return std::nullopt;
    const std::string name = std::to_string(*number);
    if (!windows.find(static_cast<int>(*number))) return "error: there is no window " + name;
    if (windows.size() == 1) return "error: window " + name + " is the last one; see quit";
    windows.close(static_cast<int>(*number));
    return "ok window " + name + " closed";
}

CommandAnswer runDual(WindowPanes& window, const std::string& word, int) {
    if (word != "on" && word != "off") return std::nullopt;
    if ((word == "on") != (window.dual() != nullptr) && !window.toggleDual()) return noRoom();
    return word == "on" ? "ok dual pane " + std::to_string(window.dualNumber()) : std::string("ok dual off");
}

CommandAnswer runSync(WindowPanes& window, const std::string& word, int pane) {
    if (word != "on" && word != "off") return std::nullopt;
    if (!window.dual()) return "error: the window shows one pane; see dual";
    if (window.link().syncOn() != (word == "on")) window.toggleSync(pane == window.dualNumber());
    return "ok sync " + word;
}

CommandAnswer runSplit(WindowPanes& window, const std::string& word, int) {
    const auto share = parseDouble(word);
    if (!share || !(*share > 0 && *share < 1)) return "error: split needs the left pane's share, above 0 and below 1";
    window.setSplit(*share);
    window.keepSplit();
    return "ok split " + doubleText(*share);
}

}  // namespace

void addWindowCommands(CommandTable& table, ShellWindows* windows, std::function<int()> pane) {
    const auto add = [&](Command row, CommandAnswer (*run)(WindowPanes&, const std::string&, int pane)) {
        row.leastWords = row.mostWords = 1;
        row.run = [windows, pane, run](CommandWords& words) -> CommandAnswer {
            WindowPanes* window = windows ? windows->showing(pane()) : nullptr;
            return window ? run(*window, words.next(), pane()) : "error: no window shows the pane";
        };
        table.add(std::move(row));
    };
    table.add({"window", "open|close N", 1, 2, [windows](CommandWords& words) -> CommandAnswer {
                   return windows ? runWindow(*windows, words) : "error: there are no windows";
               }});
    add({"dual", "on|off", 0, 0, {}, {}}, runDual);
    add({"sync", "on|off", 0, 0, {}, {}}, runSync);
    add({"split", "SHARE", 0, 0, {}, {}}, runSplit);
}

}  // namespace vmr
