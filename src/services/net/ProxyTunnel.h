// A way through an HTTP proxy to another machine.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <string>

#include "services/net/NetworkRules.h"

namespace vmr {

/// Asks the proxy, to which `socket` is connected, for a connection to `target` ("host:port"). `done` gets the empty
/// text when the socket leads there, else what went wrong; the socket must live until then. No time limit of its own.
void openTunnel(boost::asio::ip::tcp::socket& socket, const Proxy& proxy, const std::string& target,
                std::function<void(const std::string& problem)> done);

}  // namespace vmr
