#include "relay/CloudDesk.h"

#include <nlohmann/json.hpp>

#include "base/CommandTable.h"
#include "base/Json.h"
#include "base/NumberText.h"

namespace vmr::relay {

namespace {
using nlohmann::json;

constexpr std::string_view alerts = "/v1/projects/velmora-cloud-1a000/databases/(default)/documents/system_alerts/";
constexpr std::string_view bearer = "Bearer ";

json typed(const std::string& text) { return {{"stringValue", text}}; }

std::string dump(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }
}  // namespace

std::optional<RestReply> CloudDesk::answer(const RestRequest& request, std::string_view path) {
    const bool reporting = path == "/updatePresence";
    const bool asksRelease = path == "/downloads/version.json";
    if (!reporting && !asksRelease && !path.starts_with(alerts)) return std::nullopt;
    if (request.method != (reporting ? "POST" : "GET")) return fault(405, "Method not allowed");
    if (asksRelease) {
        if (!release_) return fault(404, "Not found");
        return RestReply{200,
                         dump({{"build", release_->build}, {"version", release_->version}, {"url", release_->url}})};
    }
    const std::string& said = request.authorization;
    if (!said.starts_with(bearer) || !accounts_.accepts(said.substr(bearer.size())))
        return fault(401, "Request had invalid authentication credentials.");
    return reporting ? takeReport(request.body) : document(path.substr(alerts.size()));
}

RestReply CloudDesk::takeReport(const std::string& text) {
    const auto body = Json::parse(text);
    if (!body || !body->isObject()) return fault(400, "Invalid JSON payload received.");
    const auto member = [&body](const char* key) { return std::string((*body)[key].string()); };
    const std::string tab = member("tabId"), action = member("action");
    if (tab.empty()) return fault(400, "MISSING_TAB_ID");
    if (action != "online" && action != "heartbeat" && action != "offline") return fault(400, "INVALID_ACTION");
    if (!reports_.contains(tab) && reports_.size() >= mostReports) return fault(429, "RESOURCE_EXHAUSTED");
    Report& report = reports_[tab];
    report = {member("symbol"), member("gexSource"), action, member("page"), report.count + 1};
    return {200, R"({"ok":true})"};
}

RestReply CloudDesk::document(std::string_view name) const {
    json fields;
    if (name == "default" && notice_) {
        fields = {{"active", {{"booleanValue", true}}},
                  {"id", typed(notice_->id)},
                  {"title", typed(notice_->title)},
                  {"message", typed(notice_->message)}};
    } else if (name == "maintenance" && maintenance_) {
        fields = {{"active", {{"booleanValue", true}}}, {"message", typed(*maintenance_)}};
    } else {
        return fault(404, "Document \"" + std::string(alerts.substr(4)) + std::string(name) + "\" not found.");
    }
    return {200, dump({{"name", std::string(alerts.substr(4)) + std::string(name)}, {"fields", fields}})};
}

std::string CloudDesk::presence() const {
    std::string out = "ok " + std::to_string(reports_.size()) + (reports_.size() == 1 ? " pane" : " panes");
    for (const auto& [tab, report] : reports_)
        out += "; " + tab + " " + report.action + " " + report.symbol + " " + report.gexSource + " " + report.page +
               " (" + std::to_string(report.count) + ")";
    return out;
}

std::string CloudDesk::notice(std::string_view text) {
    if (text == "off") {
        notice_.reset();
        return "ok off";
    }
    CommandWords words(text);
    const std::string id = words.next();
    const std::string_view rest = words.rest();
    const std::size_t bar = rest.find('|');
    const auto trimmed = [](std::string_view part) { return std::string(CommandWords(part).rest()); };
    if (id.empty() || bar == rest.npos) return "error: it is notice ID TITLE | MESSAGE, or notice off";
    notice_ = Notice{id, trimmed(rest.substr(0, bar)), trimmed(rest.substr(bar + 1))};
    return "ok notice " + id;
}

std::string CloudDesk::maintenance(std::string_view text) {
    if (text == "off")
        maintenance_.reset();
    else
        maintenance_ = std::string(text);
    return maintenance_ ? "ok maintenance" : "ok off";
}

std::string CloudDesk::release(const std::string& build, const std::string& version, const std::string& url) {
    const auto number = parseInt(build);
    if (!number || *number < 0) return "error: " + build + " is no build number";
    release_ = Release{*number, version, url};
    return "ok build " + build + " is " + version;
}

}  // namespace vmr::relay
