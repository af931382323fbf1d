#include "workspace/ActionCommands.h"

#include <utility>

namespace vmr {

namespace {
std::string lowered(std::string text) {
    if (text == "On" || text == "Off") text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

CommandAnswer doAction(const ActionContext& at, const std::string& id) {
    const Action* action = findAction(id);
    if (!action) return "error: there is no action " + id + "; see actions";
    const ActionAnswer answer = runAction(*action, at);
    if (!answer.taken) return "error: " + answer.text;
    return "ok " + id + (answer.text.empty() ? "" : " " + lowered(answer.text));
}

std::string listActions(const HotkeyRouter* keys) {
    std::string out = "ok";
    for (const Action& action : actionTable()) {
        const std::string key = keys ? keys->keyOf(action.id) : action.key;
        out += (out == "ok" ? " " : " | ") + action.id + (key.empty() ? "" : " [" + key + "]");
    }
    return out;
}

CommandAnswer setKey(HotkeyRouter* keys, CommandWords& words) {
    if (!keys) return "error: there are no keys here";
    const std::string id = words.next(), key = words.next();
    if (id == "reset" && key.empty()) {
        keys->resetAll();
        return "ok keys reset";
    }
    if (!findAction(id)) return "error: there is no action " + id + "; see actions";
    if (key == "reset")
        keys->reset(id);
    else if (!key.empty())
        if (const auto problem = keys->assign(id, key == "none" ? "" : key)) return "error: " + *problem;
    const std::string now = keys->keyOf(id);
    return "ok key " + id + " " + (now.empty() ? "none" : now);
}
}  // namespace

void addActionCommands(CommandTable& table, std::function<ActionContext()> context, HotkeyRouter* keys) {
    table.add({"do", "ACTION", 1, 1,
               [context = std::move(context)](CommandWords& words) { return doAction(context(), words.next()); },
               "do needs an ACTION; see actions"});
    table.add({"actions", "", 0, 0, [keys](CommandWords&) { return listActions(keys); }});
    table.add(
        {"key", "ACTION [KEY|none|reset] | reset", 1, 2, [keys](CommandWords& words) { return setKey(keys, words); }});
}

}  // namespace vmr
