#include "workspace/SettingsEditor.h"

#include <cmath>
#include <utility>

#include "base/NumberText.h"
#include "model/AppModel.h"
#include "model/SimDesk.h"
#include "store/ConfigIO.h"
#include "store/HexColor.h"
#include "workspace/PaneHost.h"
#include "workspace/SettingsLayout.h"

namespace vmr {

namespace {
const GexConfig& defaults() {
    static const GexConfig record;
    return record;
}

bool isConfirm(const Setting& setting) { return &setting == &confirmUnusualSetting(); }

bool isSymbolScale(const Setting& setting) { return setting.name == "hfScale"; }

bool isOffered(const Setting& setting, const std::string& value) {
    for (const SettingChoice& one : setting.choices)
        if (one.value == value) return true;
    return false;
}

// The colour as it is stored, or nothing for a text that is none.
std::optional<std::string> colorOf(const std::string& text) {
    const std::string hex = HexColor::hex(HexColor::rgb(text));
    std::string digits = text.starts_with('#') ? text.substr(1) : text;
    for (char& digit : digits)
        if (digit >= 'A' && digit <= 'F') digit = static_cast<char>(digit - 'A' + 'a');
    return hex == "#" + digits ? std::optional(hex) : std::nullopt;  // what is no colour reads as white
}

// Each gives false for a value that the setting cannot take.
bool assign(const Setting&, bool& field, const SettingValue& value) {
    const bool* on = std::get_if<bool>(&value);
    if (on) field = *on;
    return on;
}
bool assign(const Setting&, double& field, const SettingValue& value) {
    const double* number = std::get_if<double>(&value);
    if (number) field = *number;
    return number;
}
bool assign(const Setting& setting, std::int64_t& field, const SettingValue& value) {
    if (const double* number = std::get_if<double>(&value)) {
        field = static_cast<std::int64_t>(std::llround(*number));
        return true;
    }
    const auto* text = std::get_if<std::string>(&value);
    const auto whole = text && isOffered(setting, *text) ? parseInt(*text) : std::nullopt;
    if (whole) field = *whole;
    return whole.has_value();
}
bool assign(const Setting& setting, std::string& field, const SettingValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    if (!text) return false;
    if (setting.kind == SettingKind::color) {
        const auto color = colorOf(*text);
        if (color) field = *color;
        return color.has_value();
    }
    if (isOffered(setting, *text)) field = *text;
    return field == *text;
}
bool assign(const Setting&, std::map<std::string, double>&, const SettingValue&) { return false; }

SettingValue held(const Setting& setting, std::int64_t value) {
    if (setting.control == SettingControl::menu) return std::to_string(value);
    return static_cast<double>(value);
}
SettingValue held(const Setting&, const std::map<std::string, double>&) { return false; }
template <class Value>
SettingValue held(const Setting&, const Value& value) {
    return value;
}
}  // namespace

SettingValue SettingsEditor::value(const Setting& setting) const {
    if (isConfirm(setting)) return SimDesk::confirmsUnusual(model_.preferences());
    const GexConfig& config = model_.config.get();
    if (setting.kind == SettingKind::color)  // as the chart reads it
        return HexColor::hex(HexColor::rgb(config.*std::get<std::string GexConfig::*>(setting.field)));
    if (isSymbolScale(setting) && available(setting)) return config.hfScaleFor(model_.currentSymbol());
    return std::visit([&](auto field) { return held(setting, config.*field); }, setting.field);
}

std::string SettingsEditor::text(const Setting& setting) const {
    const SettingValue held = value(setting);
    if (const double* number = std::get_if<double>(&held)) return settingText(setting, *number);
    const auto* words = std::get_if<std::string>(&held);
    return words ? *words : std::string();
}

bool SettingsEditor::available(const Setting& setting) const {
    return !isSymbolScale(setting) || !model_.currentSymbol().empty();
}

void SettingsEditor::set(std::string_view name, const SettingValue& wanted) {
    const Setting* setting = findPanelSetting(name);
    if (!setting || !available(*setting)) return;
    if (isConfirm(*setting)) {
        if (const bool* on = std::get_if<bool>(&wanted)) SimDesk::setConfirmsUnusual(model_.preferences(), *on);
        return;
    }
    SettingValue value = wanted;
    if (double* number = std::get_if<double>(&value)) *number = offeredNumber(*setting, *number);
    GexConfig changed = model_.config;
    const bool taken = std::visit([&](auto field) { return assign(*setting, changed.*field, value); }, setting->field);
    if (!taken) return;
    if (isSymbolScale(*setting)) changed.hfScaleBySymbol[model_.currentSymbol()] = changed.hfScale;
    apply(changed);
    forgive(name);
}

void SettingsEditor::step(std::string_view name, int steps) {
    const Setting* setting = findSetting(name);
    if (!setting) return;
    const SettingValue now = value(*setting);
    if (const double* number = std::get_if<double>(&now)) set(name, steppedNumber(*setting, *number, steps));
}

void SettingsEditor::toEnd(std::string_view name, bool most) {
    if (const Setting* setting = findSetting(name); setting && std::isfinite(setting->offered.least))
        set(name, most ? setting->offered.most : setting->offered.least);
}

bool SettingsEditor::type(std::string_view name, std::string_view text) {
    const Setting* setting = findSetting(name);
    const auto number = setting && available(*setting) ? typedSetting(*setting, text) : std::nullopt;
    if (!number) {
        if (setting) invalid_.emplace(name);
        tell();
        return false;
    }
    GexConfig changed = model_.config;
    std::visit([&](auto field) { assign(*setting, changed.*field, *number); }, setting->field);
    if (isSymbolScale(*setting)) changed.hfScaleBySymbol[model_.currentSymbol()] = *number;
    apply(changed);
    forgive(name);
    return true;
}

void SettingsEditor::giveUp(std::string_view name) { forgive(name); }

void SettingsEditor::restoreDefaults(std::string_view id) {
    const SettingsRow* row = findSettingsRow(id);
    if (!row) return;
    GexConfig changed = model_.config;
    for (const Setting* one : row->parts) {
        if (isConfirm(*one)) return SimDesk::setConfirmsUnusual(model_.preferences(), true);
        std::visit([&](auto field) { changed.*field = defaults().*field; }, one->field);
        if (isSymbolScale(*one)) changed.hfScaleBySymbol.erase(model_.currentSymbol());
    }
    apply(changed);
    for (const Setting* one : row->parts) forgive(one->name);
}

void SettingsEditor::apply(const GexConfig& changed) {
    if (changed == model_.config.get()) return;
    unsaved_ = inGesture_;
    setSettings(model_, changed, inGesture_ ? AppModel::Saving::later : AppModel::Saving::now);
}

void SettingsEditor::endGesture() {
    inGesture_ = false;
    if (std::exchange(unsaved_, false)) model_.saveConfig();
}

void SettingsEditor::forgive(std::string_view name) {
    const auto found = invalid_.find(name);
    if (found == invalid_.end()) return;
    invalid_.erase(found);
    tell();
}

void SettingsEditor::forgiveAll() {
    invalid_.clear();
    tell();
}

void SettingsEditor::tell() {
    if (auto& shown = model_.panels.settings) shown->invalid.assign(invalid_.begin(), invalid_.end());
}

void SettingsEditor::show(double width, std::string_view search) {
    SettingsShown shown{std::string(search), {}, {}};
    for (const auto& blocks : settingsColumns(width, search)) {
        auto& column = shown.columns.emplace_back();
        for (const SettingsBlock& block : blocks) {
            auto& section = column.emplace_back();
            section.title = sectionTitle(block.section);
            for (const SettingsRow* row : block.rows) section.rows.emplace_back(row->id);
        }
    }
    model_.panels.settings = std::move(shown);
    tell();
}

void SettingsEditor::close() {
    endGesture();
    invalid_.clear();
    model_.panels.settings.reset();
}

void setSettings(AppModel& pane, const GexConfig& changed, AppModel::Saving saving) {
    const bool otherSource = pane.config->gexSource != changed.gexSource;
    pane.setConfig(changed, saving);
    if (otherSource) pane.showGexSource();
}

void resetSettings(AppModel& pane) {
    ConfigIO::reset(pane.preferences());
    setSettings(pane, GexConfig(), AppModel::Saving::now);
}

void applyToAllPanes(PaneHost& panes, const AppModel& from) {
    for (const int number : panes.numbers())
        if (AppModel* pane = panes.find(number); pane != &from) setSettings(*pane, from.config, AppModel::Saving::now);
}

}  // namespace vmr
