#include "services/feed/RelayClient.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>

#include "base/CheckedInt.h"
#include "base/Log.h"
#include "services/net/Endpoints.h"
#include "services/net/Url.h"

namespace vmr {

namespace {

constexpr int codeLost = 1006;
constexpr int codeGoingAway = 1001;
constexpr int codeTooMany = 4006;
constexpr double tooManyDelay = 5;
constexpr std::size_t largeDocument = 64 * 1024;

const std::string snapshotType = "snapshot";
const std::string eventType = "event";
const std::string batchType = "batch";

std::string channelsMessage(const char* action, const std::vector<std::string>& channels) {
    return nlohmann::json{{"action", action}, {"channels", channels}}.dump(-1, ' ', false,
                                                                           nlohmann::json::error_handler_t::replace);
}

/// One decoded message on its way to the main thread. A batch is taken apart there.
struct Delivery {
    ChannelMessage message;
    Json document;
    JsonView events;  ///< of a batch
    const std::string* type = nullptr;

    bool heavy() const { return message.prepared.has_value() || document.documentBytes() > largeDocument; }
};

/// The owner's end, touched on the main thread alone. No callbacks: the client is gone.
struct Owner {
    std::shared_ptr<const RelayClient::Callbacks> callbacks;

    void deliver(Delivery& delivery) const {
        const auto kept = callbacks;  // a callback may destroy the client
        if (!kept || !kept->onChannelMessage) return;
        if (delivery.type != &batchType) return kept->onChannelMessage(delivery.message, *delivery.type);
        for (const JsonView event : delivery.events.items()) {
            if (!callbacks) return;
            delivery.message.payload = delivery.document.at(event);
            kept->onChannelMessage(delivery.message, batchType);
        }
    }
};

}  // namespace

/// All fields belong to the queue, but `owner_` and what it points to, which belong to the main thread.
class RelayClient::Core : public std::enable_shared_from_this<Core> {
 public:
    Core(std::string urlString, WebSocketFactory sockets, SerialQueue& queue, MainLoop& main, const Clock& clock,
         Printer printer, Timing timing)
        : urlString_(std::move(urlString)),
          sockets_(std::move(sockets)),
          queue_(queue),
          main_(main),
          clock_(clock),
          print_(std::move(printer)),
          timing_(timing) {}

    void setCallbacks(Callbacks callbacks) {
        prepare_ = callbacks.onPrepare;
        owner_->callbacks = std::make_shared<const Callbacks>(std::move(callbacks));
    }

    /// The last call from the main thread: no callback from here on.
    void abandon() {
        owner_->callbacks.reset();
        abandoned_ = true;
        queue_.post([self = shared_from_this()] { self->disconnect(); });
    }

    template <class Work>
    void onQueue(Work work) {
        queue_.post(weakly(std::move(work)));
    }

    void connect(TokenProvider provider) {
        tokenProvider_ = std::move(provider);
        manualClose_ = false;
        tokenWasRefused_ = false;
        open();
    }

    void disconnect() {
        manualClose_ = true;
        ++attempt_;
        stopTimer(heartbeatTimer_);
        dropTask(codeGoingAway);
        connected_ = false;
    }

    void subscribe(const std::vector<std::string>& channels) {
        subscribedChannels_.insert(channels.begin(), channels.end());
        if (connected_ && helloReceived_) send(channelsMessage("subscribe", channels));
    }

    void unsubscribe(const std::vector<std::string>& channels) {
        for (const auto& channel : channels) subscribedChannels_.erase(channel);
        if (connected_) send(channelsMessage("unsubscribe", channels));
    }

 private:
    /// A task that does nothing once the client is gone.
    template <class Work>
    Task weakly(Work work) {
        return [weak = weak_from_this(), work = std::move(work)]() mutable {
            if (auto self = weak.lock()) work(*self);
        };
    }

    template <class Call>
    void onMain(Call call) {
        main_.post([owner = owner_, call = std::move(call)] {
            if (const auto callbacks = owner->callbacks) call(*callbacks);
        });
    }

    void log(std::string text) {
        text = harmlessText(text);  // it may quote the server
        if (print_) print_("[relay] " + text);
        onMain([text = std::move(text)](const Callbacks& callbacks) {
            if (callbacks.onLog) callbacks.onLog(text);
        });
    }

    void stopTimer(SerialQueue::TimerId& timer) {
        if (timer != SerialQueue::noTimer) queue_.cancel(timer);
        timer = SerialQueue::noTimer;
    }

    void dropTask(int code) {
        stopTimer(connectTimer_);
        if (!task_) return;
        task_->cancel(code);
        task_.reset();
    }

