#include "workspace/SettingsFile.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <set>

#include "base/Json.h"
#include "store/HexColor.h"
#include "store/SettingTable.h"
#include "workspace/SettingsLayout.h"

namespace vmr {

namespace {
using nlohmann::ordered_json;

constexpr std::int64_t version = 1;
constexpr const char* versionKey = "velmoraSettings";

// What ends the reading.
struct Refusal {
    std::string text;
};

[[noreturn]] void refuse(const std::string& field, const std::string& why) { throw Refusal{field + ": " + why}; }

std::string below(const std::string& field, std::string_view name) { return field + "." + std::string(name); }

// Every member is one of `known`, and none comes twice.
void expectMembers(JsonView object, const std::string& field, std::initializer_list<std::string_view> known) {
    if (!object.isObject()) refuse(field, "is no object");
    std::set<std::string_view> seen;
    for (const auto& [key, value] : object.members()) {
        const std::string name = field.empty() ? std::string(key) : below(field, key);
        if (known.size() > 0 && std::find(known.begin(), known.end(), key) == known.end()) refuse(name, "is unknown");
        if (!seen.insert(key).second) refuse(name, "comes twice");
    }
}

double numberOf(JsonView value, const std::string& field) {
    if (value.kind() == JsonView::Kind::missing) refuse(field, "is missing");
    if (!value.isNumber() || !std::isfinite(value.number())) refuse(field, "is no number");
    return value.number();
}

std::string textOf(JsonView value, const std::string& field) {
    if (value.kind() == JsonView::Kind::missing) refuse(field, "is missing");
    if (!value.isString()) refuse(field, "is no text");
    return std::string(value.string());
}

std::string offeredChoice(const Setting& setting, JsonView value, const std::string& field) {
    std::string text = textOf(value, field), all;
    for (const SettingChoice& one : setting.choices) {
        if (one.value == text) return text;
        all += (all.empty() ? "" : ", ") + std::string(one.value);
    }
    refuse(field, "is none of " + all);
}

void expectOffered(const Setting& setting, double value, const std::string& field) {
    const bool inRange = value >= setting.offered.least && value <= setting.offered.most;
    const bool right = setting.unit == SettingUnit::time ? isTimeOfDay(value) : inRange;
    if (!right) refuse(field, settingText(setting, value) + " is not " + settingRangeText(setting));
}

bool isColor(std::string_view text) {
    return text.size() == 7 && text[0] == '#' &&
           text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string_view::npos;
}

const Setting& scaleSetting() { return *findSetting("hfScale"); }

// Types are left to the record's own setter.
void expectRight(const Setting& setting, JsonView value, const std::string& field) {
    switch (setting.kind) {
        case SettingKind::boolean:
            break;
        case SettingKind::number:
        case SettingKind::integer:
            expectOffered(setting, numberOf(value, field), field);
            break;
        case SettingKind::choice:
            offeredChoice(setting, value, field);
            break;
        case SettingKind::color:
            if (!isColor(textOf(value, field))) refuse(field, "is no colour such as #26a69a");
            break;
        case SettingKind::map:
            expectMembers(value, field, {});
            for (const auto& [symbol, scale] : value.members())
                expectOffered(scaleSetting(), numberOf(scale, below(field, symbol)), below(field, symbol));
            break;
    }
}

GexConfig settingsOf(JsonView object) {
    if (!object.isObject()) refuse("settings", "is no object");
    std::set<std::string_view> seen;
    GexConfig config;
    for (const auto& [key, value] : object.members()) {
        const std::string field = below("settings", key);
        const Setting* setting = findSetting(key);
        if (!setting) refuse(field, "is unknown");
        if (!seen.insert(setting->name).second) refuse(field, "comes twice");
        expectRight(*setting, value, field);
        if (config.set(key, value.text())) refuse(field, "is of another type");
    }
    for (const Setting& one : settingTable())
        if (!seen.contains(one.name)) refuse(below("settings", one.name), "is missing");
    return config;
}

HotkeyTexts hotkeysOf(JsonView object, const HotkeyCheck& check) {
    expectMembers(object, "hotkeys", {});
    HotkeyTexts keys;
    for (const auto& [action, key] : object.members())
        keys[std::string(action)] = textOf(key, below("hotkeys", action));
    if (check)
        if (const auto problem = check(keys)) throw Refusal{"hotkeys." + *problem};
    return keys;
}

constexpr std::size_t longestSymbol = 12, mostWindows = 16;
constexpr double farthestFrame = 100000;  // points

bool isSymbol(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '-'; });
}

