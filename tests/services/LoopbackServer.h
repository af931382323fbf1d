// A server on this machine whose every connection plays a script of the test.
#pragma once

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace vmr::test {

/// Accepts on a free port. Each connection runs `script` with blocking calls on a thread of its own; a socket error
/// ends it silently, which is how a script learns that its client has gone.
class LoopbackServer {
 public:
    using Socket = boost::asio::ip::tcp::socket;
    explicit LoopbackServer(std::function<void(Socket)> script);
    /// Waits for the scripts to end: destroy the clients first.
    ~LoopbackServer();

    unsigned short port() const { return port_; }
    /// "SCHEME://HOST:PORT/"
    std::string url(const std::string& scheme, const std::string& host = "127.0.0.1") const {
        return scheme + "://" + host + ":" + std::to_string(port_) + "/";
    }

 private:
    void acceptAll();

    boost::asio::io_context context_;
    boost::asio::ip::tcp::acceptor acceptor_;
    const unsigned short port_;
    const std::function<void(Socket)> script_;
    std::vector<std::thread> connections_;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

/// Reads until the client ends the connection.
template <class Stream>
void waitForEnd(Stream& stream) {
    char bytes[4096];
    boost::system::error_code error;
    while (!error) stream.read_some(boost::asio::buffer(bytes), error);
}

}  // namespace vmr::test
