#include "store/WorkspaceRecord.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace vmr {

namespace {
using nlohmann::ordered_json;

ordered_json recordOf(const PaneState& pane) {
    return {{"symbol", pane.symbol}, {"timeframe", pane.timeframe}, {"gexSource", pane.gexSource}};
}

// Each throws where a key is missing or of another type.
PaneState paneOf(const ordered_json& json) {
    // a timeframe of 1.5 or 1e300 is no minute count, though the library would convert it
    if (!json.at("timeframe").is_number_integer()) throw std::invalid_argument("timeframe");
    return {json.at("symbol").get<std::string>(), json.at("timeframe").get<std::int64_t>(),
            json.at("gexSource").get<std::string>()};
}

WindowRecord windowOf(const ordered_json& json) {
    WindowRecord record;
    for (const ordered_json& number : json.at("frame")) {
        if (!number.is_number()) throw std::invalid_argument("frame");
        record.frame.push_back(number.get<double>());
    }
    if (!json.at("frame").is_array()) throw std::invalid_argument("frame");
    const auto there = [&json](const char* key) { return json.contains(key) && !json.at(key).is_null(); };
    if (there("split")) {
        if (!json.at("split").is_number()) throw std::invalid_argument("split");
        record.split = json.at("split").get<double>();
    }
    record.primary = paneOf(json.at("primary"));
    if (there("dual")) record.dual = paneOf(json.at("dual"));
    return record;
}
}  // namespace

std::optional<std::string> workspaceText(const std::vector<WindowRecord>& records) {
    ordered_json out = ordered_json::array();
    for (const WindowRecord& record : records) {
        for (const double number : record.frame)
            if (!std::isfinite(number)) return std::nullopt;
        if (record.split && !std::isfinite(*record.split)) return std::nullopt;
        ordered_json window{{"frame", record.frame}};
        if (record.split) window["split"] = *record.split;
        window["primary"] = recordOf(record.primary);
        if (record.dual) window["dual"] = recordOf(*record.dual);
        out.push_back(std::move(window));
    }
    return out.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

std::optional<std::vector<WindowRecord>> parseWorkspace(std::string_view text) {
    try {
        const ordered_json json = ordered_json::parse(text);
        if (!json.is_array()) return std::nullopt;
        std::vector<WindowRecord> records;
        for (const ordered_json& window : json) records.push_back(windowOf(window));
        return records;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace vmr
