// WebSockets over TLS on an Asio loop.
#pragma once

#include "base/AsioLoop.h"
#include "services/net/ProxyFinder.h"
#include "services/net/WebSocket.h"

namespace vmr {

/// Sockets that live on `loop`, which must outlive the factory and every socket. `wss:` checks the certificate against
/// `TrustStore` and the host's name, from TLS 1.2 on, and goes through the proxy that `proxies` finds, which must be an
/// http: proxy. An address that takes over 10 s to connect to gives way to the host's next one; no other time limit
/// applies, neither to connecting nor to silence. A text message that is not UTF-8 fails the connection. `onClosed`
/// comes with the close frame; the connection itself may last 5 s longer.
WebSocketFactory makeBeastWebSockets(AsioLoop& loop,
                                     std::shared_ptr<ProxyFinder> proxies = std::make_shared<ProxyFinder>());

}  // namespace vmr
