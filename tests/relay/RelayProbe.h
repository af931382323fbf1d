// A practice relay that runs, and plain blocking clients of it.
#pragma once

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "base/SteerableClock.h"
#include "market/ClockSetting.h"
#include "relay/PracticeRelay.h"

namespace vmr::relay::test {

namespace asio = boost::asio;
namespace beast = boost::beast;
using asio::ip::tcp;
using nlohmann::json;

inline tcp::endpoint endpointOf(const std::string& url) {
    return {asio::ip::address_v4::loopback(), static_cast<unsigned short>(std::stoi(url.substr(url.rfind(':') + 1)))};
}

class RelayProbe {
 public:
    /// Opens a socket with this token; `status` is 101 when it was let in.
    RelayProbe(const PracticeRelay& relay, const std::string& token) {
        socket_.next_layer().connect(endpointOf(relay.relayUrl()));
        socket_.read_message_max(512u << 20);
        beast::websocket::response_type response;
        std::string target = "/?token=";
        for (const unsigned char c : token) target += {'%', "0123456789ABCDEF"[c >> 4], "0123456789ABCDEF"[c & 15]};
        // the blocking call does not tell a refusal's status
        socket_.async_handshake(response, "127.0.0.1", target, [this](auto error) { failed_ = error; });
        context_.run();
        status = response.result_int();
    }
    unsigned status = 0;
    int closeCode = 0;  ///< of the close frame that ended the connection

    void send(const std::string& text) { socket_.write(asio::buffer(text), failed_); }
    void subscribe(const std::vector<std::string>& channels) {
        send(json{{"action", "subscribe"}, {"channels", channels}}.dump());
    }
    /// The next message; empty once the connection has ended.
    std::string read() {
        beast::flat_buffer buffer;
        socket_.read(buffer, failed_);
        if (failed_ == beast::websocket::error::closed) closeCode = socket_.reason().code;
        return failed_ ? "" : beast::buffers_to_string(buffer.data());
    }
    /// The next message of that type and, unless empty, channel; null when the connection ended first.
    json next(const std::string& type, const std::string& channel = {}) {
        for (std::string text; !(text = read()).empty();) {
            json message = json::parse(text);
            if (message["type"] == type && (channel.empty() || message["channel"] == channel)) return message;
        }
        return nullptr;
    }
    bool answers() {
        send(R"({"type":"ping","ts":1})");
        return next("pong").is_object();
    }

 private:
    asio::io_context context_;
    beast::websocket::stream<tcp::socket> socket_{context_};
    boost::system::error_code failed_;
};

/// Posts `body` to a path of the sign-in endpoints and gives the answer's JSON.
inline json posted(const PracticeRelay& relay, const std::string& path, const std::string& body) {
    namespace http = beast::http;
    http::request<http::string_body> request(http::verb::post, path + "?key=" + relay.apiKey(), 11, body);
    request.prepare_payload();
    asio::io_context context;
    tcp::socket socket(context);
    socket.connect(endpointOf(relay.restUrl()));
    http::write(socket, request);
    http::response<http::string_body> response;
    beast::flat_buffer buffer;
    http::read(socket, buffer, response);
    return json::parse(response.body());
}

/// Signs the practice account in.
inline json signedIn(const PracticeRelay& relay) {
    const json body{{"email", relay.email()}, {"password", relay.password()}, {"returnSecureToken", true}};
    return posted(relay, "/v1/accounts:signInWithPassword", body.dump());
}

/// Market time stands where the test has put it.
struct RunningRelay : testing::Test {
    RunningRelay() {
        clock.pause();
        clock.setNow(*parseMoment("2026-06-10T10:00:20"));
    }
    void start(const PracticeRelayOptions& options = {}) {
        relay = std::make_unique<PracticeRelay>(clock, options);
        const auto wrong = relay->start();
        ASSERT_FALSE(wrong) << *wrong;
        token = signedIn(*relay).value("idToken", "");
    }
    void SetUp() override { start(); }
    std::unique_ptr<RelayProbe> greeted() {
        auto probe = std::make_unique<RelayProbe>(*relay, token);
        EXPECT_EQ(probe->next("hello")["email"], relay->email());
        return probe;
    }
    SteerableClock clock;
    std::unique_ptr<PracticeRelay> relay;
    std::string token;
};

}  // namespace vmr::relay::test
