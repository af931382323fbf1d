#include "services/net/BeastWebSocket.h"

#include <openssl/ssl.h>

#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <deque>
#include <optional>
#include <type_traits>
#include <vector>

#include "services/net/ProxyTunnel.h"

namespace vmr {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = beast::websocket;
using asio::ip::tcp;
using boost::system::error_code;
using PlainStream = websocket::stream<tcp::socket>;
using SecureStream = websocket::stream<asio::ssl::stream<tcp::socket>>;

constexpr double lingerSeconds = 5;
constexpr double nextAddressSeconds = 10;
constexpr std::size_t keptBuffer = 1024 * 1024;
constexpr int plainDrop = 1006;  // a close frame must not carry it
constexpr std::string_view proxySchemes[] = {"http"};

// Without authorities every certificate is refused, and that error is reported; so failures here need no word.
void trust(SSL_CTX* context, const TrustStore& store) {
    const auto orNull = [](const std::string& text) { return text.empty() ? nullptr : text.c_str(); };
    if (!store.system.empty()) SSL_CTX_load_verify_store(context, store.system.c_str());
    if (!store.file.empty() || !store.folder.empty())
        SSL_CTX_load_verify_locations(context, orNull(store.file), orNull(store.folder));
    if (store.system.empty() && store.file.empty() && store.folder.empty()) SSL_CTX_set_default_verify_paths(context);
}

/// The authorities are read with the first `wss:` connection.
class TlsContext {
 public:
    asio::ssl::context& get() {
        if (!context_) {
            context_.emplace(asio::ssl::context::tls_client);
            SSL_CTX_set_min_proto_version(context_->native_handle(), TLS1_2_VERSION);
            trust(context_->native_handle(), TrustStore::find(environment));
            context_->set_verify_mode(asio::ssl::verify_peer);
        }
        return *context_;
    }

 private:
    std::optional<asio::ssl::context> context_;
};

/// What `BeastWebSocket` holds. The operations under way keep it alive after `cancel`, until they have ended.
class Link {
 public:
    virtual ~Link() = default;
    virtual void start() = 0;
    virtual void sendText(std::string text) = 0;
    virtual void cancel(int code) = 0;
};

/// A connection that cannot even begin.
class RefusedLink final : public Link, public std::enable_shared_from_this<RefusedLink> {
 public:
    RefusedLink(AsioLoop& loop, std::string reason, WebSocket::Events events)
        : loop_(loop), reason_(std::move(reason)), events_(std::move(events)) {}

    void start() override {
        loop_.post([self = shared_from_this()] {
            if (!self->cancelled_ && self->events_.onFailed) self->events_.onFailed(self->reason_);
        });
    }
    void sendText(std::string) override {}
    void cancel(int) override { cancelled_ = true; }

 private:
    AsioLoop& loop_;
    const std::string reason_;
    const WebSocket::Events events_;
    bool cancelled_ = false;
};

template <class Stream>
class Conversation final : public Link, public std::enable_shared_from_this<Conversation<Stream>> {
    static constexpr bool secure = std::is_same_v<Stream, SecureStream>;

 public:
    template <class... More>
    Conversation(AsioLoop& loop, Url url, std::optional<Proxy> proxy, std::size_t maxMessageBytes,
                 WebSocket::Events events, More&... more)
        : loop_(loop),
          url_(std::move(url)),
          proxy_(std::move(proxy)),
          events_(std::make_shared<const WebSocket::Events>(std::move(events))),
          resolver_(loop.context()),
          ws_(loop.context(), more...) {
        ws_.read_message_max(maxMessageBytes);
        ws_.auto_fragment(false);  // the relay takes single frames
        ws_.set_option(
            websocket::stream_base::timeout{websocket::stream_base::none(), websocket::stream_base::none(), false});
    }

    void start() override {
        resolver_.async_resolve(proxy_ ? proxy_->host : url_.host, proxy_ ? proxy_->port : url_.port,
                                [self = this->shared_from_this()](error_code error, const auto& found) {
                                    if (!self->failedWith(error)) self->connectTo(found);
                                });
    }

    void sendText(std::string text) override {
        if (!events_) return;
        outgoing_.push_back(std::move(text));
        if (open_ && outgoing_.size() == 1) write();
    }

