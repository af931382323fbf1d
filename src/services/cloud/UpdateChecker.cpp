#include "services/cloud/UpdateChecker.h"

#include <utility>

#include "base/Json.h"
#include "base/Log.h"
#include "base/Version.h"

namespace vmr {

UpdateChecker::UpdateChecker(HttpClient& http, std::string site, std::int64_t localBuild, MainLoop& main)
    : http_(http), site_(std::move(site)), localBuild_(localBuild), main_(main) {}

UpdateChecker::~UpdateChecker() {
    if (timer_ != SerialQueue::noTimer) main_.cancel(timer_);
}

void UpdateChecker::start() {
    if (timer_ != SerialQueue::noTimer || site_.empty()) return;
    check();
    timer_ = main_.every(period, period, [this] { check(); });
}

void UpdateChecker::check(std::function<void()> done) {
    if (site_.empty()) {
        if (done) done();
        return;
    }
    http_.send({"GET", site_ + "/downloads/version.json"},
               whileThere_([this, done = std::move(done)](const HttpResponse& response) {
                   take(response);
                   if (done) done();
               }));
}

void UpdateChecker::take(const HttpResponse& response) {
    if (response.transportError || response.status < 200 || response.status > 299) return;
    const auto json = Json::parse(response.body);
    if (!json || (*json)["build"].kind() != JsonView::Kind::integer) return;
    const auto text = [&json](const char* key) { return harmlessText((*json)[key].string()); };
    Info info{text("version"), (*json)["build"].integer(), text("url"), text("notes")};
    if (info.url.empty()) info.url = site_ + "/downloads";
    if (info.build > localBuild_)
        available = std::move(info);
    else
        available = std::nullopt;
}

void UpdateChecker::checkManually(std::function<void(std::optional<Answer>)> tell) {
    check([this, tell = std::move(tell)] {
        if (available.get()) return tell(std::nullopt);
        tell(Answer{"You're up to date", "Velmora " + std::string(versionText) + " is the latest version."});
    });
}

}  // namespace vmr
