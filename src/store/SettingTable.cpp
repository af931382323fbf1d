#include "store/SettingTable.h"

#include <algorithm>
#include <array>

namespace vmr {

namespace {
using G = GexConfig;
using S = SettingSection;
namespace E = SettingEffect;
using K = SettingKind;
using C = SettingControl;
using Name = std::string_view;

constexpr Setting toggle(S section, Name name, bool G::*field, Name label, unsigned effects = E::none) {
    return {name, label, field, K::boolean, section, C::toggle, effects};
}

constexpr Setting number(C control, S section, Name name, double G::*field, Name label, SettingRange offered,
                         double step, unsigned effects = E::none) {
    return {name, label, field, K::number, section, control, effects, {}, {}, offered, step};
}

constexpr Setting percent(S section, Name name, double G::*field, Name label, unsigned effects, double least = 0) {
    Setting setting = number(C::slider, section, name, field, label, {least, 100}, 1, effects);
    setting.unit = SettingUnit::percent;
    return setting;
}

constexpr Setting integer(C control, S section, Name name, std::int64_t G::*field, Name label, SettingRange offered,
                          unsigned effects) {
    return {name, label, field, K::integer, section, control, effects, {}, {}, offered, 1};
}

constexpr Setting choice(S section, Name name, std::string G::*field, Name label,
                         std::span<const SettingChoice> choices, unsigned effects = E::none) {
    return {name, label, field, K::choice, section, C::menu, effects, {}, {}, {}, 0, {}, choices};
}

constexpr Setting color(S section, Name name, std::string G::*field, Name label, unsigned effects) {
    return {name, label, field, K::color, section, C::color, effects};
}

constexpr Setting scales(S section, Name name, std::map<std::string, double> G::*field, unsigned effects) {
    return {name, "", field, K::map, section, C::none, effects};
}

constexpr Setting limited(SettingRange stored, Setting setting) {
    setting.stored = stored;
    return setting;
}

constexpr Setting renewed(std::span<const double> formerDefaults, Setting setting) {
    setting.formerDefaults = formerDefaults;
    return setting;
}

constexpr Setting offering(std::span<const SettingChoice> choices, Setting setting) {
    setting.choices = choices;
    return setting;
}

constexpr Setting asTime(Setting setting) {
    setting.unit = SettingUnit::time;
    return setting;
}

constexpr Setting part(Name part, Setting setting) {
    setting.part = part;
    return setting;
}

constexpr std::array themes{SettingChoice{"mono", "Mono"}, SettingChoice{"classic", "Classic"}};
constexpr std::array vixModes{SettingChoice{"30d", "30 days"}, SettingChoice{"1d", "1 day"}};
constexpr std::array waveModes{SettingChoice{"separated", "Separated"}, SettingChoice{"net", "Net"}};
constexpr std::array gexSources{SettingChoice{"INDEX", "Index"}, SettingChoice{"ETF", "ETF"},
                                SettingChoice{"BOTH", "ETF + Index"}};
constexpr std::array candleCounts{SettingChoice{"30", "30"},   SettingChoice{"60", "60"},
                                  SettingChoice{"100", "100"}, SettingChoice{"200", "200"},
                                  SettingChoice{"300", "300"}, SettingChoice{"500", "500"},
                                  SettingChoice{"750", "750"}, SettingChoice{"1000", "1000"}};
constexpr std::array formerInitialCandles{150.0, 135.0};

// clang-format off
constexpr std::array table{
    toggle(S::overlays, "oiEnabled", &G::oiEnabled, "OI Waveform", E::look),
    percent(S::overlays, "oiOpacity", &G::oiOpacity, "OI Opacity", E::look),
    toggle(S::overlays, "wallsEnabled", &G::wallsEnabled, "Walls", E::look),
    toggle(S::overlays, "sessionEnabled", &G::sessionEnabled, "Session", E::overlayStyle),
    toggle(S::overlays, "levelsEnabled", &G::levelsEnabled, "Levels S/R", E::overlayStyle),
    toggle(S::overlays, "vwapEnabled", &G::vwapEnabled, "VWAP Globex", E::overlaySeries),
    toggle(S::overlays, "vwapNyEnabled", &G::vwapNyEnabled, "VWAP NY", E::overlaySeries),
    toggle(S::overlays, "lineRates", &G::lineRates, "Line Rates"),
    toggle(S::overlays, "showSecondary", &G::showSecondary, "2nd Symbol", E::overlaySeries),

    choice(S::style, "candleTheme", &G::candleTheme, "Candles", themes, E::look),
    renewed(formerInitialCandles, limited({30, 1000},
        offering(candleCounts, integer(C::menu, S::style, "initialCandles", &G::initialCandles, "Initial Candles",
            {30, 1000}, E::look)))),
    percent(S::style, "lineOpacity", &G::lineOpacity, "Lines Opacity", E::overlayStyle, 20),

    asTime(integer(C::field, S::session, "sessionStart", &G::sessionStart, "Start Time", {0, 2359},
        E::sessionLines | E::overlaySeries)),
    toggle(S::session, "showOpen", &G::showOpen, "Show Open", E::overlayStyle),
    toggle(S::session, "showPrev", &G::showPrev, "Show Prev", E::overlayStyle),
    toggle(S::session, "showNyClock", &G::showNyClock, "NY Clock"),
    toggle(S::session, "showCountdown", &G::showCountdown, "Countdown"),

    toggle(S::vix, "vixEnabled", &G::vixEnabled, "VIX Line", E::overlaySeries),
    choice(S::vix, "vixMode", &G::vixMode, "Source", vixModes, E::vixChannel),
    number(C::slider, S::vix, "vixScale", &G::vixScale, "Scale", {0.01, 1}, 0.01, E::overlaySeries),
    integer(C::stepper, S::vix, "vixSmooth", &G::vixSmooth, "Smooth", {1, 60}, E::overlaySeries),

    toggle(S::hf, "hfEnabled", &G::hfEnabled, "HF Line", E::overlaySeries),
    number(C::logSlider, S::hf, "hfScale", &G::hfScale, "HF Scale", {0.01, 1000}, 0.1, E::overlaySeries),
    scales(S::hf, "hfScaleBySymbol", &G::hfScaleBySymbol, E::overlaySeries),
    percent(S::hf, "hfLineOpacity", &G::hfLineOpacity, "Opacity", E::overlayStyle),
    toggle(S::hf, "hfPressure", &G::hfPressure, "HF Pressure Panel", E::hfSampling),
    toggle(S::hf, "hfLateralEnabled", &G::hfLateralEnabled, "HF Waveform", E::look),
    percent(S::hf, "hfLateralOpacity", &G::hfLateralOpacity, "HF Opacity", E::look),
    choice(S::hf, "hfLateralMode", &G::hfLateralMode, "Wave Mode", waveModes, E::look),
    toggle(S::hf, "hfBubbles", &G::hfBubbles, "HF Dominance", E::look),
    part("Call", color(S::hf, "hfCallColor", &G::hfCallColor, "HF Dom Colors", E::look)),
    part("Put", color(S::hf, "hfPutColor", &G::hfPutColor, "HF Dom Colors", E::look)),
    percent(S::hf, "hfTriangleOpacity", &G::hfTriangleOpacity, "HF Dom Opacity", E::look),

    toggle(S::ema, "ema1Enabled", &G::ema1Enabled, "EMA 1", E::overlaySeries),
    part("Period", integer(C::stepper, S::ema, "ema1Period", &G::ema1Period, "EMA 1", {1, 400}, E::overlaySeries)),
    part("Color", color(S::ema, "ema1Color", &G::ema1Color, "EMA 1", E::overlayStyle)),
    toggle(S::ema, "ema2Enabled", &G::ema2Enabled, "EMA 2", E::overlaySeries),
    part("Period", integer(C::stepper, S::ema, "ema2Period", &G::ema2Period, "EMA 2", {1, 400}, E::overlaySeries)),
    part("Color", color(S::ema, "ema2Color", &G::ema2Color, "EMA 2", E::overlayStyle)),

    toggle(S::gexDex, "gexEnabled", &G::gexEnabled, "GEX Bars", E::look),
    choice(S::gexDex, "gexSource", &G::gexSource, "Source", gexSources),
    toggle(S::gexDex, "gexLabels", &G::gexLabels, "GEX Labels", E::look),
    percent(S::gexDex, "gexOpacity", &G::gexOpacity, "GEX/DEX Opacity", E::look),
    toggle(S::gexDex, "gexBubbles", &G::gexBubbles, "GEX Dominance", E::look),
    part("Positive", color(S::gexDex, "gexPosColor", &G::gexPosColor, "GEX Dom Colors", E::look)),
    part("Negative", color(S::gexDex, "gexNegColor", &G::gexNegColor, "GEX Dom Colors", E::look)),
    percent(S::gexDex, "gexBubbleOpacity", &G::gexBubbleOpacity, "GEX Dom Opacity", E::look),
    toggle(S::gexDex, "dexEnabled", &G::dexEnabled, "DEX Bars", E::look),
    toggle(S::gexDex, "dexLabels", &G::dexLabels, "DEX Labels", E::look),

    toggle(S::oscillator, "oscEnabled", &G::oscEnabled, "Enable", E::oscillator),
    limited({100, 400},
        number(C::slider, S::oscillator, "oscHeight", &G::oscHeight, "Height", {100, 400}, 1, E::oscillator)),
    toggle(S::oscillator, "oscNq", &G::oscNq, "NQ Line", E::oscillator),
    toggle(S::oscillator, "oscEs", &G::oscEs, "ES Line", E::oscillator),
    toggle(S::oscillator, "oscVix", &G::oscVix, "VIX Line", E::oscillator),
    toggle(S::oscillator, "oscCall", &G::oscCall, "CALL Line", E::oscillator),
    toggle(S::oscillator, "oscPut", &G::oscPut, "PUT Line", E::oscillator),
    toggle(S::oscillator, "oscNet", &G::oscNet, "NET Line", E::oscillator),

    toggle(S::simulator, "simEnabled", &G::simEnabled, "Enable Simulator"),
    limited({.least = 1000},
        number(C::field, S::simulator, "simBalance", &G::simBalance, "Start Balance $", {1000, 10000000}, 1000)),
    limited({0, 50},
        number(C::field, S::simulator, "simCommission", &G::simCommission, "Commission/side $", {0, 50}, 0.05,
            E::commission)),
};
// clang-format on

constexpr std::array<std::string_view, 10> titles{
    "Overlays", "Style", "Session", "VIX", "HF", "EMA", "GEX and DEX Bars", "Oscillator", "Trade Simulator", "Tools"};

template <class Number>
void limit(const Setting& setting, Number& value, const Number& standard) {
    for (const double former : setting.formerDefaults)
        if (static_cast<double>(value) == former) value = standard;
    if (static_cast<double>(value) < setting.stored.least) value = static_cast<Number>(setting.stored.least);
    if (static_cast<double>(value) > setting.stored.most) value = static_cast<Number>(setting.stored.most);
}
}  // namespace

std::string_view sectionTitle(SettingSection section) { return titles[static_cast<std::size_t>(section)]; }

std::span<const Setting> settingTable() { return table; }

const Setting* findSetting(std::string_view name) {
    const auto found =
        std::find_if(table.begin(), table.end(), [name](const Setting& one) { return one.name == name; });
    return found == table.end() ? nullptr : found;
}

unsigned changedEffects(const GexConfig& before, const GexConfig& after) {
    unsigned effects = SettingEffect::none;
    for (const Setting& one : table)
        std::visit(
            [&](auto field) {
                if (before.*field != after.*field) effects |= one.effects;
            },
            one.field);
    return effects;
}

void applyLimits(GexConfig& config) {
    static const GexConfig defaults;
    for (const Setting& one : table) {
        if (const auto* field = std::get_if<double GexConfig::*>(&one.field))
            limit(one, config.**field, defaults.**field);
        if (const auto* field = std::get_if<std::int64_t GexConfig::*>(&one.field))
            limit(one, config.**field, defaults.**field);
    }
}

}  // namespace vmr
