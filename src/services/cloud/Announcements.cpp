#include "services/cloud/Announcements.h"

#include <utility>

#include "base/Json.h"
#include "base/Log.h"
#include "base/NumberText.h"

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

template <class Fields>
bool isActive(const Fields& fields) {
    const auto active = fields.find("active");
    const bool* value = active == fields.end() ? nullptr : std::get_if<bool>(&active->second);
    return value && *value;
}

template <class Fields>
std::optional<std::string> textOf(const Fields& fields, const char* name) {
    const auto found = fields.find(name);
    const std::string* value = found == fields.end() ? nullptr : std::get_if<std::string>(&found->second);
    return value ? std::optional(*value) : std::nullopt;
}
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

void Announcements::fetchDoc(const std::string& name, const std::string& token, GotDocument done) {
    HttpRequest request{
        "GET", auth_.endpoints().firestoreUrl + documents + name, {{"Authorization", "Bearer " + token}}};
    auth_.http().send(std::move(request), whileThere_([done = std::move(done)](const HttpResponse& response) {
                          constexpr int missing = 404;
                          if (!response.transportError && response.status == missing) return done(Document());
                          if (response.transportError || response.status < 200 || response.status > 299)
                              return done(std::nullopt);
                          done(read(response.body));
                      }));
}

// Of the service's typed values those that are used here.
std::optional<Announcements::Document> Announcements::read(const std::string& body) {
    const auto json = Json::parse(body);
    if (!json || !json->isObject()) return std::nullopt;
    Document document{true, {}};
    for (const auto& [key, value] : (*json)["fields"].members()) {
        const std::string name(key);
        if (const JsonView flag = value["booleanValue"]; flag.kind() == JsonView::Kind::boolean)
            document.fields[name] = flag.boolean();
        else if (const JsonView text = value["stringValue"]; text.isString())
            document.fields[name] = shownText(text.string());
        else if (const JsonView whole = value["integerValue"]; whole.isString() || whole.isNumber()) {
            // the service writes its integers as texts
            const auto number = whole.isString() ? parseInt(std::string(whole.string())) : whole.integer();
            if (number) document.fields[name] = *number;
        }
    }
    return document;
}

void Announcements::showAlert(const Document& document) {
    if (!isActive(document.fields)) {
        announcement = std::nullopt;
        return;
    }
    const std::string id = textOf(document.fields, "id").value_or("default");
    if (preferences_.get(dismissalKey(id)) == "true")
        announcement = std::nullopt;
    else
        announcement = Alert{id, textOf(document.fields, "title").value_or("Notice"),
                             textOf(document.fields, "message").value_or("")};
}

void Announcements::showMaintenance(const Document& document) {
    if (!isActive(document.fields)) {
        maintenance = std::nullopt;
        return;
    }
    const std::string message = textOf(document.fields, "message").value_or("");
    maintenance = message.empty() ? "Scheduled maintenance in progress." : message;
}

void Announcements::dismiss() {
    if (!announcement.get()) return;
    preferences_.set(dismissalKey(announcement.get()->id), "true");
    announcement = std::nullopt;
}

}  // namespace vmr
