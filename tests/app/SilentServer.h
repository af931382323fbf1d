// A server that takes connections and says nothing.
#pragma once

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

namespace vmr {

class SilentServer {
 public:
    SilentServer() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        ::bind(listening_, reinterpret_cast<sockaddr*>(&address), size);
        ::listen(listening_, 8);
        ::getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
    }
    ~SilentServer() { ::close(listening_); }
    SilentServer(const SilentServer&) = delete;

    std::string url(const std::string& scheme) const { return scheme + "://127.0.0.1:" + std::to_string(port_) + "/"; }

    /// Whether somebody has connected by `seconds` from now.
    bool isCalled(double seconds) const {
        pollfd waiting{listening_, POLLIN, 0};
        return ::poll(&waiting, 1, static_cast<int>(seconds * 1000)) == 1;
    }

 private:
    const int listening_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int port_ = 0;
};

}  // namespace vmr
