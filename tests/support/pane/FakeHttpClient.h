// Requests that a test answers by hand or by rule.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/SerialQueue.h"
#include "services/net/HttpClient.h"

namespace vmr::test {

/// Records every request. Answers come on the queue it was made with, never inside a call.
class FakeHttpClient final : public HttpClient {
 public:
    explicit FakeHttpClient(SerialQueue& main) : main_(main) {}

    /// Every request so far, oldest first.
    std::vector<HttpRequest> requests;

    /// Asked for each request; what it gives is the answer at once, nothing leaves the request waiting.
    std::function<std::optional<HttpResponse>(const HttpRequest&)> responder;

    /// Answers the one that has waited longest, or the `index`-th of those that wait.
    void answer(int status, std::string body, std::size_t index = 0) {
        answer(HttpResponse{status, std::move(body), std::nullopt}, index);
    }
    void answer(HttpResponse response, std::size_t index = 0) {
        Done done = std::move(waiting_.at(index));
        waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(index));
        main_.post([done = std::move(done), response = std::move(response)] { done(response); });
    }

    void send(HttpRequest request, Done done) override {
        waiting_.push_back(std::move(done));
        requests.push_back(std::move(request));
        if (auto response = responder ? responder(requests.back()) : std::nullopt)
            answer(std::move(*response), waiting_.size() - 1);
    }

 private:
    SerialQueue& main_;
    std::deque<Done> waiting_;
};

}  // namespace vmr::test