PaneState paneOf(JsonView object, const std::string& field) {
    expectMembers(object, field, {"symbol", "timeframe", "gexSource"});
    PaneState pane;
    pane.symbol = textOf(object["symbol"], below(field, "symbol"));
    if (pane.symbol.empty() || pane.symbol.size() > longestSymbol || !isSymbol(pane.symbol))
        refuse(below(field, "symbol"), "is no symbol");
    const JsonView minutes = object["timeframe"];
    const double count = numberOf(minutes, below(field, "timeframe"));
    if (minutes.kind() != JsonView::Kind::integer || count < 1 || count > 1440)
        refuse(below(field, "timeframe"), "is not 1 to 1440 minutes");
    pane.timeframe = minutes.integer();
    pane.gexSource = offeredChoice(*findSetting("gexSource"), object["gexSource"], below(field, "gexSource"));
    return pane;
}

WindowRecord windowOf(JsonView object, const std::string& field) {
    expectMembers(object, field, {"frame", "split", "primary", "dual"});
    WindowRecord record;
    for (const JsonView number : object["frame"].items())
        record.frame.push_back(numberOf(number, below(field, "frame")));
    for (const double number : record.frame)
        if (std::abs(number) > farthestFrame) refuse(below(field, "frame"), "is beyond all screens");
    if (record.frame.size() != 4 || record.frame[2] <= 0 || record.frame[3] <= 0)
        refuse(below(field, "frame"), "is not x, y, width and height");
    if (const JsonView split = object["split"]; split.kind() != JsonView::Kind::missing) {
        record.split = numberOf(split, below(field, "split"));
        if (*record.split <= 0 || *record.split >= 1) refuse(below(field, "split"), "is not between 0 and 1");
    }
    record.primary = paneOf(object["primary"], below(field, "primary"));
    if (const JsonView dual = object["dual"]; dual.kind() != JsonView::Kind::missing)
        record.dual = paneOf(dual, below(field, "dual"));
    return record;
}

std::vector<WindowRecord> workspaceOf(JsonView array) {
    if (!array.isArray()) refuse("workspace", "is no list");
    std::vector<WindowRecord> records;
    for (const JsonView window : array.items()) {
        if (records.size() == mostWindows) refuse("workspace", "has more than 16 windows");
        records.push_back(windowOf(window, "workspace[" + std::to_string(records.size()) + "]"));
    }
    return records;
}

std::map<std::string, StoredPanel> panelsOf(JsonView object) {
    expectMembers(object, "panels", {});
    std::map<std::string, StoredPanel> panels;
    for (const auto& [id, frame] : object.members()) {
        const std::string field = below("panels", id);
        expectMembers(frame, field, {"x", "y", "w", "h"});
        StoredPanel panel{numberOf(frame["x"], below(field, "x")), numberOf(frame["y"], below(field, "y")),
                          numberOf(frame["w"], below(field, "w")), numberOf(frame["h"], below(field, "h"))};
        if (*panel.width <= 0) refuse(below(field, "w"), "is not above 0");
        if (*panel.height <= 0) refuse(below(field, "h"), "is not above 0");
        panels[std::string(id)] = panel;
    }
    return panels;
}

// As the panel could have set it --------------------------------------------------------------------------------------

