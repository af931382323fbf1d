#include "relay/LoopbackListener.h"

#include <boost/asio/io_context.hpp>

namespace vmr::relay {

namespace {
using boost::asio::ip::tcp;
using boost::system::error_code;
constexpr double pauseAfterFailure = 0.1;  // seconds; accepting fails, for example, while no file descriptor is left
}  // namespace

std::optional<std::string> LoopbackListener::open(int port) {
    auto acceptor = std::make_shared<tcp::acceptor>(loop_.context());
    const tcp::endpoint address(boost::asio::ip::address_v4::loopback(), static_cast<unsigned short>(port));
    error_code failed;
    acceptor->open(address.protocol(), failed);
    if (!failed) acceptor->set_option(tcp::acceptor::reuse_address(true), failed);
    if (!failed) acceptor->bind(address, failed);
    if (!failed) acceptor->listen(boost::asio::socket_base::max_listen_connections, failed);
    if (failed) return "port " + std::to_string(port) + ": " + failed.message();
    port_ = acceptor->local_endpoint().port();
    acceptor_ = std::move(acceptor);
    accept();
    return std::nullopt;
}

void LoopbackListener::stop() {
    if (!acceptor_) return;
    error_code ignored;
    acceptor_->close(ignored);
    acceptor_.reset();
}

void LoopbackListener::accept() {
    acceptor_->async_accept([this, alive = std::weak_ptr(acceptor_)](error_code failed, tcp::socket socket) {
        if (alive.expired()) return;
        if (failed) {
            loop_.after(pauseAfterFailure, [this, alive] {
                if (!alive.expired()) accept();
            });
            return;
        }
        error_code ignored;
        socket.set_option(tcp::no_delay(true), ignored);
        onSocket_(std::move(socket));
        accept();
    });
}

}  // namespace vmr::relay
