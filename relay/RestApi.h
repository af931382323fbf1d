// The REST endpoints: requests in, answers out.
#pragma once

#include <string>

#include "relay/Accounts.h"
#include "relay/CloudDesk.h"
#include "relay/Faults.h"
#include "relay/RestMessages.h"
#include "relay/TemplateShelf.h"

namespace vmr::relay {

/// Serves /v1/accounts:signInWithPassword, /v1/token and /v1/accounts:sendOobCode for the practice account, and what
/// the `CloudDesk` and the `TemplateShelf` serve. `clock` is the market's. One thread.
class RestApi {
 public:
    RestApi(Accounts& accounts, const Faults& faults, const Clock& clock)
        : accounts_(accounts), faults_(faults), templates_(accounts, clock) {}
    RestReply answer(const RestRequest& request);
    CloudDesk& cloud() { return cloud_; }
    TemplateShelf& templates() { return templates_; }

 private:
    RestReply signIn(const std::string& body);
    RestReply refresh(const std::string& body);
    RestReply sendCode(const std::string& body) const;

    Accounts& accounts_;
    const Faults& faults_;
    CloudDesk cloud_{accounts_};
    TemplateShelf templates_;
};

}  // namespace vmr::relay
