// Sockets that a test plays the server of.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/SerialQueue.h"
#include "services/WebSocket.h"

namespace vmr::test {

/// Hands out sockets and keeps a record of each, which stays readable after the client has dropped the socket.
class FakeWebSockets {
 public:
    /// One socket. The server's moves come as events on the queue, in order; once the client has cancelled or destroyed
    /// the socket they come no more, as the seam promises, unless `lateEvents` is set.
    class Socket : public std::enable_shared_from_this<Socket> {
     public:
        std::string url;
        std::size_t maxMessageBytes = 0;
        std::vector<std::string> sent;  ///< what the client sent, oldest first
        std::optional<int> cancelCode;  ///< set once the client has cancelled
        bool lateEvents = false;

        bool gone() const { return cancelCode || destroyed_; }

        void accept() {
            fire([](const WebSocket::Events& events) { events.onOpen(); });
        }
        void frame(std::string bytes, bool binary = false) {
            fire([bytes, binary](const WebSocket::Events& events) { events.onFrame(bytes, binary); });
        }
        void close(int code) {
            fire([code](const WebSocket::Events& events) { events.onClosed(code); });
        }
        void fail(std::string error) {
            fire([error](const WebSocket::Events& events) { events.onFailed(error); });
        }
        void failSend(std::string error) {
            fire([error](const WebSocket::Events& events) { events.onSendFailed(error); });
        }

        /// Takes out what the client has sent so far.
        std::vector<std::string> takeSent() { return std::exchange(sent, {}); }

     private:
        friend class FakeWebSockets;
        template <class Event>
        void fire(Event event) {
            queue_->post([self = shared_from_this(), event] {
                if (!self->gone() || self->lateEvents) event(self->events_);
            });
        }
        SerialQueue* queue_ = nullptr;
        WebSocket::Events events_;
        bool destroyed_ = false;
    };

    explicit FakeWebSockets(SerialQueue& queue) : queue_(queue) {}

    /// The fake must outlive what it is given to.
    WebSocketFactory factory() {
        return [this]() -> std::unique_ptr<WebSocket> {
            auto socket = std::make_shared<Socket>();
            socket->queue_ = &queue_;
            all_.push_back(socket);
            return std::make_unique<End>(std::move(socket));
        };
    }

    std::size_t count() const { return all_.size(); }
    Socket& at(std::size_t index) { return *all_.at(index); }
    /// The newest; there must be one.
    Socket& last() { return *all_.back(); }

 private:
    class End final : public WebSocket {
     public:
        explicit End(std::shared_ptr<Socket> socket) : socket_(std::move(socket)) {}
        ~End() override { socket_->destroyed_ = true; }
        void open(const std::string& url, std::size_t maxMessageBytes, Events events) override {
            socket_->url = url;
            socket_->maxMessageBytes = maxMessageBytes;
            socket_->events_ = std::move(events);
        }
        void sendText(std::string text) override { socket_->sent.push_back(std::move(text)); }
        void cancel(int code) override {
            if (!socket_->cancelCode) socket_->cancelCode = code;
        }

     private:
        std::shared_ptr<Socket> socket_;
    };

    SerialQueue& queue_;
    std::vector<std::shared_ptr<Socket>> all_;
};

}  // namespace vmr::test
