// Requests that a test answers by hand or by rule.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/SerialQueue.h"
#include "services/HttpClient.h"

namespace vmr::test {

/// Records every request. Answers come on the queue it was made with, never inside a call.
class FakeHttpClient final : public HttpClient {
 public:
    explicit FakeHttpClient(SerialQueue& main) : main_(main) {}

    /// Every request so far, oldest first.
    std::vector<HttpRequest> requests;

    /// Asked for each request; what it gives is the answer at once, nothing leaves the request waiting.
    std::function<std::optional<HttpResponse>(const HttpRequest&)> responder;

    /// How many requests wait for an answer.
    std::size_t waiting() const { return waiting_.size(); }

    /// Answers the one that has waited longest, or the `index`-th of those that wait.
    void answer(int status, std::string body, std::size_t index = 0) {
        reply({status, std::move(body), std::nullopt}, index);
    }
    /// Likewise with a transport's error.
    void fail(std::string error, std::size_t index = 0) { reply({0, "", std::move(error)}, index); }

    void send(HttpRequest request, Done done) override {
        auto response = responder ? responder(request) : std::nullopt;
        requests.push_back(std::move(request));
        if (response)
            post(std::move(done), std::move(*response));
        else
            waiting_.push_back(std::move(done));
    }

 private:
    void reply(HttpResponse response, std::size_t index) {
        Done done = std::move(waiting_.at(index));
        waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(index));
        post(std::move(done), std::move(response));
    }
    void post(Done done, HttpResponse response) {
        main_.post([done = std::move(done), response = std::move(response)] { done(response); });
    }

    SerialQueue& main_;
    std::deque<Done> waiting_;
};

}  // namespace vmr::test
