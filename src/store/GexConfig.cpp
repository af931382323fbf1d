#include "store/GexConfig.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "base/JsonRepair.h"
#include "store/SettingTable.h"

namespace vmr {

using nlohmann::json;

namespace {
const std::map<std::string, double>& hfScaleDefaults() {
    static const std::map<std::string, double> scales{
        {"NQ", 5.0},   {"ES", 0.5},   {"RTY", 1.0},   {"YM", 1.0},   {"GC", 50.0},  {"CL", 1.0},  {"AAPL", 0.2},
        {"NVDA", 0.1}, {"MSFT", 1.0}, {"GOOGL", 1.0}, {"AMZN", 0.2}, {"META", 0.5}, {"TSLA", 0.4}};
    return scales;
}

// Each gives false on the wrong type and then leaves the field alone.
bool read(const json& value, std::string& field) {
    if (!value.is_string()) return false;
    field = value.get<std::string>();
    return true;
}
bool read(const json& value, bool& field) {
    if (!value.is_boolean()) return false;
    field = value.get<bool>();
    return true;
}
bool read(const json& value, double& field) {
    if (!value.is_number()) return false;
    field = value.get<double>();
    return true;
}
bool read(const json& value, std::int64_t& field) {
    if (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX)) return false;
    if (value.is_number_integer()) {
        field = value.get<std::int64_t>();
        return true;
    }
    if (!value.is_number_float()) return false;
    const double number = value.get<double>();  // 200.0 is an integer, 200.5 is not
    if (std::trunc(number) != number || !(std::abs(number) < 9007199254740992.0)) return false;
    field = static_cast<std::int64_t>(number);
    return true;
}
bool read(const json& value, std::map<std::string, double>& field) {
    if (!value.is_object()) return false;
    std::map<std::string, double> out;
    for (const auto& [key, number] : value.items()) {
        if (!number.is_number()) return false;
        out[key] = number.get<double>();
    }
    field = std::move(out);
    return true;
}

// The field `setting` of `config`, as itself, to `visit`.
template <class Config, class Visit>
void visitField(const Setting& setting, Config& config, Visit&& visit) {
    std::visit([&](auto field) { visit(config.*field); }, setting.field);
}
}  // namespace

double GexConfig::hfScaleDefault(const std::string& symbol) {
    const auto& defaults = hfScaleDefaults();
    const auto builtIn = defaults.find(symbol);
    return builtIn == defaults.end() ? 1.0 : builtIn->second;
}

double GexConfig::hfScaleFor(const std::string& symbol) const {
    const auto own = hfScaleBySymbol.find(symbol);
    return own != hfScaleBySymbol.end() ? own->second : hfScaleDefault(symbol);
}

std::optional<GexConfig> GexConfig::fromJson(std::string_view text) {
    // an odd number or half a character costs its own field, not the record
    const json stored = json::parse(repairedJson(text).value_or(std::string(text)), nullptr, false);
    if (!stored.is_object()) return std::nullopt;
    GexConfig config;
    for (const Setting& one : settingTable())
        if (const auto found = stored.find(one.name); found != stored.end())
            visitField(one, config, [&found](auto& field) { read(*found, field); });
    applyLimits(config);
    return config;
}

std::string GexConfig::toJson() const {
    json out = json::object();
    for (const Setting& one : settingTable())
        visitField(one, *this, [&](const auto& field) { out[std::string(one.name)] = field; });
    return out.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::optional<std::string> GexConfig::set(std::string_view key, std::string_view jsonValue) {
    const json value = json::parse(jsonValue, nullptr, false);
    if (value.is_discarded()) return "the value is not JSON: " + std::string(jsonValue);
    const Setting* setting = findSetting(key);
    if (!setting) return "there is no setting " + std::string(key);
    GexConfig changed = *this;
    bool typed = false;
    visitField(*setting, changed, [&](auto& field) { typed = read(value, field); });
    if (!typed) return "wrong type for " + std::string(key) + ": " + std::string(jsonValue);
    applyLimits(changed);
    *this = std::move(changed);
    return std::nullopt;
}

}  // namespace vmr
