// The one list of the settings: what reading, writing, setting by name and the settings panel know about each.
#pragma once

#include <limits>
#include <span>
#include <string_view>
#include <variant>

#include "store/GexConfig.h"

namespace vmr {

enum class SettingKind { boolean, number, integer, choice, color, map };

/// What a person changes a setting with.
enum class SettingControl { none, toggle, slider, logSlider, stepper, menu, field, color };

/// How a number is written.
enum class SettingUnit { none, percent, time };

/// The sections of the settings panel, in order; the last has buttons only.
enum class SettingSection { overlays, style, session, vix, hf, ema, gexDex, oscillator, simulator, tools };

/// Heading of a section.
std::string_view sectionTitle(SettingSection section);

/// What must be made anew when a setting changes, as bits. Nothing: whoever reads it hears of the change of the record.
namespace SettingEffect {
inline constexpr unsigned none = 0;
inline constexpr unsigned look = 1 << 0;           ///< how the chart draws bars, strikes and markers
inline constexpr unsigned overlayStyle = 1 << 1;   ///< colours and opacities of the analytic series, which lines show
inline constexpr unsigned overlaySeries = 1 << 2;  ///< the analytic series themselves
inline constexpr unsigned sessionLines = 1 << 3;   ///< the sessions that lines and series start from
inline constexpr unsigned oscillator = 1 << 4;     ///< the oscillator pane
inline constexpr unsigned hfSampling = 1 << 5;     ///< the timer of the HF pressure samples
inline constexpr unsigned vixChannel = 1 << 6;     ///< the channel of the VIX line: the chart is opened anew
inline constexpr unsigned commission = 1 << 7;     ///< the simulator's
}  // namespace SettingEffect

/// One of the values of a choice, as stored and as shown.
struct SettingChoice {
    std::string_view value, label;
};

/// A closed range; without limits by default.
struct SettingRange {
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
};

/// One field of `GexConfig`. Its default is that of the record.
struct Setting {
    using Field = std::variant<bool GexConfig::*, double GexConfig::*, std::int64_t GexConfig::*,
                               std::string GexConfig::*, std::map<std::string, double> GexConfig::*>;

    std::string_view name;   ///< also the key of the stored JSON
    std::string_view label;  ///< in the panel; settings of one label that follow each other share a row
    Field field;
    SettingKind kind;
    SettingSection section;
    SettingControl control = SettingControl::none;  ///< none: not in the panel under its own name
    unsigned effects = SettingEffect::none;
    std::string_view part = {};  ///< what it is of a row that it shares
    SettingRange stored = {};    ///< reading and setting keep a number within these
    SettingRange offered = {};   ///< what the panel lets a person choose from
    double step = 0;             ///< of the panel's control; of a logarithmic one in its second digit
    SettingUnit unit = SettingUnit::none;
    std::span<const SettingChoice> choices = {};  ///< of a menu; any other stored value is left as it is
    std::span<const double> formerDefaults = {};  ///< numbers that count as the default of today
};

/// All settings, section by section, each section in the order of its rows.
std::span<const Setting> settingTable();

/// Null for an unknown name.
const Setting* findSetting(std::string_view name);

/// The effects of all settings in which the two differ.
unsigned changedEffects(const GexConfig& before, const GexConfig& after);

/// Keeps each number within what may be stored.
void applyLimits(GexConfig& config);

}  // namespace vmr
