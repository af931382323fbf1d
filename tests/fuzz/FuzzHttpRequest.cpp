// Any bytes as what a client sends to the practice relay's sign-in port.
#include <boost/beast/http.hpp>

#include "FuzzEntry.h"
#include "base/Json.h"
#include "relay/Query.h"
#include "relay/RestApi.h"

void vmr::fuzz::take(std::string_view text) {
    namespace http = boost::beast::http;
    http::request_parser<http::string_body> parser;
    parser.eager(true);
    boost::system::error_code failed;
    parser.put(boost::asio::buffer(text.data(), text.size()), failed);
    if (failed || !parser.is_done()) return;
    const auto& request = parser.get();
    const auto plain = [](auto view) { return std::string(view.data(), view.size()); };
    const SystemClock clock;
    relay::Accounts accounts(clock, 3600);
    const relay::Faults faults;
    relay::RestApi api(accounts, faults, clock);
    const auto reply = api.answer({plain(request.method_string()), plain(request.target()), request.body()});
    require(reply.status >= 200 && reply.status < 600 && Json::parse(reply.body).has_value());
    const std::string target = plain(request.target());
    require(relay::queryValue(relay::queryOf(target), "token").value_or("").size() <= target.size());
}
