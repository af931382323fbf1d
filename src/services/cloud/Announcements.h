// Notices of the service to its users: an alert, and a maintenance that is under way.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "base/Preferences.h"
#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "base/WeakTask.h"
#include "services/cloud/FirebaseRESTAuth.h"

namespace vmr {

/// One for the process. It asks two documents of the service each minute while somebody is signed in. A poll that fails
/// leaves what is shown as it is and is reported to nobody. Main thread.
class Announcements {
 public:
    static constexpr double period = 60;  ///< seconds between two polls

    struct Alert {
        std::string id, title, message;  ///< without control characters
        bool operator==(const Alert&) const = default;
    };

    /// All three outlive it.
    Announcements(FirebaseRESTAuth& auth, Preferences& preferences, MainLoop& main);
    ~Announcements();
    Announcements(const Announcements&) = delete;
    Announcements& operator=(const Announcements&) = delete;

    Observable<std::optional<Alert>> announcement;       ///< the alert that is active and was not dismissed
    Observable<std::optional<std::string>> maintenance;  ///< its text, while there is one

    /// Polls now, after each sign-in and each `period`. Nothing when it runs already, or where there is no server for
    /// it.
    void start();
    void poll();
    /// Hides the present alert, in later runs too; one with another id is shown again.
    void dismiss();

    /// The preference that is "true" once the alert of this id was dismissed.
    static std::string dismissalKey(const std::string& id) { return "dismissed_alert_" + id; }

 private:
    /// What a document says, by the field's name; empty where the server says that there is no such document.
    struct Document {
        std::map<std::string, bool> flags;
        std::map<std::string, std::string> texts;
        bool isActive() const;
        std::optional<std::string> text(const char* name) const;
    };
    /// Gives nothing when it cannot be known what the document says, or whether there is one.
    void fetchDoc(const std::string& name, const std::string& token,
                  std::function<void(const std::optional<Document>&)> done);
    static std::optional<Document> read(const std::string& body);
    void showAlert(const Document& document);
    void showMaintenance(const Document& document);

    FirebaseRESTAuth& auth_;
    Preferences& preferences_;
    MainLoop& main_;
    SerialQueue::TimerId timer_ = SerialQueue::noTimer;
    Connection signedIn_;
    WeakTask whileThere_;
};

}  // namespace vmr
