#include "services/cloud/TemplatesService.h"

#include <cmath>
#include <utility>

#include "base/Log.h"
#include "base/NumberText.h"

namespace vmr::TemplatesService {

namespace {
constexpr double timeout = 60;  // seconds

HttpRequest requestOf(const std::string& url, const std::string& token, const JsonMembers& data) {
    return {"POST",
            url,
            {{"Content-Type", "application/json"}, {"Authorization", "Bearer " + token}},
            jsonObject({{"data", jsonObject(data)}}),
            timeout};
}
}  // namespace

std::variant<Json, std::string> readReply(std::string_view body) {
    const auto reply = Json::parse(body);
    if (!reply || !reply->isObject()) return "The response is not valid JSON.";
    if (const JsonView error = (*reply)["error"]; !error.isNothing()) {
        const JsonView message = error["message"];
        return message.isString() ? harmlessText(message.string()) : "Template service error";
    }
    const JsonView result = (*reply)["result"];
    return result.isObject() ? reply->at(result) : Json();
}

List readList(JsonView result) {
    List list;
    for (const char* key : slotKeys) {
        const JsonView told = result[key];
        if (!told.isObject()) continue;
        Slot& slot = list.savedSlots[key];
        slot.config = jsonMembers(told["config"].text()).value_or(JsonMembers());
        if (const JsonView offset = told["atmOffset"]; offset.isNumber()) slot.atmOffset = offset.number();
        if (const JsonView saved = told["savedAt"]; saved.isString()) slot.savedAt = harmlessText(saved.string());
    }
    if (const JsonView preferred = result["preferred"]; preferred.isString()) list.preferred = preferred.string();
    return list;
}

void call(const std::string& name, const JsonMembers& data, FirebaseRESTAuth& auth, Done<Json> done) {
    const std::string& base = auth.endpoints().functionsUrl;
    if (base.empty()) return done("No template service is configured. Set VMR_FUNCTIONS_URL to its address.");
    auth.token([&auth, url = base + "/" + name, data,
                done = std::move(done)](const std::variant<std::string, AuthError>& result) {
        const auto* token = std::get_if<std::string>(&result);
        if (!token) return done(std::get<AuthError>(result).text());
        auth.http().send(requestOf(url, *token, data), [done](const HttpResponse& response) {
            if (response.transportError) return done(*response.transportError);
            done(readReply(response.body));
        });
    });
}

void load(const std::string& symbolSource, FirebaseRESTAuth& auth, Done<List> done) {
    call("loadChartTemplates", {{"symbolSource", jsonString(symbolSource)}}, auth,
         [done = std::move(done)](std::variant<Json, std::string> reply) {
             if (const auto* problem = std::get_if<std::string>(&reply)) return done(*problem);
             done(readList(std::get<Json>(reply)));
         });
}

void save(const std::string& symbolSource, const std::string& slot, const JsonMembers& config, double atmOffset,
          FirebaseRESTAuth& auth, Done<Json> done) {
    const double offset = std::isfinite(atmOffset) ? atmOffset : 0;
    call("saveChartTemplate",
         {{"symbolSource", jsonString(symbolSource)},
          {"slot", jsonString(slot)},
          {"config", jsonObject(config)},
          {"atmOffset", doubleText(offset)}},
         auth, std::move(done));
}

}  // namespace vmr::TemplatesService