    void cancel(int code) override {
        if (!std::exchange(events_, nullptr)) return;
        if (!open_ || code == plainDrop) return shut();
        shutLater();
        ws_.async_close(static_cast<websocket::close_code>(code),
                        [self = this->shared_from_this()](error_code) { self->shut(); });
    }

 private:
    tcp::socket& socket() { return beast::get_lowest_layer(ws_); }

    void shut() {
        resolver_.cancel();
        error_code ignored;
        socket().close(ignored);
    }

    // Closes the connection some seconds after a close frame of either side: the peer may never end it.
    void shutLater() {
        loop_.after(lingerSeconds, [weak = this->weak_from_this()] {
            if (auto self = weak.lock()) self->shut();
        });
    }

    /// Whether the connection is over, be it by `error` or because it was ended before.
    bool failedWith(error_code error, const std::string& shown = {}) {
        if (!events_) return true;
        if (!error) return false;
        const auto events = std::exchange(events_, nullptr);
        shut();
        if (events->onFailed) events->onFailed(shown.empty() ? error.message() : shown);
        return true;
    }

    void closedWith(int code) {
        const auto events = std::exchange(events_, nullptr);
        if (!events) return;
        shutLater();
        if (events->onClosed) events->onClosed(code);
    }

    void connectTo(const tcp::resolver::results_type& found) {
        for (const auto& entry : found)
            if (secure || entry.endpoint().address().is_loopback()) addresses_.push_back(entry.endpoint());
        if (addresses_.empty())
            failedWith(asio::error::host_not_found, "ws: is for this machine only");
        else
            connectNext();
    }

    void connectNext() {
        const auto address = addresses_.front();
        addresses_.pop_front();
        auto limit = SerialQueue::noTimer;
        if (!addresses_.empty())
            limit = loop_.after(nextAddressSeconds, [weak = this->weak_from_this()] {
                error_code ignored;
                if (auto self = weak.lock()) self->socket().close(ignored);
            });
        socket().async_connect(address, [self = this->shared_from_this(), limit](error_code error) {
            self->loop_.cancel(limit);
            self->connected(error);
        });
    }

    void connected(error_code error) {
        error_code ignored;
        if (error && events_ && !addresses_.empty()) {
            socket().close(ignored);
            return connectNext();
        }
        if (failedWith(error)) return;
        socket().set_option(tcp::no_delay(true), ignored);
        if (proxy_)
            openTunnel(
                socket(), *proxy_, url_.hostAndPort(), [self = this->shared_from_this()](const std::string& problem) {
                    if (!self->failedWith(problem.empty() ? error_code() : asio::error::connection_refused, problem))
                        self->startTalking();
                });
        else
            startTalking();
    }

    void startTalking() {
        if constexpr (secure)
            secureLine();
        else
            shakeHands();
    }

    void secureLine() {
        auto& tls = ws_.next_layer();
        error_code notAnAddress;
        asio::ip::make_address(url_.host, notAnAddress);
        if (notAnAddress) SSL_set_tlsext_host_name(tls.native_handle(), url_.host.c_str());
        tls.set_verify_callback(asio::ssl::host_name_verification(url_.host));
        tls.async_handshake(asio::ssl::stream_base::client, [self = this->shared_from_this()](error_code error) {
            if (!self->failedWith(error)) self->shakeHands();
        });
    }

    void shakeHands() {
        ws_.async_handshake(answer_, url_.authority(), url_.target,
                            [self = this->shared_from_this()](error_code error) { self->handsShaken(error); });
    }

    void handsShaken(error_code error) {
        if (error == websocket::error::upgrade_declined) return refused();
        if (failedWith(error)) return;
        open_ = true;
        // Beast's read reports a close frame only once the peer has ended the connection, which may never happen.
        ws_.control_callback([this](websocket::frame_type kind, beast::string_view) {
            if (kind != websocket::frame_type::close) return;
            asio::post(loop_.context(),
                       [self = this->shared_from_this(), code = ws_.reason().code] { self->closedWith(code); });
        });
        read();
        if (!outgoing_.empty()) write();
        if (const auto events = events_; events->onOpen) events->onOpen();
    }

    void refused() {
        const auto events = std::exchange(events_, nullptr);
        if (!events) return;
        shut();
        if (events->onRefused) events->onRefused(static_cast<int>(answer_.result_int()));
    }