    void open() {
        if (!tokenProvider_) return;
        dropTask(codeGoingAway);
        helloReceived_ = false;
        connected_ = false;
        log("connecting…");
        tokenProvider_([weak = weak_from_this(), attempt = ++attempt_](TokenResult result) {
            // an abandoned client's queue may be gone
            if (auto self = weak.lock(); self && !self->abandoned_)
                self->onQueue([attempt, result = std::move(result)](Core& core) { core.tokenCame(attempt, result); });
        });
    }

    void tokenCame(std::uint64_t attempt, const TokenResult& result) {
        if (attempt != attempt_) return;
        ++attempt_;  // makes a second answer of the same provider stale
        if (result.error) {
            log("token fetch failed: " + *result.error);
            return scheduleReconnect();
        }
        const std::string url = urlString_ + "?token=" + percentEncoded(result.token, queryCharacters);
        if (result.token.empty() || !isAllowedUrl(url)) return scheduleReconnect();
        token_ = result.token;
        openSocket(url);
    }

    void openSocket(const std::string& url) {
        task_ = sockets_();
        // Events of an older socket are dropped: an attempt that has begun since has raised `attempt_`.
        const auto live = [weak = weak_from_this(), attempt = attempt_](auto handle) {
            return [weak, attempt, handle](auto... values) {
                const auto self = weak.lock();
                if (self && self->task_ && self->attempt_ == attempt) handle(*self, std::move(values)...);
            };
        };
        connectTimer_ =
            queue_.after(timing_.connectTimeout, live([](Core& core) { core.receiveFailed("connect timed out"); }));
        WebSocket::Events events;
        events.onOpen = live([](Core& core) { core.socketOpened(); });
        events.onFrame = live([](Core& core, const std::string& bytes, bool) { core.messageCame(bytes); });
        events.onRefused = live([](Core& core, int status) { core.upgradeRefused(status); });
        events.onClosed = live([](Core& core, int code) { core.socketClosed(code); });
        events.onFailed = live([](Core& core, const std::string& error) { core.receiveFailed(error); });
        events.onSendFailed = live([](Core& core, const std::string& error) { core.log("send failed: " + error); });
        task_->open(url, timing_.maximumMessageSize, std::move(events));
    }

    // The greeting has no time limit; heartbeats, which notice a dead line, begin with it.
    void socketOpened() {
        stopTimer(connectTimer_);
        log("socket opened, awaiting hello…");
        lastPong_ = clock_.monotonic();
    }

    // The owner may get a fresh token, once until the next greeting: a server that refuses those too is only retried.
    void upgradeRefused(int status) {
        if ((status == 401 || status == 403) && !std::exchange(tokenWasRefused_, true))
            onMain([token = token_](const Callbacks& callbacks) {
                if (callbacks.onTokenRefused) callbacks.onTokenRefused(token);
            });
        receiveFailed("HTTP " + std::to_string(status));
    }

    void socketClosed(int code) {
        log("socket closed (code " + std::to_string(code) + ")");
        drop(code);
    }

    void receiveFailed(const std::string& error) {
        log("receive error: " + error);
        drop(codeLost);
    }

    void drop(int code) {
        if (!task_) return;
        connected_ = false;
        stopTimer(heartbeatTimer_);
        dropTask(codeLost);
        onMain([](const Callbacks& callbacks) {
            if (callbacks.onDisconnected) callbacks.onDisconnected();
        });
        if (manualClose_) return;
        if (code != codeTooMany) return scheduleReconnect();
        onMain([](const Callbacks& callbacks) {
            if (callbacks.onConnectionLimit) callbacks.onConnectionLimit();
        });
        scheduleReconnect(tooManyDelay);
    }

    void scheduleReconnect(std::optional<double> forced = std::nullopt) {
        if (manualClose_ || reconnectPending_) return;
        reconnectPending_ = true;
        const int n = reconnectAttempt_++;  // a forced delay counts as an attempt, too
        const double delay = forced.value_or(std::min(timing_.reconnectBase * std::exp2(n), timing_.reconnectMax));
        log("reconnecting in " + std::to_string(static_cast<long long>(delay)) + "s (attempt " +
            std::to_string(reconnectAttempt_) + ")");
        queue_.after(delay, weakly([](Core& core) {
                         core.reconnectPending_ = false;
                         // a connection that the owner has opened meanwhile stays
                         if (!core.manualClose_ && !core.task_) core.open();
                     }));
    }

    void messageCame(const std::string& bytes) {
        const auto document = Json::parse(bytes);
        if (!document) return;
        const std::string_view type = (*document)["type"].string();
        if (type == "hello")
            helloCame((*document)["email"]);
        else if (type == "pong")
            lastPong_ = clock_.monotonic();
        else if (type == "error")
            log("server error: " + textOr((*document)["message"], "unknown"));
        else if (type == snapshotType)
            channelMessageCame(*document, (*document)["data"], snapshotType);
        else if (type == eventType)
            channelMessageCame(*document, (*document)["payload"], eventType);
        else if (type == batchType)
            channelMessageCame(*document, (*document)["events"], batchType);
    }

