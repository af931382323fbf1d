#include "store/GexConfig.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "store/GexConfigFields.h"

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

void applyLimits(GexConfig& c) {
    if (c.initialCandles == 150 || c.initialCandles == 135) c.initialCandles = 200;
    c.initialCandles = std::clamp<std::int64_t>(c.initialCandles, 30, 1000);
    c.simBalance = std::max(c.simBalance, 1000.0);
    c.simCommission = std::clamp(c.simCommission, 0.0, 50.0);
    c.oscHeight = std::clamp(c.oscHeight, 100.0, 400.0);
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
    const json stored = json::parse(text, nullptr, false);
    if (!stored.is_object()) return std::nullopt;
    GexConfig config;
    visitFields(config, [&stored](const char* name, auto& field) {
        if (const auto found = stored.find(name); found != stored.end()) read(*found, field);
    });
    applyLimits(config);
    return config;
}

std::string GexConfig::toJson() const {
    json out = json::object();
    visitFields(*this, [&out](const char* name, const auto& field) { out[name] = field; });
    return out.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::optional<std::string> GexConfig::set(std::string_view key, std::string_view jsonValue) {
    const json value = json::parse(jsonValue, nullptr, false);
    if (value.is_discarded()) return "the value is not JSON: " + std::string(jsonValue);
    GexConfig changed = *this;
    bool known = false;
    bool typed = false;
    visitFields(changed, [&](const char* name, auto& field) {
        if (key != name) return;
        known = true;
        typed = read(value, field);
    });
    if (!known) return "there is no setting " + std::string(key);
    if (!typed) return "wrong type for " + std::string(key) + ": " + std::string(jsonValue);
    applyLimits(changed);
    *this = std::move(changed);
    return std::nullopt;
}

}  // namespace vmr
