#include "relay/SocketServer.h"

namespace vmr::relay {

SocketServer::SocketServer(SocketWorld world)
    : world_(world), listener_(world.loop, [this](boost::asio::ip::tcp::socket socket) { take(std::move(socket)); }) {}

void SocketServer::take(boost::asio::ip::tcp::socket socket) {
    auto session = SocketSession::make(world_, std::move(socket),
                                       {[this] { return sockets().size() < mostPerAccount; },
                                        [this](const SocketSession& ended) { sessions_.erase(&ended); }});
    sessions_.emplace(session.get(), session);
    session->start();
}

void SocketServer::stop() {
    listener_.stop();
    const auto all = sessions_;
    for (const auto& entry : all) entry.second->drop();
}

std::vector<std::shared_ptr<SocketSession>> SocketServer::sockets() const {
    std::vector<std::shared_ptr<SocketSession>> found;
    for (const auto& entry : sessions_) {
        if (entry.second->admitted()) found.push_back(entry.second);
    }
    return found;
}

}  // namespace vmr::relay
