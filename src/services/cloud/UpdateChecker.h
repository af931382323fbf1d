// Whether a newer build of the program can be downloaded.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "base/WeakTask.h"
#include "services/net/HttpClient.h"

namespace vmr {

/// One for the process. Builds are compared, never version texts. A check that fails changes nothing and is reported to
/// nobody. Main thread.
class UpdateChecker {
 public:
    static constexpr double period = 21600;  ///< seconds between two checks

    struct Info {
        std::string version;  ///< for the person
        std::int64_t build = 0;
        std::string url;  ///< where a person downloads it
        std::string notes;
        bool operator==(const Info&) const = default;
    };

    /// `site` is the download site's address, empty for none; `localBuild` is the program's own. Client and loop
    /// outlive it.
    UpdateChecker(HttpClient& http, std::string site, std::int64_t localBuild, MainLoop& main);
    ~UpdateChecker();
    UpdateChecker(const UpdateChecker&) = delete;
    UpdateChecker& operator=(const UpdateChecker&) = delete;

    Observable<std::optional<Info>> available;  ///< a newer build

    /// Checks now and each `period`. Nothing when it runs already, or where there is no site.
    void start();
    /// `done` is called when `available` is up to date, or could not be brought up to date.
    void check(std::function<void()> done = {});
    /// The menu's command. Gives what to tell the person, title and text; nothing when there is a newer build, which
    /// `available` then holds. A check that fails finds nothing newer.
    struct Answer {
        std::string title, text;
    };
    void checkManually(std::function<void(std::optional<Answer>)> tell);

 private:
    void take(const HttpResponse& response);

    HttpClient& http_;
    const std::string site_;
    const std::int64_t localBuild_;
    MainLoop& main_;
    SerialQueue::TimerId timer_ = SerialQueue::noTimer;
    WeakTask whileThere_;
};

}  // namespace vmr
