// All WebSockets of the relay.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "relay/LoopbackListener.h"
#include "relay/SocketSession.h"

namespace vmr::relay {

/// Accepts sockets and knows those that are open. Used on the relay's thread.
class SocketServer {
 public:
    static constexpr std::size_t mostPerAccount = 4;  ///< one more is accepted and closed with code 4006

    explicit SocketServer(SocketWorld world);

    std::optional<std::string> open(int port) { return listener_.open(port); }
    int port() const { return listener_.port(); }
    /// Closes the port and drops every socket.
    void stop();

    /// The account's sockets.
    std::vector<std::shared_ptr<SocketSession>> sockets() const;

 private:
    void take(boost::asio::ip::tcp::socket socket);

    SocketWorld world_;
    LoopbackListener listener_;
    std::map<const SocketSession*, std::shared_ptr<SocketSession>> sessions_;
};

}  // namespace vmr::relay
