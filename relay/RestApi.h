// The sign-in endpoints: requests in, answers out.
#pragma once

#include <string>

#include "relay/Accounts.h"
#include "relay/Faults.h"

namespace vmr::relay {

struct RestRequest {
    std::string method, target, body;
};

struct RestReply {
    int status = 200;
    std::string body;  ///< JSON
};

/// Serves /v1/accounts:signInWithPassword, /v1/token and /v1/accounts:sendOobCode for the practice account. One thread.
class RestApi {
 public:
    RestApi(Accounts& accounts, const Faults& faults) : accounts_(accounts), faults_(faults) {}
    RestReply answer(const RestRequest& request);

 private:
    RestReply signIn(const std::string& body);
    RestReply refresh(const std::string& body);
    RestReply sendCode(const std::string& body) const;

    Accounts& accounts_;
    const Faults& faults_;
};

}  // namespace vmr::relay
