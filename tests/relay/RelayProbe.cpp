#include "relay/RelayProbe.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <chrono>

namespace vmr::test {

namespace {
namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;

tcp::endpoint endpointOf(const std::string& url) {
    const std::size_t colon = url.rfind(':');
    return {asio::ip::address_v4::loopback(), static_cast<unsigned short>(std::stoi(url.substr(colon + 1)))};
}

std::string escaped(const std::string& text) {
    static const char* const digits = "0123456789ABCDEF";
    std::string out;
    for (const unsigned char c : text) out += {'%', digits[c >> 4], digits[c & 15]};
    return out;
}
}  // namespace

struct RelayProbe::Impl {
    asio::io_context context;
    beast::websocket::stream<beast::tcp_stream> socket{context};
    beast::flat_buffer buffer;
    int status = 0;

    /// Runs one asynchronous call to its end.
    template <class F>
    error_code run(double seconds, F call) {
        socket.next_layer().expires_after(std::chrono::milliseconds(static_cast<int>(seconds * 1000)));
        error_code result;
        call([&result](error_code failed, auto...) { result = failed; });
        context.restart();
        context.run();
        return result;
    }
};

RelayProbe::RelayProbe(const PracticeRelay& relay, const std::string& token) : impl_(std::make_unique<Impl>()) {
    Impl& in = *impl_;
    in.socket.next_layer().connect(endpointOf(relay.relayUrl()));
    in.socket.read_message_max(512u << 20);
    beast::websocket::response_type response;
    const auto failed = in.run(
        20, [&](auto done) { in.socket.async_handshake(response, "127.0.0.1", "/?token=" + escaped(token), done); });
    in.status =
        failed && failed != beast::websocket::error::upgrade_declined ? 0 : static_cast<int>(response.result_int());
}

RelayProbe::~RelayProbe() = default;

int RelayProbe::status() const { return impl_->status; }

void RelayProbe::send(const std::string& text) {
    impl_->run(20, [&](auto done) { impl_->socket.async_write(asio::buffer(text), done); });
}

void RelayProbe::subscribe(const std::vector<std::string>& channels) {
    send(json{{"action", "subscribe"}, {"channels", channels}}.dump());
}

Heard RelayProbe::read(double seconds) {
    Impl& in = *impl_;
    const auto failed = in.run(seconds, [&](auto done) { in.socket.async_read(in.buffer, done); });
    Heard heard;
    heard.ended = static_cast<bool>(failed);
    heard.timedOut = failed == beast::error::timeout;
    if (failed == beast::websocket::error::closed) heard.closeCode = in.socket.reason().code;
    if (!failed) heard.text = beast::buffers_to_string(in.buffer.data());
    in.buffer.consume(in.buffer.size());
    return heard;
}

json RelayProbe::next(const std::string& type, const std::string& channel) {
    for (;;) {
        const Heard heard = read();
        if (heard.ended) return nullptr;
        json message = json::parse(heard.text, nullptr, false);
        if (!message.is_object() || message.value("type", "") != type) continue;
        if (channel.empty() || message.value("channel", "") == channel) return message;
    }
}

bool RelayProbe::answers() {
    send(R"({"type":"ping","ts":1})");
    return next("pong").is_object();
}

std::string signedIn(const PracticeRelay& relay) {
    const json body{{"email", relay.email()}, {"password", relay.password()}, {"returnSecureToken", true}};
    http::request<http::string_body> request(http::verb::post, "/v1/accounts:signInWithPassword?key=" + relay.apiKey(),
                                             11, body.dump());
    request.prepare_payload();
    asio::io_context context;
    tcp::socket socket(context);
    socket.connect(endpointOf(relay.restUrl()));
    http::write(socket, request);
    http::response<http::string_body> response;
    beast::flat_buffer buffer;
    http::read(socket, buffer, response);
    return json::parse(response.body()).value("idToken", "");
}

}  // namespace vmr::test
