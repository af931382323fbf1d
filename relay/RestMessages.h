// Requests to the REST port, and its answers.
#pragma once

#include <string>

namespace vmr::relay {

struct RestRequest {
    std::string method, target, body;
    std::string authorization{};  ///< the header's value; empty without one
};

struct RestReply {
    int status = 200;
    std::string body;  ///< JSON
    double delay = 0;  ///< real seconds before it is sent
};

/// The cloud's way of saying what is wrong.
RestReply fault(int status, const std::string& message);

}  // namespace vmr::relay
