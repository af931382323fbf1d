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
    explicit LoopbackServer(std::function<void(Socket)> script)
        : script_(std::move(script)), thread_([this] { acceptAll(); }) {}
    /// Waits for the scripts to end: destroy the clients first.
    ~LoopbackServer() {
        ending_ = true;
        Socket wake(context_);
        boost::system::error_code ignored;
        wake.connect({boost::asio::ip::address_v4::loopback(), port_}, ignored);
        thread_.join();
        for (auto& connection : connections_) connection.join();
    }

    /// "SCHEME://HOST:PORT/"
    std::string url(const std::string& scheme, const std::string& host = "127.0.0.1") const {
        return scheme + "://" + host + ":" + std::to_string(port_) + "/";
    }

 private:
    void acceptAll() {
        while (true) {
            boost::system::error_code error;
            Socket socket(context_);
            acceptor_.accept(socket, error);
            if (ending_) return;
            if (error) continue;
            connections_.emplace_back([this, held = std::make_shared<Socket>(std::move(socket))] {
                try {
                    script_(std::move(*held));
                } catch (const boost::system::system_error&) {
                }
            });
        }
    }

    boost::asio::io_context context_;
    boost::asio::ip::tcp::acceptor acceptor_{context_, {boost::asio::ip::address_v4::loopback(), 0}};
    const unsigned short port_ = acceptor_.local_endpoint().port();
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
