// The seam to a WebSocket.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace vmr {

/// One client connection, used once. All calls and all events are on the queue it was made for; after `cancel` or
/// destruction no event comes, and both are allowed within an event. Exactly one of `onRefused`, `onClosed` and
/// `onFailed` ends it, as its last event.
class WebSocket {
 public:
    struct Events {
        std::function<void()> onOpen;                                 ///< the handshake succeeded
        std::function<void(std::string bytes, bool binary)> onFrame;  ///< one whole message
        std::function<void(int status)> onRefused;                    ///< the server's HTTP answer in place of a socket
        std::function<void(int code)> onClosed;                       ///< the peer closed, with this close code
        std::function<void(std::string error)> onFailed;              ///< any other end: resolve, connect, TLS, read
        std::function<void(std::string error)> onSendFailed;  ///< a send failed; `onClosed` or `onFailed` still follows
    };

    virtual ~WebSocket() = default;

    /// Starts connecting. `wss:` anywhere, `ws:` to loopback only (else `onFailed`). Messages above `maxMessageBytes`
    /// fail the connection. Never fires an event inside the call.
    virtual void open(const std::string& url, std::size_t maxMessageBytes, Events events) = 0;

    /// Sends one text message, in a single frame, after those already given; before `onOpen` it waits for it.
    virtual void sendText(std::string text) = 0;

    /// Ends without further events: a close frame with `code` when the connection stands; a plain drop before that, and
    /// for 1006, which no close frame may carry.
    virtual void cancel(int code) = 0;
};

/// Makes sockets that live on one queue.
using WebSocketFactory = std::function<std::unique_ptr<WebSocket>()>;

}  // namespace vmr
