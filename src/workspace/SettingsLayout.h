// What the settings panel shows and where: its columns, sections and rows, and how numbers are written and typed. No
// toolkit.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "store/SettingTable.h"

namespace vmr {

/// The sections side by side in a panel of that width: each column from its top.
std::vector<std::vector<SettingSection>> pack(double width);

/// One line of the panel: settings that share a label, or a button.
struct SettingsRow {
    std::string_view id;  ///< the name of its first setting, or of what its button does
    std::string_view label;
    SettingSection section;
    std::vector<const Setting*> parts;  ///< none: a button
};

/// All rows, section by section.
std::span<const SettingsRow> settingsRows();

/// "Confirm unusual orders" of the simulator: a preference of its own, beside the record of the settings, which has no
/// field for it.
const Setting& confirmUnusualSetting();

/// Of the table, or the one above; null for an unknown name.
const Setting* findPanelSetting(std::string_view name);

/// Null where there is none.
const SettingsRow* findSettingsRow(std::string_view id);

/// The id of the action that does what the row does, whose key its label shows; empty for none.
std::string_view actionOf(const SettingsRow& row);

/// A section with those of its rows that are shown.
struct SettingsBlock {
    SettingSection section;
    std::vector<const SettingsRow*> rows;
};

/// The columns of `pack` with the rows that match `search`: each of its words, in any case, stands in the row's label
/// or in its section's heading. Sections and columns without any are left out.
std::vector<std::vector<SettingsBlock>> settingsColumns(double width, std::string_view search);

/// A number as a person reads it: "62 %", "18:00".
std::string settingText(const Setting& setting, double value);

/// What a person typed: nothing for text that is no number of the setting's kind, or one beyond what is offered.
std::optional<double> typedSetting(const Setting& setting, std::string_view text);

/// What `typedSetting` takes: "0 % to 100 %", "a time such as 18:00".
std::string settingRangeText(const Setting& setting);

/// The nearest number that the setting's control can stand at.
double offeredNumber(const Setting& setting, double value);

/// The number that is `steps` of the setting's control further.
double steppedNumber(const Setting& setting, double value, int steps);

/// Whether `hhmm` is a time of the day.
bool isTimeOfDay(double hhmm);

}  // namespace vmr
