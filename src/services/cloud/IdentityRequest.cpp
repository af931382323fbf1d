#include "services/cloud/IdentityRequest.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "services/net/Url.h"

namespace vmr {

std::string withKey(const std::string& host, const char* path, const Endpoints& endpoints) {
    return host + path + "?key=" + percentEncoded(endpoints.apiKey, queryValueCharacters);
}

std::optional<HttpRequest> jsonPost(std::string url, const nlohmann::json& body, std::string& problem) {
    try {
        return HttpRequest{"POST", std::move(url), {{"Content-Type", "application/json"}}, body.dump(), 60};
    } catch (const nlohmann::json::exception& error) {
        problem = error.what();
        return std::nullopt;
    }
}

}  // namespace vmr
