#include "workspace/HotkeyRouter.h"

#include <nlohmann/json.hpp>

#include <set>

#include "base/CommandTable.h"
#include "workspace/KeyChord.h"

namespace vmr {

namespace {
using nlohmann::json;

bool fits(const std::string& chord) { return chord.empty() || HotkeyRouter::reserved(chord).empty(); }

// The keys of a stored text, and what is wrong with it, if anything.
std::pair<std::map<std::string, std::string, std::less<>>, std::optional<std::string>> read(std::string_view text) {
    const json stored = json::parse(text, nullptr, false);
    if (!stored.is_object()) return {{}, "it is no list of keys"};
    std::map<std::string, std::string, std::less<>> keys;
    std::optional<std::string> problem;
    for (const auto& [id, value] : stored.items()) {
        const Action* action = findAction(id);
        std::optional<std::string> chord;
        if (value.is_string()) chord = value.get<std::string>().empty() ? "" : parseChord(value.get<std::string>());
        if (action && !action->fixed && chord && fits(*chord))
            keys[id] = *chord;
        else if (!problem)
            problem = id + (action ? ": no key for an action" : ": there is no such action");
    }
    return {std::move(keys), std::move(problem)};
}
}  // namespace

HotkeyRouter::HotkeyRouter(Preferences* preferences) : preferences_(preferences) { load(); }

void HotkeyRouter::load() {
    changedKeys_.clear();
    const auto stored = preferences_ ? preferences_->get(preferenceKey) : std::nullopt;
    if (stored) {
        std::set<std::string> taken;
        const auto keys = read(*stored).first;
        for (const Action& action : actionTable())
            if (!keys.contains(action.id) && !action.key.empty()) taken.insert(action.key);
        for (const auto& [id, chord] : keys)
            if (chord.empty() || taken.insert(chord).second) changedKeys_[id] = chord;
    }
    changed();
}

std::string HotkeyRouter::keyOf(std::string_view id) const {
    if (const auto own = changedKeys_.find(id); own != changedKeys_.end()) return own->second;
    const Action* action = findAction(id);
    return action ? action->key : std::string();
}

const Action* HotkeyRouter::actionFor(std::string_view chord) const {
    if (chord.empty()) return nullptr;
    for (const Action& action : actionTable())
        if (keyOf(action.id) == chord) return &action;
    return nullptr;
}

std::string HotkeyRouter::reserved(std::string_view chord) {
    for (const Action& action : actionTable())
        if (action.fixed && action.key == chord) return action.title;
    for (const FixedKey& one : fixedKeys())
        for (CommandWords keys(one.keys); !keys.empty();)
            if (keys.next() == chord) return std::string(one.title);
    return {};
}

std::optional<std::string> HotkeyRouter::assign(std::string_view id, std::string_view text) {
    const Action* action = findAction(id);
    if (!action) return "there is no action " + std::string(id);
    if (action->fixed) return action->title + " keeps its key";
    const auto chord = text.empty() ? std::optional<std::string>("") : parseChord(text);
    if (!chord) return std::string(text) + " is no key";
    if (const std::string use = chord->empty() ? "" : reserved(*chord); !use.empty())
        return chordLabel(*chord, false) + " is taken: " + use;
    if (const Action* other = actionFor(*chord); other && other != action) set(other->id, "");
    set(id, *chord);
    keep();
    return std::nullopt;
}

void HotkeyRouter::set(std::string_view id, std::string chord) {
    if (findAction(id)->key == chord)
        changedKeys_.erase(std::string(id));
    else
        changedKeys_[std::string(id)] = std::move(chord);
}

void HotkeyRouter::reset(std::string_view id) {
    if (const Action* action = findAction(id)) assign(id, action->key);
}

void HotkeyRouter::resetAll() {
    changedKeys_.clear();
    keep();
}

bool HotkeyRouter::isDefault(std::string_view id) const { return !changedKeys_.contains(id); }

void HotkeyRouter::keep() {
    if (preferences_ && changedKeys_.empty()) preferences_->remove(preferenceKey);
    if (preferences_ && !changedKeys_.empty()) preferences_->set(preferenceKey, json(changedKeys_).dump());
    changed();
}

std::optional<std::string> HotkeyRouter::problemOf(std::string_view text) { return read(text).second; }

void HotkeyRouter::pointerOver(int pane) { hovered_ = pane; }

void HotkeyRouter::pointerLeft(int pane) {
    if (hovered_ == pane) hovered_ = 0;
}

int HotkeyRouter::paneFor(int focused, std::size_t paneCount) const {
    return paneCount < 2 || byKeyboard_ ? focused : hovered_;
}

}  // namespace vmr