void offer(const Setting& setting, double& value, double standard) {
    if (!std::isfinite(value)) value = standard;
    value = std::clamp(value, setting.offered.least, setting.offered.most);
}
void offer(const Setting& setting, std::int64_t& value, std::int64_t standard) {
    if (setting.unit == SettingUnit::time && !isTimeOfDay(static_cast<double>(value))) value = standard;
    value = std::clamp(value, static_cast<std::int64_t>(setting.offered.least),
                       static_cast<std::int64_t>(setting.offered.most));
}
void offer(const Setting& setting, std::string& value, const std::string& standard) {
    if (setting.kind == SettingKind::color) {
        if (!isColor(value)) value = HexColor::hex(HexColor::rgb(value));
    } else if (std::none_of(setting.choices.begin(), setting.choices.end(),
                            [&](const SettingChoice& one) { return one.value == value; })) {
        value = standard;
    }
}
void offer(const Setting&, std::map<std::string, double>& value, const std::map<std::string, double>&) {
    std::erase_if(value, [](const auto& one) { return !std::isfinite(one.second); });
    for (auto& [symbol, scale] : value) offer(scaleSetting(), scale, scale);
}
void offer(const Setting&, bool&, bool) {}

GexConfig offered(GexConfig config) {
    static const GexConfig defaults;
    for (const Setting& one : settingTable())
        std::visit([&](auto field) { offer(one, config.*field, defaults.*field); }, one.field);
    return config;
}

std::vector<WindowRecord> readable(const std::vector<WindowRecord>& records) {
    std::vector<WindowRecord> out;
    for (const WindowRecord& record : records) {
        const auto json = Json::parse(workspaceText({record}).value_or(""));
        try {
            if (json) out.push_back(workspaceOf(*json).front());
        } catch (const Refusal&) {  // a window that cannot be opened again
        }
    }
    return out;
}

SettingsBundle read(JsonView file, const HotkeyCheck& check) {
    const JsonView written = file[versionKey];
    if (!file.isObject() || written.kind() == JsonView::Kind::missing)
        refuse(versionKey, "is missing; this is no file of settings");
    if (written.kind() != JsonView::Kind::integer || written.integer() != version)
        refuse(versionKey, "is a version that this program does not know");
    expectMembers(file, "", {versionKey, "settings", "hotkeys", "workspace", "panels"});
    const auto there = [&file](const char* name) { return file[name].kind() != JsonView::Kind::missing; };
    SettingsBundle bundle;
    if (there("settings")) bundle.settings = settingsOf(file["settings"]);
    if (there("hotkeys")) bundle.hotkeys = hotkeysOf(file["hotkeys"], check);
    if (there("workspace")) bundle.workspace = workspaceOf(file["workspace"]);
    if (there("panels")) bundle.panels = panelsOf(file["panels"]);
    return bundle;
}
}  // namespace

std::string settingsFileText(const SettingsBundle& bundle) {
    ordered_json out{{versionKey, version}};
    if (bundle.settings) out["settings"] = ordered_json::parse(offered(*bundle.settings).toJson());
    if (bundle.hotkeys) out["hotkeys"] = ordered_json::parse(hotkeysText(*bundle.hotkeys));
    if (bundle.workspace)
        out["workspace"] = ordered_json::parse(workspaceText(readable(*bundle.workspace)).value_or("[]"));
    if (bundle.panels) {
        out["panels"] = ordered_json::object();
        for (const auto& [id, panel] : *bundle.panels) {
            const bool whole = panel.x && panel.y && panel.width && panel.height;
            if (!whole || *panel.width <= 0 || *panel.height <= 0) continue;
            out["panels"][id] = {{"x", *panel.x}, {"y", *panel.y}, {"w", *panel.width}, {"h", *panel.height}};
        }
    }
    return out.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

std::variant<SettingsBundle, std::string> readSettingsFile(std::string_view text, const HotkeyCheck& check) {
    const auto file = Json::parse(text);
    if (!file) return "the file is no JSON";
    try {
        return read(*file, check);
    } catch (const Refusal& refusal) {
        return refusal.text;
    }
}

std::string hotkeysText(const HotkeyTexts& keys) {
    return ordered_json(keys).dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

std::optional<HotkeyTexts> parseHotkeys(std::string_view text) {
    const auto json = Json::parse(text);
    if (!json || !json->isObject()) return std::nullopt;
    HotkeyTexts keys;
    for (const auto& [action, key] : json->members()) {
        if (!key.isString()) return std::nullopt;
        keys[std::string(action)] = key.string();
    }
    return keys;
}

}  // namespace vmr
