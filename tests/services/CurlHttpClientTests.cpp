// The real HTTP client against a real server on this machine.
#include <gmock/gmock.h>

#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <cstdlib>

#include "LoopbackServer.h"
#include "TestCertificate.h"
#include "base/AsioLoop.h"
#include "services/CurlHttpClient.h"

namespace vmr::test {
namespace {

namespace http = boost::beast::http;
using Request = http::request<http::string_body>;
using Response = http::response<http::string_body>;

constexpr double patience = 30;

/// Answers each request by what its path asks for.
void serve(LoopbackServer::Socket peer) {
    boost::beast::flat_buffer buffer;
    Request request;
    http::read(peer, buffer, request);
    const std::string target(request.target());
    Response response{http::status::ok, 11};
    if (target == "/drop") return;
    if (target == "/hang") return waitForEnd(peer);
    if (target == "/400") response.result(http::status::bad_request);
    if (target == "/redirect") {
        response.result(http::status::found);
        response.set(http::field::location, "http://127.0.0.1:" + std::to_string(peer.local_endpoint().port()) + "/");
    }
    response.body() = std::string(request.method_string()) + " " + target + " " +
                      std::string(request[http::field::content_type]) + " " + std::string(request["X-Extra"]) + " " +
                      request.body();
    response.prepare_payload();
    response.keep_alive(false);
    http::write(peer, response);
}

class CurlHttp : public testing::Test {
 protected:
    HttpRequest to(const std::string& path) {
        HttpRequest request;
        request.url = server.url("http") + path;
        request.timeoutSeconds = patience;
        return request;
    }
    /// Sends all, runs the main loop until each is answered, and gives the answers in the order of the requests.
    std::vector<HttpResponse> exchange(std::vector<HttpRequest> requests) {
        AsioLoop main;
        CurlHttpClient client(main);
        std::vector<HttpResponse> responses(requests.size());
        std::size_t open = requests.size();
        for (std::size_t i = 0; i < requests.size(); ++i)
            client.send(requests[i], [&, i](HttpResponse response) {
                EXPECT_TRUE(main.isCurrent());
                responses[i] = std::move(response);
                if (--open == 0) main.quit();
            });
        main.after(patience, [&] { main.quit(); });
        main.run();
        EXPECT_EQ(open, 0u);
        return responses;
    }

    LoopbackServer server{serve};
};

TEST_F(CurlHttp, SendsWhatWasAskedAndGivesStatusAndBody) {
    HttpRequest post = to("post?a=b");
    post.method = "POST";
    post.headers = {{"Content-Type", "application/json"}, {"X-Extra", "yes"}};
    post.body = std::string("{\"a\":1}\0z", 9);
    HttpRequest patch = to("patch");
    patch.method = "PATCH";
    patch.body = "p";
    HttpRequest empty = to("empty");
    empty.method = "POST";
    const auto responses = exchange({to(""), post, patch, empty, to("400")});
    EXPECT_EQ(responses[0].body, "GET /   ");
    EXPECT_EQ(responses[1].body, "POST /post?a=b application/json yes " + post.body);
    EXPECT_EQ(responses[2].body, "PATCH /patch application/x-www-form-urlencoded  p");
    EXPECT_THAT(responses[3].body, testing::StartsWith("POST /empty "));
    EXPECT_EQ(responses[4].body, "GET /400   ");
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(responses[i].status, i == 4 ? 400 : 200);
        EXPECT_EQ(responses[i].transportError, std::nullopt);
    }
}

TEST_F(CurlHttp, WhatCannotBeCarriedOutIsATransportError) {
    std::vector<HttpRequest> requests{to("drop"), to("redirect"), to("hang")};
    requests[2].timeoutSeconds = 0.2;
    for (const char* url : {"http://example.test/", "ftp://127.0.0.1/", "file:///etc/hostname", "nonsense", "",
                            "http://127.0.0.1:1/", "https://no-such-host.invalid/"}) {
        requests.push_back(to(""));
        requests.back().url = url;
    }
    requests.push_back(to(""));
    requests.back().headers = {{"Authorization", "Bearer a\r\nX-Smuggled: b"}};
    const auto responses = exchange(requests);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(responses[i].status, 0) << requests[i].url;
        EXPECT_EQ(responses[i].body, "") << requests[i].url;
        EXPECT_FALSE(responses[i].transportError.value_or("").empty()) << requests[i].url;
    }
}

TEST_F(CurlHttp, ManyRequestsRunSideBySidePastAnyProxy) {
    setenv("http_proxy", "http://127.0.0.1:1", 1);
    std::vector<HttpRequest> requests;
    for (int i = 0; i < 40; ++i) requests.push_back(to(std::to_string(i)));
    const auto responses = exchange(requests);
    unsetenv("http_proxy");
    for (int i = 0; i < 40; ++i) EXPECT_EQ(responses[i].body, "GET /" + std::to_string(i) + "   ");
}

TEST_F(CurlHttp, AClientThatIsGoneAnswersNoMore) {
    AsioLoop main;
    auto held = std::make_shared<int>(0);
    auto client = std::make_unique<CurlHttpClient>(main);
    HttpRequest refused = to("");
    refused.url = "nonsense";
    for (const auto& request : {to("hang"), to("hang"), to(""), refused})
        client->send(request, [held](const HttpResponse&) { ADD_FAILURE() << "answered"; });
    client.reset();
    main.post([&] { main.quit(); });
    main.run();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(CurlHttp, ACertificateThatNobodyTrustsIsRefused) {
    TestCertificate certificate;
    LoopbackServer secure([&](LoopbackServer::Socket peer) {
        boost::asio::ssl::stream<LoopbackServer::Socket> line(std::move(peer), certificate.server());
        line.handshake(boost::asio::ssl::stream_base::server);
        ADD_FAILURE() << "the client went on";
    });
    HttpRequest request;
    request.url = secure.url("https", "localhost");
    const auto responses = exchange({request});
    EXPECT_THAT(responses[0].transportError.value_or(""), testing::HasSubstr("certificate"));
}

}  // namespace
}  // namespace vmr::test
