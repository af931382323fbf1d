#include "relay/RestApi.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/Json.h"
#include "base/NumberText.h"
#include "relay/Query.h"

namespace vmr::relay {

RestReply fault(int status, const std::string& message) {
    const nlohmann::json cause{{"message", message}, {"domain", "global"}, {"reason", "invalid"}};
    const char* const name = status == 401   ? "UNAUTHENTICATED"
                             : status == 403 ? "PERMISSION_DENIED"
                             : status == 404 ? "NOT_FOUND"
                             : status == 429 ? "RESOURCE_EXHAUSTED"
                             : status >= 500 ? "INTERNAL"
                                             : "INVALID_ARGUMENT";
    const nlohmann::json error{{"code", status}, {"message", message}, {"errors", {cause}}, {"status", name}};
    return {status, nlohmann::json{{"error", error}}.dump()};
}

namespace {

std::string lower(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return out;
}

/// What is wrong with the address in a JSON body. Whether there is an account for it is never said.
std::optional<RestReply> addressFault(const std::optional<Json>& body) {
    if (!body || !body->isObject()) return fault(400, "Invalid JSON payload received.");
    const std::string_view email = (*body)["email"].string();
    if (email.empty()) return fault(400, "MISSING_EMAIL");
    if (email.find('@') == email.npos) return fault(400, "INVALID_EMAIL");
    return std::nullopt;
}
}  // namespace

RestReply RestApi::answer(const RestRequest& request) {
    using Endpoint = RestReply (*)(RestApi&, const std::string&);
    struct Route {
        std::string_view path;
        Endpoint call;
    };
    static constexpr Route routes[] = {
        {"/v1/accounts:signInWithPassword", [](RestApi& api, const std::string& body) { return api.signIn(body); }},
        {"/v1/token", [](RestApi& api, const std::string& body) { return api.refresh(body); }},
        {"/v1/accounts:sendOobCode", [](RestApi& api, const std::string& body) { return api.sendCode(body); }},
    };
    const std::string_view target = request.target;
    const std::string path = percentDecoded(target.substr(0, target.find('?')));
    if (auto desk = cloud_.answer(request, path)) return *desk;
    if (auto shelf = templates_.answer(request, path)) return *shelf;
    const auto* route =
        std::find_if(std::begin(routes), std::end(routes), [&](const Route& one) { return one.path == path; });
    if (route == std::end(routes)) return fault(404, "Not found");
    if (request.method != "POST") return fault(405, "Method not allowed");
    const auto key = queryValue(queryOf(target), "key");
    if (!key) return fault(403, "The request is missing a valid API key.");
    if (*key != Accounts::apiKey) return fault(400, "API key not valid. Please pass a valid API key.");
    return route->call(*this, request.body);
}

RestReply RestApi::signIn(const std::string& text) {
    const auto body = Json::parse(text);
    if (auto wrong = addressFault(body)) return *wrong;
    const std::string_view password = (*body)["password"].string();
    if (password.empty()) return fault(400, "MISSING_PASSWORD");
    if (accounts_.isLockedOut())
        return fault(400,
                     "TOO_MANY_ATTEMPTS_TRY_LATER : Access to this account has been temporarily disabled due to many "
                     "failed login attempts.");
    if (faults_.refuse) return fault(400, "USER_DISABLED");
    const bool known = lower((*body)["email"].string()) == Accounts::email && password == Accounts::password;
    accounts_.noteAttempt(known);
    if (!known) return fault(400, "INVALID_LOGIN_CREDENTIALS");
    const IssuedTokens tokens = accounts_.issue();
    return {200, nlohmann::json{{"kind", "identitytoolkit#VerifyPasswordResponse"},
                                {"localId", Accounts::localId},
                                {"email", Accounts::email},
                                {"displayName", ""},
                                {"registered", true},
                                {"idToken", tokens.idToken},
                                {"refreshToken", tokens.refreshToken},
                                {"expiresIn", doubleText(accounts_.tokenLife())}}
                     .dump()};
}

RestReply RestApi::refresh(const std::string& form) {
    const auto grant = formValue(form, "grant_type");
    if (!grant) return fault(400, "MISSING_GRANT_TYPE");
    if (*grant != "refresh_token") return fault(400, "INVALID_GRANT_TYPE");
    const auto token = formValue(form, "refresh_token");
    if (!token || token->empty()) return fault(400, "MISSING_REFRESH_TOKEN");
    const Accounts::Refresh state = accounts_.refreshState(*token);
    if (faults_.refuse) return fault(400, "USER_DISABLED");
    if (state == Accounts::Refresh::unknown) return fault(400, "INVALID_REFRESH_TOKEN");
    if (state == Accounts::Refresh::expired) return fault(400, "TOKEN_EXPIRED");
    const IssuedTokens tokens = accounts_.issue();
    return {200, nlohmann::json{{"access_token", tokens.idToken},
                                {"id_token", tokens.idToken},
                                {"refresh_token", tokens.refreshToken},
                                {"expires_in", doubleText(accounts_.tokenLife())},
                                {"token_type", "Bearer"},
                                {"user_id", Accounts::localId},
                                {"project_id", "1"}}
                     .dump()};
}

RestReply RestApi::sendCode(const std::string& text) const {
    const auto body = Json::parse(text);
    if (!body || !body->isObject()) return fault(400, "Invalid JSON payload received.");
    if ((*body)["requestType"].string() != "PASSWORD_RESET") return fault(400, "MISSING_REQ_TYPE");
    if (auto wrong = addressFault(body)) return *wrong;
    return {200, nlohmann::json{{"kind", "identitytoolkit#GetOobConfirmationCodeResponse"},
                                {"email", std::string((*body)["email"].string())}}
                     .dump()};
}

}  // namespace vmr::relay
