// HTTPS requests through libcurl.
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "base/SerialQueue.h"
#include "base/WeakTask.h"
#include "services/net/HttpClient.h"
#include "services/net/ProxyFinder.h"

namespace vmr {

/// Runs its requests on a thread of its own and answers on `main`, where it is also made, used and destroyed. It checks
/// certificates against `TrustStore`, goes through the proxy that `proxies` finds, follows redirects of requests that
/// carry nothing (no body, no header of their own) and to `https:` only, and fails an answer above 64 MiB. A request's
/// time limit covers it whole. Destruction drops what is under way but for last words (those too while the proxy is not
/// known), and takes half a second at most, whatever the system's name resolver or a server does.
class CurlHttpClient final : public HttpClient {
 public:
    explicit CurlHttpClient(MainLoop& main, std::shared_ptr<ProxyFinder> proxies = std::make_shared<ProxyFinder>());
    ~CurlHttpClient() override;

    void send(HttpRequest request, Done done) override;

 private:
    class Worker;
    struct Asking {
        ProxyFinder::Question question;
        MainLoop::TimerId limit;
    };
    void endAsking(std::uint64_t id);

    MainLoop& main_;
    const std::shared_ptr<ProxyFinder> proxies_;
    std::shared_ptr<Worker> worker_;
    std::map<std::uint64_t, Asking> asking_;  // requests that wait for their proxy
    std::map<std::uint64_t, Done> waiting_;
    std::uint64_t lastId_ = 0;
    WeakTask weak_;
};

}  // namespace vmr
