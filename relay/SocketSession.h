// One WebSocket from its handshake to its end.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <memory>
#include <string>

#include "base/AsioLoop.h"
#include "base/Clock.h"
#include "relay/Accounts.h"
#include "relay/ChannelHub.h"
#include "relay/Faults.h"

namespace vmr::relay {

/// What all sockets share; must outlive them.
struct SocketWorld {
    AsioLoop& loop;
    const Clock& clock;
    Accounts& accounts;
    const Faults& faults;
    ChannelHub& hub;
};

/// Checks the token, greets, answers subscriptions and pings, and sends what the channels publish. The relay's thread.
class SocketSession : public Subscriber {
 public:
    /// Queued bytes above which a socket that does not read is dropped.
    static constexpr std::size_t mostQueued = 256u << 20;

    virtual void start() = 0;
    /// Ends the connection with a reset, at once.
    virtual void drop() = 0;
    /// Ends it with a close frame, after the message under way.
    virtual void close(int code) = 0;
    /// Whether it counts as one of the account's sockets.
    virtual bool admitted() const = 0;
    virtual bool greeted() const = 0;

    struct Events {
        std::function<bool()> mayEnter;                     ///< whether the account has room for one more
        std::function<void(const SocketSession&)> onEnded;  ///< once
    };
    static std::shared_ptr<SocketSession> make(SocketWorld& world, boost::asio::ip::tcp::socket socket, Events events);
};

}  // namespace vmr::relay
