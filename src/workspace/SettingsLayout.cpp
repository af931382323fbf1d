#include "workspace/SettingsLayout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include "base/NumberText.h"

namespace vmr {

namespace {
using S = SettingSection;

constexpr double columnWidth = 300;
constexpr int mostColumns = 4;
constexpr std::array<double, 10> estimatedHeights{266, 98, 170, 146, 290, 98, 314, 242, 170, 140};

S sectionAt(std::size_t index) { return static_cast<S>(index); }

std::vector<SettingsRow> makeRows() {
    std::vector<SettingsRow> rows;
    for (const Setting& one : settingTable()) {
        if (one.control == SettingControl::none) continue;
        if (rows.empty() || rows.back().section != one.section || rows.back().label != one.label)
            rows.push_back({one.name, one.label, one.section, {}});
        rows.back().parts.push_back(&one);
    }
    const Setting& confirm = confirmUnusualSetting();
    rows.push_back({confirm.name, confirm.label, confirm.section, {&confirm}});
    for (const auto& [id, label, section] : {std::tuple("resetAccount", "Reset Account", S::simulator),
                                             {"templatesPanelOpen", "Templates", S::tools},
                                             {"export", "Export…", S::tools},
                                             {"import", "Import…", S::tools},
                                             {"reset", "Reset", S::tools},
                                             {"logout", "Logout", S::tools}})
        rows.push_back({id, label, section, {}});
    return rows;
}

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& letter : out)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return out;
}

bool isBlank(char letter) { return letter == ' ' || letter == '\t'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::vector<std::string> wordsOf(std::string_view search) {
    std::vector<std::string> words;
    std::string word;
    for (const char letter : lower(search) + ' ') {
        if (!isBlank(letter))
            word += letter;
        else if (!word.empty())
            words.push_back(std::exchange(word, {}));
    }
    return words;
}

bool matches(const SettingsRow& row, const std::vector<std::string>& words) {
    const std::string label = lower(row.label), heading = lower(sectionTitle(row.section));
    return std::all_of(words.begin(), words.end(), [&](const std::string& word) {
        return label.find(word) != std::string::npos || heading.find(word) != std::string::npos;
    });
}

// "18:00", "9:30", "1800" and "930"
std::optional<double> typedTime(std::string_view text) {
    std::string digits(text);
    if (const auto colon = digits.find(':'); colon != std::string::npos) {
        if (colon == 0 || digits.size() - colon != 3) return std::nullopt;
        digits.erase(colon, 1);
    }
    const bool plain = std::all_of(digits.begin(), digits.end(), [](char one) { return one >= '0' && one <= '9'; });
    if (!plain || digits.size() < 3 || digits.size() > 4) return std::nullopt;
    return static_cast<double>(*parseInt(digits));
}

// Of a logarithmic control, which has two digits: 0.1 for the numbers from 1 to 9.9.
double secondDigit(double value, double step) { return step * std::pow(10.0, std::floor(std::log10(value) + 1e-9)); }

// A multiple of the step, as the decimal that it is written as.
double onGrid(double value, double step) {
    if (step >= 1) return std::round(value / step) * step;
    const double perOne = std::round(1 / step);
    return std::round(value * perOne) / perOne;
}

double within(const SettingRange& range, double value) { return std::clamp(value, range.least, range.most); }
}  // namespace

std::vector<std::vector<S>> pack(double width) {
    const double fitting = std::isfinite(width) ? std::trunc(width / columnWidth) : 0;
    const int columns = static_cast<int>(std::clamp(fitting, 1.0, double(mostColumns)));
    const double target = std::accumulate(estimatedHeights.begin(), estimatedHeights.end(), 0.0) / columns;
    std::vector<std::vector<S>> out(1);
    double used = 0;
    for (std::size_t i = 0; i < estimatedHeights.size(); ++i) {
        const double height = estimatedHeights[i];
        if (!out.back().empty() && std::ssize(out) < columns && used + height / 2 > target) {
            out.emplace_back();
            used = 0;
        }
        out.back().push_back(sectionAt(i));
        used += height;
    }
    return out;
}

const Setting& confirmUnusualSetting() {
    static const Setting setting{.name = "confirmUnusualOrders",
                                 .label = "Confirm unusual orders",
                                 .field = static_cast<bool GexConfig::*>(nullptr),
                                 .kind = SettingKind::boolean,
                                 .section = S::simulator,
                                 .control = SettingControl::toggle};
    return setting;
}

