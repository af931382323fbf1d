#include "workspace/PanelCommands.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/NumberText.h"
#include "chart/HfPressure.h"
#include "model/AppModel.h"

namespace vmr {

namespace {
using Tell = std::function<void(const std::string& text)>;

Observable<bool>* panelNamed(PanelsOpen& panels, const std::string& name) {
    if (name == "account") return &panels.accountPanelOpen;
    if (name == "config") return &panels.configPanelOpen;
    if (name == "templates") return &panels.templatesPanelOpen;
    return name == "sim" ? &panels.simPanelOpen : nullptr;
}

CommandAnswer runPanel(AppModel& pane, CommandWords& words) {
    const std::string name = words.next(), what = words.next();
    Observable<bool>* open = panelNamed(pane.panels, name);
    if (!open || (what != "open" && what != "close")) return std::nullopt;
    *open = what == "open";
    return "ok panel " + name + " " + what;
}

CommandAnswer runPressure(AppModel& pane, CommandWords& words) {
    const std::string what = words.next();
    const auto minutes = parseInt(words.next());
    const auto& offered = HfPressure::windows;
    if (what != "window" || !minutes || std::find(offered.begin(), offered.end(), *minutes) == offered.end())
        return std::nullopt;
    pane.setPressureWindow(static_cast<int>(*minutes));
    return "ok pressure window " + std::to_string(*minutes);
}

std::string keyOf(const std::string& number) {
    const std::string key = "slot_" + number;
    const auto& keys = TemplatesService::slotKeys;
    return std::find(keys.begin(), keys.end(), key) == keys.end() ? std::string() : key;
}

std::string savedText(const TemplatesService::Slot& slot) {
    const std::string date = ChartTemplates::fmtDate(slot.savedAt.value_or(""));
    return date.empty() ? "present" : date;
}

std::string listText(const AppModel& pane) {
    std::string text = "ok " + pane.symbolSource();
    for (const char* key : TemplatesService::slotKeys) {
        const auto& list = *pane.templates.list.get();
        const auto slot = list.savedSlots.find(key);
        text += std::string("; ") + ChartTemplates::digit(key) + " ";
        if (slot == list.savedSlots.end())
            text += "empty";
        else
            text += savedText(slot->second);
        if (list.preferred == key) text += " (preferred)";
    }
    return text;
}

/// Tells what became of it. `well` may use the pane, which is there unless there is a problem.
ChartTemplates::Done telling(Tell tell, std::function<std::string()> well) {
    return [tell = std::move(tell), well = std::move(well)](const std::optional<std::string>& problem) {
        tell(problem ? "error: " + *problem : well());
    };
}

CommandAnswer runTemplate(AppModel& pane, CommandWords& words, const Tell& tell) {
    const std::string what = words.next();
    ChartTemplates& templates = pane.templates;
    if (what == "list" && words.empty()) {
        templates.refresh(telling(tell, [&pane] { return listText(pane); }));
        return "";
    }
    const std::string number = words.next(), key = keyOf(number);
    if (key.empty() || (what != "load" && what != "save")) return std::nullopt;
    if (what == "save") {
        templates.save(key, telling(tell, [number] { return "ok saved to slot " + number; }));
        return "";
    }
    templates.refresh(telling(tell, [&templates, key, number] {
        if (!templates.list.get()->savedSlots.contains(key)) return "error: slot " + number + " is empty";
        if (templates.busy) return std::string("error: A save is under way.");
        templates.load(key);
        return "ok applied slot " + number;
    }));
    return "";
}
}  // namespace

void addPanelCommands(const std::function<void(Command)>& add, std::function<AppModel*()> pane, Tell tell) {
    add({"panel", "account|config|templates|sim open|close", 2, 2,
         [pane](CommandWords& words) { return runPanel(*pane(), words); }});
    add({"pressure", "window 1|5|10|15|30", 2, 2, [pane](CommandWords& words) { return runPressure(*pane(), words); }});
    add({"template", "list|load N|save N", 1, 2,
         [pane, tell = std::move(tell)](CommandWords& words) { return runTemplate(*pane(), words, tell); }});
}

}  // namespace vmr
