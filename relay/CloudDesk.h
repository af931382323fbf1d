// The service's other desks: presence reports, notices to users and the newest release.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "relay/Accounts.h"
#include "relay/RestMessages.h"

namespace vmr::relay {

/// Keeps what clients report, and answers what a person set on the console. One thread.
class CloudDesk {
 public:
    /// A bad report, or one beyond so many panes, is refused.
    static constexpr std::size_t mostReports = 100;

    explicit CloudDesk(const Accounts& accounts) : accounts_(accounts) {}

    /// Answers /updatePresence, the two documents of system_alerts and /downloads/version.json; nothing for any other
    /// path. All but the last need the account's identity token.
    std::optional<RestReply> answer(const RestRequest& request, std::string_view path);

    // The console's commands; each answers "ok ..." or "error: ...".
    /// What each pane reported last, by tab.
    std::string presence() const;
    /// "ID TITLE | MESSAGE", or "off".
    std::string notice(std::string_view text);
    /// The text, nothing for one without a text, or "off".
    std::string maintenance(std::string_view text);
    std::string release(const std::string& build, const std::string& version, const std::string& url);

 private:
    struct Notice {
        std::string id, title, message;
    };
    struct Release {
        std::int64_t build;
        std::string version, url;
    };
    struct Report {
        std::string symbol, gexSource, action, page;
        int count = 0;
    };
    RestReply takeReport(const std::string& body);
    RestReply document(std::string_view name) const;

    const Accounts& accounts_;
    std::map<std::string, Report> reports_;  // by tab
    std::optional<Notice> notice_;
    std::optional<std::string> maintenance_;
    std::optional<Release> release_;
};

}  // namespace vmr::relay
