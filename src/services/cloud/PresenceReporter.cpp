#include "services/cloud/PresenceReporter.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace vmr {

PresenceReporter::PresenceReporter(FirebaseRESTAuth& auth, MainLoop& main, std::string tabId, Word currentSymbol,
                                   Word currentSource)
    : auth_(auth),
      main_(main),
      tabId_(std::move(tabId)),
      currentSymbol_(std::move(currentSymbol)),
      currentSource_(std::move(currentSource)),
      sessionEnds_(auth.sessionEnds.connect([this] { stop(); })) {}

void PresenceReporter::start() {
    if (started_ || auth_.endpoints().functionsUrl.empty()) return;
    started_ = true;
    send("online");
    timer_ = main_.every(period, period, [this] { send("heartbeat"); });
}

void PresenceReporter::stop() {
    if (!started_) return;
    main_.cancel(timer_);
    send("offline");
    started_ = false;
}

void PresenceReporter::setPageKind(const std::string& kind) {
    if (std::exchange(pageKind_, kind) != kind && started_) send("heartbeat");
}

void PresenceReporter::send(const std::string& action) {
    const bool leaving = action == "offline";
    const auto word = [leaving](const Word& ask) {
        const std::string known = leaving ? std::string() : ask();
        return known.empty() ? std::string("unknown") : known;
    };
    const nlohmann::json body{{"symbol", word(currentSymbol_)},
                              {"gexSource", word(currentSource_)},
                              {"action", action},
                              {"tabId", tabId_},
                              {"page", pageKind_}};
    // what is sent no longer needs the reporter: the last word comes after it
    auth_.token([&auth = auth_, leaving, text = body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)](
                    const std::variant<std::string, AuthError>& result) {
        const auto* token = std::get_if<std::string>(&result);
        if (!token) return;
        HttpRequest request{"POST",
                            auth.endpoints().functionsUrl + "/updatePresence",
                            {{"Content-Type", "application/json"}, {"Authorization", "Bearer " + *token}},
                            text,
                            60,
                            leaving};
        auth.http().send(std::move(request), [](const HttpResponse&) {});
    });
}

}  // namespace vmr
