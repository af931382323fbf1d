// The calls on a person's account beside signing in.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "services/net/Endpoints.h"
#include "services/net/HttpClient.h"

namespace vmr::AccountService {

/// Asks for a mail with which the password can be set anew. `done` gets nothing on success, else "HTTP <status>" or the
/// transport's text, on the client's queue; within the call where the address cannot be sent.
void sendPasswordReset(HttpClient& http, const Endpoints& endpoints, const std::string& email,
                       std::function<void(std::optional<std::string>)> done);

}  // namespace vmr::AccountService
