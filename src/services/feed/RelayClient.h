// The one connection of a pane to the data relay: token, socket, greeting, subscriptions, liveness, reconnects.
#pragma once

#include <any>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Clock.h"
#include "base/Json.h"
#include "base/SerialQueue.h"
#include "services/net/WebSocket.h"

namespace vmr {

/// What a token provider gives: a token, or the text of what went wrong.
struct TokenResult {
    std::string token;
    std::optional<std::string> error;
};

/// Gives the current identity token through the callback, once, on the main loop or within the call. Called on the
/// relay's queue, anew for every attempt; must return at once.
using TokenProvider = std::function<void(std::function<void(TokenResult)>)>;

/// A channel message as the main thread gets it. `prepared` is what `onPrepare` made of it, if anything.
struct ChannelMessage {
    std::string channel;
    Json payload;  ///< missing or null when the message carried none
    std::any prepared;
};

/// Knows the wire protocol and nothing of markets. Operations may be called from any thread and return at once; the
/// callbacks are set before `connect` and run on the main loop, in the order of their causes (`onPrepare` excepted).
class RelayClient {
 public:
    struct Callbacks {
        std::function<void(const std::string& text)> onLog;  ///< one line, without control characters
        std::function<void()> onConnected;
        std::function<void()> onConnectionLimit;
        std::function<void()> onDisconnected;
        /// The relay refused this token before a socket stood (HTTP 401 or 403), for the first time since the last
        /// greeting or `connect`. The next attempt asks the provider as always.
        std::function<void(const std::string& token)> onTokenRefused;
        /// `type` is "snapshot", "event" or "batch"; a batch calls once for each element, back to back.
        std::function<void(const ChannelMessage& message, const std::string& type)> onChannelMessage;
        /// Runs on the relay's queue right after decoding, for "snapshot" and "event": work that the main thread should
        /// not do, such as parsing bars. May be empty; must be safe to call while the main thread runs. What it made is
        /// destroyed on that queue too, after `onChannelMessage`, unless that took it or the client is gone.
        std::function<std::any(const std::string& channel, JsonView payload)> onPrepare;
    };

    /// Tunables, seconds and bytes.
    struct Timing {
        double heartbeatInterval = 10;
        double heartbeatTimeout = 60;
        double reconnectBase = 1;
        double reconnectMax = 30;
        double connectTimeout = 60;  ///< a connect that hangs longer counts as a receive error
        std::size_t maximumMessageSize = 67108864;
    };

    /// Gets each log line, "[relay] " and the text, beside `onLog`. On the relay's queue; empty for none.
    using Printer = std::function<void(const std::string& line)>;

    /// Nothing connects yet. `queue` and `main`, the main loop, must outlive the client's last queued work. Pings carry
    /// `clock`'s market time, so it must be the machine's own clock but where the relay shares another one.
    RelayClient(std::string urlString, WebSocketFactory sockets, SerialQueue& queue, MainLoop& main, const Clock& clock,
                Printer printer = {});
    RelayClient(std::string urlString, WebSocketFactory sockets, SerialQueue& queue, MainLoop& main, const Clock& clock,
                Printer printer, Timing timing);
    /// Drops the connection; no callback comes afterwards, but one `onPrepare` may still be under way. Main thread,
    /// also within a callback.
    ~RelayClient();

    /// Before the first `connect`, on the main thread.
    void setCallbacks(Callbacks callbacks);

    /// Stores the provider and opens the connection; an older one is dropped without `onDisconnected`, an older attempt
    /// still waiting for its token is forgotten. A reconnect that was already due leaves a standing connection alone.
    void connect(TokenProvider tokenProvider);

    /// Stays down until the next `connect`. The wanted channels stay as they are.
    void disconnect();

    /// Adds to the wanted channels; sent at once when live, else with the next greeting.
    void subscribe(std::vector<std::string> channels);

    /// Removes from the wanted channels.
    void unsubscribe(std::vector<std::string> channels);

 private:
    class Core;
    std::shared_ptr<Core> core_;
};

}  // namespace vmr