const Setting* findPanelSetting(std::string_view name) {
    return name == confirmUnusualSetting().name ? &confirmUnusualSetting() : findSetting(name);
}

std::span<const SettingsRow> settingsRows() {
    static const std::vector<SettingsRow> rows = makeRows();
    return rows;
}

const SettingsRow* findSettingsRow(std::string_view id) {
    const auto rows = settingsRows();
    const auto found = std::find_if(rows.begin(), rows.end(), [id](const SettingsRow& row) { return row.id == id; });
    return found == rows.end() ? nullptr : &*found;
}

std::string_view actionOf(const SettingsRow& row) {
    if (row.id == "templatesPanelOpen") return "templates";
    if (row.parts.empty() || row.parts.front()->kind != SettingKind::boolean) return {};
    if (row.id == confirmUnusualSetting().name) return {};
    const bool line = row.id == "wallsEnabled" || row.id == "sessionEnabled" || row.id == "levelsEnabled";
    return line ? "lines" : row.id;
}

std::vector<std::vector<SettingsBlock>> settingsColumns(double width, std::string_view search) {
    const auto words = wordsOf(search);
    std::vector<std::vector<SettingsBlock>> out;
    for (const auto& sections : pack(width)) {
        std::vector<SettingsBlock> column;
        for (const S section : sections) {
            SettingsBlock block{section, {}};
            for (const SettingsRow& row : settingsRows())
                if (row.section == section && matches(row, words)) block.rows.push_back(&row);
            if (!block.rows.empty()) column.push_back(std::move(block));
        }
        if (!column.empty()) out.push_back(std::move(column));
    }
    return out;
}

bool isTimeOfDay(double hhmm) {
    return hhmm >= 0 && hhmm < 2400 && std::trunc(hhmm) == hhmm && std::fmod(hhmm, 100) < 60;
}

std::string settingText(const Setting& setting, double value) {
    if (setting.unit == SettingUnit::time && isTimeOfDay(value)) {
        const std::string digits = std::to_string(10000 + static_cast<int>(value));
        return digits.substr(1, 2) + ":" + digits.substr(3);
    }
    return doubleText(value) + (setting.unit == SettingUnit::percent ? " %" : "");
}

std::optional<double> typedSetting(const Setting& setting, std::string_view text) {
    text = trimmed(text);
    if (setting.unit == SettingUnit::time) {
        const auto time = typedTime(text);
        return time && isTimeOfDay(*time) ? time : std::nullopt;
    }
    if (setting.unit == SettingUnit::percent && text.ends_with('%')) text = trimmed(text.substr(0, text.size() - 1));
    const auto value = parseDouble(text);
    if (!value || !std::isfinite(*value)) return std::nullopt;
    if (setting.kind == SettingKind::integer && std::trunc(*value) != *value) return std::nullopt;
    return *value >= setting.offered.least && *value <= setting.offered.most ? value : std::nullopt;
}

std::string settingRangeText(const Setting& setting) {
    if (setting.unit == SettingUnit::time) return "a time such as 18:00";
    return settingText(setting, setting.offered.least) + " to " + settingText(setting, setting.offered.most);
}

double offeredNumber(const Setting& setting, double value) {
    if (std::isnan(value)) return setting.offered.least;
    value = within(setting.offered, value);
    if (setting.unit == SettingUnit::time) return isTimeOfDay(value) ? value : 0;
    const bool logarithmic = setting.control == SettingControl::logSlider;
    return within(setting.offered, onGrid(value, logarithmic ? secondDigit(value, setting.step) : setting.step));
}

double steppedNumber(const Setting& setting, double value, int steps) {
    if (setting.control != SettingControl::logSlider) return offeredNumber(setting, value + steps * setting.step);
    const int by = steps < 0 ? -1 : 1;
    for (int i = 0; i != steps; i += by) {
        value = within(setting.offered, value);
        // down from 10 it goes by the steps below 10
        const double digit = secondDigit(by < 0 ? value * (1 - 1e-6) : value, setting.step);
        value = within(setting.offered, onGrid(value + by * digit, digit));
    }
    return value;
}

}  // namespace vmr
