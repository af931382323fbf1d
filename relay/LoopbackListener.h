// A listening port on this machine's own address.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/AsioLoop.h"

namespace vmr::relay {

/// Listens on 127.0.0.1 and hands over what connects. Used on its loop's thread.
class LoopbackListener {
 public:
    using OnSocket = std::function<void(boost::asio::ip::tcp::socket)>;

    LoopbackListener(AsioLoop& loop, OnSocket onSocket) : loop_(loop), onSocket_(std::move(onSocket)) {}

    /// Port 0 takes a free one. Nothing on success, else what is wrong.
    std::optional<std::string> open(int port);
    int port() const { return port_; }
    void stop();

 private:
    void accept();

    AsioLoop& loop_;
    OnSocket onSocket_;
    std::shared_ptr<boost::asio::ip::tcp::acceptor> acceptor_;
    int port_ = 0;
};

}  // namespace vmr::relay
