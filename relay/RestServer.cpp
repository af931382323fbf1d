#include "relay/RestServer.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <chrono>

namespace vmr::relay {

namespace {
namespace beast = boost::beast;
namespace http = beast::http;
using boost::asio::ip::tcp;
using boost::system::error_code;

/// One connection, which may carry requests one after the other.
class RestConnection : public std::enable_shared_from_this<RestConnection> {
 public:
    RestConnection(AsioLoop& loop, RestApi& api, const Faults& faults, tcp::socket socket)
        : loop_(loop), api_(api), faults_(faults), stream_(std::move(socket)) {}

    void read() {
        request_ = {};
        stream_.expires_after(std::chrono::seconds(60));
        http::async_read(stream_, buffer_, request_, [self = shared_from_this()](error_code failed, std::size_t) {
            if (failed) return;
            self->stream_.expires_never();
            if (self->faults_.delay <= 0) return self->answer();
            self->loop_.after(self->faults_.delay, [self] { self->answer(); });
        });
    }

 private:
    void answer() {
        const auto text = [](auto view) { return std::string(view.data(), view.size()); };
        const RestReply reply = api_.answer({text(request_.method_string()), text(request_.target()), request_.body(),
                                             text(request_[http::field::authorization])});
        response_ = {static_cast<http::status>(reply.status), request_.version()};
        response_.set(http::field::content_type, "application/json; charset=UTF-8");
        response_.set(http::field::cache_control, "no-store");
        response_.keep_alive(request_.keep_alive());
        response_.body() = reply.body;
        response_.prepare_payload();
        if (reply.delay <= 0) return write();
        loop_.after(reply.delay, [self = shared_from_this()] { self->write(); });
    }

    void write() {
        stream_.expires_after(std::chrono::seconds(60));
        http::async_write(stream_, response_, [self = shared_from_this()](error_code failed, std::size_t) {
            if (failed) return;
            if (self->response_.keep_alive()) return self->read();
            error_code ignored;
            self->stream_.socket().shutdown(tcp::socket::shutdown_send, ignored);
        });
    }

    AsioLoop& loop_;
    RestApi& api_;
    const Faults& faults_;
    beast::tcp_stream stream_;
    beast::flat_buffer buffer_;
    http::request<http::string_body> request_;  // Beast's own limit of 1 MiB holds for the body
    http::response<http::string_body> response_;
};
}  // namespace

RestServer::RestServer(AsioLoop& loop, RestApi& api, const Faults& faults)
    : listener_(loop, [&loop, &api, &faults](tcp::socket socket) {
          std::make_shared<RestConnection>(loop, api, faults, std::move(socket))->read();
      }) {}

}  // namespace vmr::relay
