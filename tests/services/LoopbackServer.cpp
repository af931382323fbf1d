#include "LoopbackServer.h"

namespace vmr::test {

using boost::asio::ip::tcp;

LoopbackServer::LoopbackServer(std::function<void(Socket)> script)
    : acceptor_(context_, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0)),
      port_(acceptor_.local_endpoint().port()),
      script_(std::move(script)),
      thread_([this] { acceptAll(); }) {}

LoopbackServer::~LoopbackServer() {
    ending_ = true;
    Socket wake(context_);
    boost::system::error_code ignored;
    wake.connect(tcp::endpoint(boost::asio::ip::address_v4::loopback(), port_), ignored);
    thread_.join();
    for (auto& connection : connections_) connection.join();
}

void LoopbackServer::acceptAll() {
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

}  // namespace vmr::test