    void read() {
        ws_.async_read(incoming_, [self = this->shared_from_this()](error_code error, std::size_t) {
            if (error == websocket::error::closed) return self->closedWith(self->ws_.reason().code);
            if (!self->failedWith(error)) self->frameRead();
        });
    }

    void frameRead() {
        const auto data = incoming_.data();
        std::string bytes(static_cast<const char*>(data.data()), data.size());
        incoming_.clear();
        if (incoming_.capacity() > keptBuffer) incoming_.shrink_to_fit();
        const bool binary = ws_.got_binary();
        if (const auto events = events_; events->onFrame) events->onFrame(std::move(bytes), binary);
        if (events_) read();
    }

    void write() {
        ws_.async_write(asio::buffer(outgoing_.front()),
                        [self = this->shared_from_this()](error_code error, std::size_t) { self->written(error); });
    }

    void written(error_code error) {
        outgoing_.pop_front();
        const auto events = events_;
        if (!events) return;
        if (!outgoing_.empty()) write();
        if (error && events->onSendFailed) events->onSendFailed(error.message());
    }

    AsioLoop& loop_;
    const Url url_;
    const std::optional<Proxy> proxy_;
    std::shared_ptr<const WebSocket::Events> events_;  // empty once the connection is over
    std::deque<tcp::endpoint> addresses_;
    tcp::resolver resolver_;
    Stream ws_;
    websocket::response_type answer_;
    beast::flat_buffer incoming_;
    std::deque<std::string> outgoing_;  // the first one is being written while open
    bool open_ = false;
};

class BeastWebSocket final : public WebSocket {
 public:
    BeastWebSocket(AsioLoop& loop, std::shared_ptr<TlsContext> tls, std::shared_ptr<ProxyFinder> proxies)
        : loop_(loop), tls_(std::move(tls)), proxies_(std::move(proxies)) {}
    ~BeastWebSocket() override {
        if (link_) link_->cancel(plainDrop);
    }

    void open(const std::string& address, std::size_t maxMessageBytes, Events events) override {
        const auto url = parseUrl(address);
        if (!url) return refuse("not an address", std::move(events));
        if (url->scheme != "wss" && (url->scheme != "ws" || !url->loopback))
            return refuse("only wss: is allowed, or ws: to this machine", std::move(events));
        question_ = proxies_->find(*url, proxySchemes, loop_,
                                   [this, url = *url, maxMessageBytes, events](const std::optional<Proxy>& proxy) {
                                       converse(url, proxy, maxMessageBytes, events);
                                   });
    }

    void sendText(std::string text) override {
        if (link_)
            link_->sendText(std::move(text));
        else if (question_)
            early_.push_back(std::move(text));
    }

    void cancel(int code) override {
        question_ = {};
        if (link_) link_->cancel(code);
    }

 private:
    void begin(std::shared_ptr<Link> link) {
        link_ = std::move(link);
        link_->start();
        for (std::string& text : early_) link_->sendText(std::move(text));
        early_.clear();
    }

    void refuse(std::string reason, Events events) {
        begin(std::make_shared<RefusedLink>(loop_, std::move(reason), std::move(events)));
    }

    void converse(const Url& url, const std::optional<Proxy>& proxy, std::size_t maxMessageBytes, Events events) {
        if (proxy && !proxy->problem.empty()) return refuse(proxy->problem, std::move(events));
        if (proxy && proxy->scheme != proxySchemes[0])
            return refuse("only an http: proxy leads to the relay", std::move(events));
        if (url.secure)
            begin(std::make_shared<Conversation<SecureStream>>(loop_, url, proxy, maxMessageBytes, std::move(events),
                                                               tls_->get()));
        else
            begin(std::make_shared<Conversation<PlainStream>>(loop_, url, std::nullopt, maxMessageBytes,
                                                              std::move(events)));
    }

    AsioLoop& loop_;
    const std::shared_ptr<TlsContext> tls_;
    const std::shared_ptr<ProxyFinder> proxies_;
    ProxyFinder::Question question_;
    std::vector<std::string> early_;  // sent before the proxy is known
    std::shared_ptr<Link> link_;
};

}  // namespace

WebSocketFactory makeBeastWebSockets(AsioLoop& loop, std::shared_ptr<ProxyFinder> proxies) {
    return [&loop, tls = std::make_shared<TlsContext>(), proxies = std::move(proxies)] {
        return std::make_unique<BeastWebSocket>(loop, tls, proxies);
    };
}

}  // namespace vmr
