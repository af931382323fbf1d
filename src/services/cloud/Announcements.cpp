#include "services/cloud/Announcements.h"

#include <utility>

#include "base/Json.h"
#include "base/Log.h"

namespace vmr {

namespace {
// As a banner shows it, which breaks lines by itself.
std::string shownText(std::string_view text) {
    std::string line(text);
    for (char& c : line)
        if (c == '\n' || c == '\r' || c == '\t') c = ' ';
    return harmlessText(line);
}

constexpr const char* documents = "/v1/projects/velmora-cloud-1a000/databases/(default)/documents/system_alerts/";
}  // namespace

Announcements::Announcements(FirebaseRESTAuth& auth, Preferences& preferences, MainLoop& main)
    : auth_(auth), preferences_(preferences), main_(main) {}

Announcements::~Announcements() {
    if (timer_ != SerialQueue::noTimer) main_.cancel(timer_);
}

void Announcements::start() {
    if (timer_ != SerialQueue::noTimer || auth_.endpoints().firestoreUrl.empty()) return;
    main_.post(whileThere_([this] { poll(); }));
    timer_ = main_.every(period, period, [this] { poll(); });
    signedIn_ = auth_.signedIn.connect([this] { poll(); });
}

void Announcements::poll() {
    auth_.token(whileThere_([this](const std::variant<std::string, AuthError>& result) {
        const auto* token = std::get_if<std::string>(&result);
        if (!token) return;
        fetchDoc("default", *token, [this, token = *token](const std::optional<Document>& document) {
            if (document) showAlert(*document);
            fetchDoc("maintenance", token, [this](const std::optional<Document>& state) {
                if (state) showMaintenance(*state);
            });
        });
    }));
}

void Announcements::fetchDoc(const std::string& name, const std::string& token,
                             std::function<void(const std::optional<Document>&)> done) {
    HttpRequest request{
        "GET", auth_.endpoints().firestoreUrl + documents + name, {{"Authorization", "Bearer " + token}}};
    auth_.http().send(std::move(request), whileThere_([done = std::move(done)](const HttpResponse& response) {
                          constexpr int missing = 404;
                          if (response.transportError) return done(std::nullopt);
                          if (response.status == missing) return done(Document());
                          done(response.status >= 200 && response.status <= 299 ? read(response.body) : std::nullopt);
                      }));
}

// The service tells the type of each value; those of other types are not used here.
std::optional<Announcements::Document> Announcements::read(const std::string& body) {
    const auto json = Json::parse(body);
    if (!json || !json->isObject()) return std::nullopt;
    Document document;
    for (const auto& [key, value] : (*json)["fields"].members()) {
        if (const JsonView flag = value["booleanValue"]; flag.kind() == JsonView::Kind::boolean)
            document.flags[std::string(key)] = flag.boolean();
        if (const JsonView text = value["stringValue"]; text.isString())
            document.texts[std::string(key)] = shownText(text.string());
    }
    return document;
}

bool Announcements::Document::isActive() const {
    const auto active = flags.find("active");
    return active != flags.end() && active->second;
}

std::optional<std::string> Announcements::Document::text(const char* name) const {
    const auto found = texts.find(name);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
}

void Announcements::showAlert(const Document& document) {
    const std::string id = document.text("id").value_or("default");
    if (document.isActive() && preferences_.get(dismissalKey(id)) != "true")
        announcement = Alert{id, document.text("title").value_or("Notice"), document.text("message").value_or("")};
    else
        announcement = std::nullopt;
}

void Announcements::showMaintenance(const Document& document) {
    const std::string message = document.text("message").value_or("");
    if (document.isActive())
        maintenance = message.empty() ? "Scheduled maintenance in progress." : message;
    else
        maintenance = std::nullopt;
}

void Announcements::dismiss() {
    if (!announcement.get()) return;
    preferences_.set(dismissalKey(announcement.get()->id), "true");
    announcement = std::nullopt;
}

}  // namespace vmr
