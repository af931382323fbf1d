// Sockets that a test plays the server of.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/SerialQueue.h"
#include "services/net/WebSocket.h"

namespace vmr::test {

/// Hands out sockets and keeps a record of each, which stays readable after the client has dropped the socket.
class FakeWebSockets {
 public:
    /// One socket. The server's moves come as events on the queue, in order; once the client has cancelled or destroyed
    /// the socket they come no more, as the seam promises, unless `lateEvents` is set.
    class Socket : public std::enable_shared_from_this<Socket> {
     public:
        std::string url;
        std::vector<std::string> sent;  ///< what the client sent, oldest first
        std::optional<int> cancelCode;  ///< set once the client has cancelled
        bool lateEvents = false;

        bool gone() const { return cancelCode || destroyed_; }

        void accept() { fire(&WebSocket::Events::onOpen); }
        void frame(std::string bytes, bool binary = false) { fire(&WebSocket::Events::onFrame, bytes, binary); }
        void refuse(int status) { fire(&WebSocket::Events::onRefused, status); }
        void close(int code) { fire(&WebSocket::Events::onClosed, code); }
        void fail(std::string error) { fire(&WebSocket::Events::onFailed, error); }
        void failSend(std::string error) { fire(&WebSocket::Events::onSendFailed, error); }

        /// Takes out what the client has sent so far.
        std::vector<std::string> takeSent() { return std::exchange(sent, {}); }

     private:
        friend class FakeWebSockets;
        template <class Event, class... Values>
        void fire(Event event, Values... values) {
            queue_->post([self = shared_from_this(), event, values...] {
                if (!self->gone() || self->lateEvents) (self->events_.*event)(values...);
            });
        }
        SerialQueue* queue_ = nullptr;
        WebSocket::Events events_;
        bool destroyed_ = false;
    };

    explicit FakeWebSockets(SerialQueue& queue) : queue_(queue) {}

    /// The fake must outlive what it is given to.
    WebSocketFactory factory() {
        return [this] {
            all_.push_back(std::make_shared<Socket>());
            all_.back()->queue_ = &queue_;
            return std::make_unique<End>(all_.back());
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
        void open(const std::string& url, std::size_t, Events events) override {
            socket_->url = url;
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
