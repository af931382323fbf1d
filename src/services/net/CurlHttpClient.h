// HTTPS requests through libcurl.
#pragma once

#include <memory>

#include "base/SerialQueue.h"
#include "services/net/HttpClient.h"

namespace vmr {

/// Runs its requests on a thread of its own and answers on `main`, where it is also made, used and destroyed. It checks
/// certificates, follows redirects to `https:` only, honours the usual proxy variables except for this machine, and
/// fails an answer above 64 MiB. A request's time limit covers it whole. Destruction drops what is under way.
class CurlHttpClient final : public HttpClient {
 public:
    explicit CurlHttpClient(MainLoop& main);
    ~CurlHttpClient() override;

    void send(HttpRequest request, Done done) override;

 private:
    class Worker;
    std::unique_ptr<Worker> worker_;
};

}  // namespace vmr
