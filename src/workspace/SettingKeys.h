// Which key does what a row of the settings panel does.
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace vmr {

/// The key's text; empty for none.
inline std::string settingKey(std::string_view row) {
    constexpr std::pair<std::string_view, std::string_view> keys[] = {
        {"oiEnabled", "O"},        {"wallsEnabled", "L"}, {"sessionEnabled", "L"},    {"levelsEnabled", "L"},
        {"vwapEnabled", "V"},      {"vixEnabled", "I"},   {"hfEnabled", "F"},         {"hfPressure", "P"},
        {"hfLateralEnabled", "W"}, {"hfBubbles", "H"},    {"gexEnabled", "X"},        {"gexBubbles", "G"},
        {"dexEnabled", "D"},       {"simEnabled", "$"},   {"templatesPanelOpen", "T"}};
    for (const auto& [name, key] : keys)
        if (name == row) return std::string(key);
    return {};
}

}  // namespace vmr
