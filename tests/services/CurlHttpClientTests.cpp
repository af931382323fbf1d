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

constexpr double patience = 30;

/// Answers each request by what its path asks for.
void serve(LoopbackServer::Socket peer) {
    boost::beast::flat_buffer buffer;
    http::request<http::string_body> request;
    http::read(peer, buffer, request);
    const auto target = request.target();
    http::response<http::string_body> response{http::status::ok, 11};
    if (target == "/drop") return;
    if (target == "/hang") return waitForEnd(peer);
    if (target == "/400") response.result(http::status::bad_request);
    if (target == "/huge") response.body().assign(65 * 1024 * 1024, 'h');
    if (target == "/redirect") {
        response.result(http::status::found);
        response.set(http::field::location, "http://127.0.0.1:" + std::to_string(peer.local_endpoint().port()) + "/");
    }
    if (response.body().empty()) response.body() = "told " + request.body();
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

TEST_F(CurlHttp, GivesStatusAndBodyOfEachPastAnyProxy) {
    std::vector<HttpRequest> requests(30, to("400"));
    for (std::size_t i = 0; i < requests.size(); ++i) {
        requests[i].method = "POST";
        requests[i].body = std::to_string(i) + std::string("\0z", 2);
    }
    setenv("http_proxy", "http://127.0.0.1:1", 1);
    const auto responses = exchange(requests);
    unsetenv("http_proxy");
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(responses[i].status, 400) << responses[i].transportError.value_or("");
        EXPECT_EQ(responses[i].body, "told " + requests[i].body);
    }
}

TEST_F(CurlHttp, WhatCannotBeCarriedOutIsATransportError) {
    std::vector<HttpRequest> requests{to("drop"), to("redirect"), to("hang"), to("huge"), to("")};
    requests[2].timeoutSeconds = 0.2;
    requests[4].headers = {{"Authorization", "Bearer a\r\nX-Smuggled: b"}};
    for (const char* url : {"http://example.test/", "ftp://127.0.0.1/", "file:///etc/hostname", "nonsense", "",
                            "http://127.0.0.1:1/", "https://no-such-host.invalid/"}) {
        requests.push_back(to(""));
        requests.back().url = url;
    }
    const auto responses = exchange(requests);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(responses[i].status, 0) << requests[i].url;
        EXPECT_EQ(responses[i].body, "") << requests[i].url;
        EXPECT_FALSE(responses[i].transportError.value_or("").empty()) << requests[i].url;
    }
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
        boost::asio::ssl::stream<LoopbackServer::Socket> line(std::move(peer), certificate.server);
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
