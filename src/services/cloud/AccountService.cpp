#include "services/cloud/AccountService.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "services/cloud/IdentityRequest.h"

namespace vmr {

void AccountService::sendPasswordReset(HttpClient& http, const Endpoints& endpoints, const std::string& email,
                                       std::function<void(std::optional<std::string>)> done) {
    std::string problem;
    auto request = jsonPost(withKey(endpoints.identityUrl, "/v1/accounts:sendOobCode", endpoints),
                            {{"requestType", "PASSWORD_RESET"}, {"email", email}}, problem);
    if (!request) return done(problem);
    http.send(std::move(*request), [done = std::move(done)](const HttpResponse& response) {
        if (response.transportError) return done(response.transportError);
        if (response.status < 200 || response.status > 299) return done("HTTP " + std::to_string(response.status));
        done(std::nullopt);
    });
}

}  // namespace vmr
