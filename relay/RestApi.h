// The REST endpoints: requests in, answers out.
#pragma once

#include <string>

#include "relay/Accounts.h"
#include "relay/CloudDesk.h"
#include "relay/Faults.h"
#include "relay/RestMessages.h"

namespace vmr::relay {

/// Serves /v1/accounts:signInWithPassword, /v1/token and /v1/accounts:sendOobCode for the practice account, and what
/// the `CloudDesk` serves. One thread.
class RestApi {
 public:
    RestApi(Accounts& accounts, const Faults& faults) : accounts_(accounts), faults_(faults) {}
    RestReply answer(const RestRequest& request);
    CloudDesk& cloud() { return cloud_; }

 private:
    RestReply signIn(const std::string& body);
    RestReply refresh(const std::string& body);
    RestReply sendCode(const std::string& body) const;

    Accounts& accounts_;
    const Faults& faults_;
    CloudDesk cloud_{accounts_};
};

}  // namespace vmr::relay