    static std::string textOr(JsonView value, const char* absent) {
        return value.isString() ? std::string(value.string()) : absent;
    }

    void helloCame(JsonView email) {
        helloReceived_ = true;
        connected_ = true;
        reconnectAttempt_ = 0;
        tokenWasRefused_ = false;
        lastPong_ = clock_.monotonic();
        log("hello: " + textOr(email, "?"));
        if (!subscribedChannels_.empty())
            send(channelsMessage("subscribe", {subscribedChannels_.begin(), subscribedChannels_.end()}));
        stopTimer(heartbeatTimer_);
        heartbeatTimer_ = queue_.every(timing_.heartbeatInterval, timing_.heartbeatInterval,
                                       weakly([](Core& core) { core.heartbeat(); }));
        onMain([](const Callbacks& callbacks) {
            if (callbacks.onConnected) callbacks.onConnected();
        });
    }

    void heartbeat() {
        if (!connected_) return;
        if (clock_.monotonic() - lastPong_ > timing_.heartbeatTimeout) {
            log("heartbeat timeout, reconnecting");
            return drop(codeLost);
        }
        const auto ts = checkedInt(clock_.now() * 1000, "the time of a ping");
        send(nlohmann::json{{"type", "ping"}, {"ts", ts}}.dump());
    }

    void channelMessageCame(const Json& document, JsonView body, const std::string& type) {
        const JsonView channel = document["channel"];
        const bool batch = &type == &batchType;  // `type` is always one of the three constants
        if (!channel.isString() || (batch && !body.isArray())) return;
        auto delivery = std::make_shared<Delivery>();
        delivery->message.channel = channel.string();
        delivery->type = &type;
        delivery->document = document;
        if (batch) {
            delivery->events = body;
        } else {
            delivery->message.payload = document.at(body);
            if (prepare_ && !abandoned_) delivery->message.prepared = prepare_(delivery->message.channel, body);
        }
        main_.post([owner = owner_, &queue = queue_, delivery = std::move(delivery)]() mutable {
            owner->deliver(*delivery);
            // Freeing a large document takes long: it goes back to the queue.
            if (owner->callbacks && delivery->heavy())
                queue.post([spent = std::move(delivery)]() mutable { spent.reset(); });
        });
    }

    void send(std::string text) {
        if (task_) task_->sendText(std::move(text));
    }

    const std::string urlString_;
    const WebSocketFactory sockets_;
    SerialQueue& queue_;
    MainLoop& main_;
    const Clock& clock_;
    const Printer print_;
    const Timing timing_;
    const std::shared_ptr<Owner> owner_ = std::make_shared<Owner>();
    decltype(Callbacks::onPrepare) prepare_;
    std::atomic<bool> abandoned_ = false;

    std::unique_ptr<WebSocket> task_;
    TokenProvider tokenProvider_;
    std::set<std::string> subscribedChannels_;
    std::uint64_t attempt_ = 0;  ///< raised whenever answers still under way become stale
    std::string token_;          ///< of the attempt
    bool tokenWasRefused_ = false;
    bool helloReceived_ = false;
    bool connected_ = false;
    bool manualClose_ = false;
    bool reconnectPending_ = false;
    int reconnectAttempt_ = 0;
    double lastPong_ = 0;
    SerialQueue::TimerId heartbeatTimer_ = SerialQueue::noTimer;
    SerialQueue::TimerId connectTimer_ = SerialQueue::noTimer;
};

RelayClient::RelayClient(std::string urlString, WebSocketFactory sockets, SerialQueue& queue, MainLoop& main,
                         const Clock& clock, Printer printer)
    : RelayClient(std::move(urlString), std::move(sockets), queue, main, clock, std::move(printer), Timing{}) {}

RelayClient::RelayClient(std::string urlString, WebSocketFactory sockets, SerialQueue& queue, MainLoop& main,
                         const Clock& clock, Printer printer, Timing timing)
    : core_(std::make_shared<Core>(std::move(urlString), std::move(sockets), queue, main, clock, std::move(printer),
                                   timing)) {}

RelayClient::~RelayClient() { core_->abandon(); }

void RelayClient::setCallbacks(Callbacks callbacks) { core_->setCallbacks(std::move(callbacks)); }

void RelayClient::connect(TokenProvider tokenProvider) {
    core_->onQueue([provider = std::move(tokenProvider)](Core& core) { core.connect(provider); });
}

void RelayClient::disconnect() {
    core_->onQueue([](Core& core) { core.disconnect(); });
}

void RelayClient::subscribe(std::vector<std::string> channels) {
    core_->onQueue([channels = std::move(channels)](Core& core) { core.subscribe(channels); });
}

void RelayClient::unsubscribe(std::vector<std::string> channels) {
    core_->onQueue([channels = std::move(channels)](Core& core) { core.unsubscribe(channels); });
}

}  // namespace vmr
