#include "services/net/ProxyTunnel.h"

#include <openssl/evp.h>

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <memory>

namespace vmr {

namespace {

namespace http = boost::beast::http;
using boost::system::error_code;

std::string base64(const std::string& text) {
    std::string encoded((text.size() + 2) / 3 * 4 + 1, '\0');
    const int length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    encoded.resize(static_cast<std::size_t>(length));
    return encoded;
}

/// Kept alive by the operation under way.
struct Tunnel {
    http::request<http::empty_body> request;
    boost::beast::flat_buffer buffer;
    http::response_parser<http::empty_body> answer;
    std::function<void(const std::string&)> done;

    void finish(error_code error) const {
        if (error) return done("the proxy does not answer: " + error.message());
        if (answer.get().result_int() / 100 != 2)
            return done("the proxy answers HTTP " + std::to_string(answer.get().result_int()));
        done(buffer.size() == 0 ? "" : "the proxy sends more than an answer");
    }
};

}  // namespace

void openTunnel(boost::asio::ip::tcp::socket& socket, const Proxy& proxy, const std::string& target,
                std::function<void(const std::string&)> done) {
    auto tunnel = std::make_shared<Tunnel>();
    tunnel->done = std::move(done);
    tunnel->request = {http::verb::connect, target, 11};
    tunnel->request.set(http::field::host, target);
    if (!proxy.user.empty())
        tunnel->request.set(http::field::proxy_authorization, "Basic " + base64(proxy.user + ":" + proxy.password));
    tunnel->answer.skip(true);  // what follows the header is the other machine's
    http::async_write(socket, tunnel->request, [tunnel, &socket](error_code error, std::size_t) {
        if (error) return tunnel->finish(error);
        http::async_read_header(socket, tunnel->buffer, tunnel->answer,
                                [tunnel](error_code failed, std::size_t) { tunnel->finish(failed); });
    });
}

}  // namespace vmr
