#include "relay/SocketSession.h"

#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <chrono>
#include <deque>
#include <optional>

#include "base/Json.h"
#include "relay/MarketTime.h"
#include "relay/Payloads.h"
#include "relay/Query.h"

namespace vmr::relay {

namespace {
namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using boost::system::error_code;

constexpr std::size_t largestRequest = 1 << 20;
constexpr int tooManySockets = 4006;

class BeastSession final : public SocketSession, public std::enable_shared_from_this<BeastSession> {
 public:
    BeastSession(SocketWorld& world, asio::ip::tcp::socket socket, Events events)
        : world_(world), socket_(std::move(socket)), events_(std::move(events)) {}

    void start() override {
        request_.emplace();
        request_->header_limit(65536);
        socket_.next_layer().expires_after(std::chrono::seconds(30));
        http::async_read(socket_.next_layer(), buffer_, *request_,
                         [self = shared_from_this()](error_code failed, std::size_t) {
                             failed ? self->finish() : self->answerHandshake();
                         });
    }

    void drop() override {
        error_code ignored;
        auto& tcp = socket_.next_layer().socket();
        tcp.set_option(asio::socket_base::linger(true, 0), ignored);
        tcp.close(ignored);
        finish();
    }

    void close(int code) override {
        if (!open_) return drop();
        if (closeCode_) return;
        closeCode_ = code;
        queue_.erase(queue_.begin() + (writing_ ? 1 : 0), queue_.end());
        if (!writing_) sendClose();
    }

    void send(const Frame& frame) override {
        if (ended_ || closeCode_ || overflowed_) return;
        queued_ += frame.bytes->size();
        if (queued_ > mostQueued) {  // posted, because the caller is iterating over the subscribers
            overflowed_ = true;
            asio::post(socket_.get_executor(), [self = shared_from_this()] { self->drop(); });
            return;
        }
        queue_.push_back(frame);
        if (!writing_) writeNext();
    }

    bool admitted() const override { return admitted_ && !ended_; }
    bool greeted() const override { return greeted_ && !ended_; }

 private:
    void answerHandshake() {
        const auto& request = request_->get();
        if (!websocket::is_upgrade(request))
            return refuse(http::status::upgrade_required, "a WebSocket is served here");
        const auto target = request.target();
        const auto token = queryValue(queryOf({target.data(), target.size()}), "token");
        if (!token || !world_.accounts.accepts(*token)) {
            return refuse(http::status::unauthorized, "the token is unknown or has expired");
        }
        // decided before the handshake is answered: a switch that changes after the answer concerns later sockets only
        admitted_ = events_.mayEnter();
        stalled_ = world_.faults.stall;
        socket_.next_layer().expires_never();
        socket_.set_option(
            websocket::stream_base::timeout{std::chrono::seconds(10), websocket::stream_base::none(), false});
        socket_.read_message_max(largestRequest);
        socket_.auto_fragment(false);
        socket_.async_accept(
            request, [self = shared_from_this()](error_code failed) { failed ? self->finish() : self->onOpen(); });
    }

    void refuse(http::status status, const char* text) {
        refusal_.emplace(status, 11);
        refusal_->set(http::field::content_type, "text/plain");
        refusal_->body() = text;
        refusal_->keep_alive(false);
        refusal_->prepare_payload();
        http::async_write(socket_.next_layer(), *refusal_, [self = shared_from_this()](error_code, std::size_t) {
            error_code ignored;
            self->socket_.next_layer().socket().shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
            self->finish();
        });
    }

    void onOpen() {
        if (ended_) return;
        open_ = true;
        request_.reset();
        read();
        if (!admitted_) return close(tooManySockets);
        if (stalled_) return;
        if (world_.faults.delay <= 0) return greet();
        world_.loop.after(world_.faults.delay, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->greet();
        });
    }

    void greet() {
        if (ended_) return;
        greeted_ = true;
        send(Frame(payload::hello(Accounts::email)));
    }

    void read() {
        socket_.async_read(buffer_, [self = shared_from_this()](error_code failed, std::size_t) {
            if (failed) return self->finish();
            if (self->greeted_ && !self->ended_) self->onMessage(beast::buffers_to_string(self->buffer_.data()));
            self->buffer_.consume(self->buffer_.size());
            if (!self->ended_) self->read();
        });
    }

    void onMessage(const std::string& text) {
        const auto message = Json::parse(text);
        if (!message || !message->isObject()) return complain("a message must be a JSON object");
        const std::string_view action = (*message)["action"].string();
        if (action == "subscribe" || action == "unsubscribe")
            return onChannels((*message)["channels"], action == "subscribe");
        if ((*message)["type"].string() != "ping") return complain("unknown action or type");
        if (!world_.faults.mute) send(Frame(std::string(payload::pong)));
    }

    void onChannels(JsonView list, bool add) {
        std::vector<std::string> names;
        for (const JsonView name : list.items()) {
            if (!name.isString()) return complain("channels must be strings");
            names.emplace_back(name.string());
        }
        if (!list.isArray()) return complain("channels must be an array");
        if (!add) return world_.hub.unsubscribe(*this, names);
        for (const std::string& name : world_.hub.subscribe(*this, names, marketMs(world_.clock))) {
            complain("unknown channel, or too many: " + name);
        }
    }

    void complain(const std::string& text) { send(Frame(payload::error(text))); }

    void writeNext() {
        writing_ = true;
        const Frame& frame = queue_.front();
        socket_.binary(frame.binary);
        socket_.async_write(asio::buffer(*frame.bytes), [self = shared_from_this()](error_code failed, std::size_t) {
            self->writing_ = false;
            if (failed || self->ended_) return self->finish();
            self->queued_ -= self->queue_.front().bytes->size();
            self->queue_.pop_front();
            if (self->closeCode_) return self->sendClose();
            if (!self->queue_.empty()) self->writeNext();
        });
    }

    void sendClose() {
        const websocket::close_reason reason(static_cast<websocket::close_code>(*closeCode_));
        socket_.async_close(reason, [self = shared_from_this()](error_code) { self->finish(); });
    }

    void finish() {
        if (ended_) return;
        ended_ = true;
        world_.hub.leave(*this);
        error_code ignored;
        socket_.next_layer().socket().close(ignored);
        events_.onEnded(*this);
    }

    SocketWorld& world_;
    websocket::stream<beast::tcp_stream> socket_;
    Events events_;
    beast::flat_buffer buffer_;
    std::optional<http::request_parser<http::empty_body>> request_;
    std::optional<http::response<http::string_body>> refusal_;
    std::deque<Frame> queue_;  // the first one is being written
    std::size_t queued_ = 0;   // bytes of `queue_`
    std::optional<int> closeCode_;
    bool writing_ = false;
    bool open_ = false;
    bool admitted_ = false;
    bool stalled_ = false;
    bool greeted_ = false;
    bool overflowed_ = false;
    bool ended_ = false;
};
}  // namespace

std::shared_ptr<SocketSession> SocketSession::make(SocketWorld& world, boost::asio::ip::tcp::socket socket,
                                                   Events events) {
    return std::make_shared<BeastSession>(world, std::move(socket), std::move(events));
}

}  // namespace vmr::relay
