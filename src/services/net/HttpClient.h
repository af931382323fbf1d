// The seam to HTTPS requests.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vmr {

struct HttpRequest {
    std::string method = "GET";
    std::string url{};
    std::vector<std::pair<std::string, std::string>> headers{};
    std::string body{};
    double timeoutSeconds = 60;
    bool lastWord = false;  ///< still gets a moment when the client ends, without an answer then
};

/// Either a status and a body, or the transport's error text.
struct HttpResponse {
    int status = 0;
    std::string body;
    std::optional<std::string> transportError;
};

/// Sends requests; any number at a time.
class HttpClient {
 public:
    using Done = std::function<void(HttpResponse)>;
    virtual ~HttpClient() = default;
    /// Calls `done` once, on the queue that the client was made with; not any more once the client is gone. `http:` is
    /// accepted to loopback only, anything else is a transport error.
    virtual void send(HttpRequest request, Done done) = 0;
};

}  // namespace vmr
