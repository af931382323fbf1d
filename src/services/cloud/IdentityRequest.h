// What the requests to the identity service have in common.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "services/net/Endpoints.h"
#include "services/net/HttpClient.h"

namespace vmr {

/// The address of a call of `host`, with the service's key.
std::string withKey(const std::string& host, const char* path, const Endpoints& endpoints);

/// A POST of `body` as JSON; nothing when it cannot be JSON (bytes that are not UTF-8), and `problem` then says why.
std::optional<HttpRequest> jsonPost(std::string url, const nlohmann::json& body, std::string& problem);

}  // namespace vmr
