// What the service and its clients tell each other beside the feed: presence, notices, releases.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "base/Version.h"
#include "services/cloud/Announcements.h"
#include "services/cloud/PresenceReporter.h"
#include "services/cloud/TemplatesService.h"
#include "services/cloud/UpdateChecker.h"
#include "support/pane/FakeHttpClient.h"
#include "support/time/TestTime.h"

namespace vmr::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

class Cloud : public testing::Test {
 protected:
    Cloud() {
        auth.idToken = "id1";
        auth.refreshToken = "re1";
        auth.expiresAt = time.monotonic() + 100000;
    }
    static Endpoints places(const std::string& all) { return {"", all, all, all, all, all, "key"}; }

    /// The n-th request, as "METHOD url" with the body's action, and whether it carries the token.
    std::vector<std::string> taken() {
        std::vector<std::string> out;
        for (const HttpRequest& request : std::exchange(http.requests, {})) {
            std::string line = request.method + " " + request.url.substr(request.url.find('/', 8));
            if (!request.body.empty() && request.body.front() == '{')
                line += " " + json::parse(request.body).value("action", "");
            for (const auto& [name, value] : request.headers)
                if (name == "Authorization") line += " " + value;
            out.push_back(line);
        }
        return out;
    }

    TestTime time;
    TestQueue main{time};
    FakeHttpClient http{main};
    MemoryPreferences preferences;
    FirebaseRESTAuth auth{places("https://c.test"), http, preferences, time};
};

struct Presence : Cloud {
    PresenceReporter reporter{auth, main, "tab1", [this] { return symbol; }, [] { return std::string("ETF"); }};
    std::string symbol = "NQ";
};

TEST_F(Presence, ReportsEachMinuteAndAtTheEnds) {
    const std::string path = "POST /updatePresence ", token = " Bearer id1";
    reporter.start();
    reporter.start();
    time.advance(0.1);
    ASSERT_EQ(http.requests.size(), 1u);
    EXPECT_EQ(json::parse(http.requests[0].body),
              json({{"symbol", "NQ"}, {"gexSource", "ETF"}, {"action", "online"}, {"tabId", "tab1"}, {"page", "mac"}}));
    EXPECT_FALSE(http.requests[0].lastWord);
    EXPECT_THAT(taken(), ElementsAre(path + "online" + token));
    time.advance(59.8);
    EXPECT_THAT(taken(), IsEmpty());
    symbol.clear();
    time.advance(60.2);
    EXPECT_EQ(json::parse(http.requests.at(0).body)["symbol"], "unknown");
    EXPECT_THAT(taken(), ElementsAre(path + "heartbeat" + token, path + "heartbeat" + token));
    reporter.setPageKind("mac-dual");
    reporter.setPageKind("mac-dual");
    EXPECT_EQ(json::parse(http.requests.at(0).body)["page"], "mac-dual");
    EXPECT_THAT(taken(), ElementsAre(path + "heartbeat" + token));
    symbol = "ES";
    reporter.stop();
    reporter.stop();
    auth.signOut();
    EXPECT_TRUE(http.requests.at(0).lastWord);
    EXPECT_EQ(json::parse(http.requests[0].body)["symbol"], "unknown");
    EXPECT_EQ(json::parse(http.requests[0].body)["gexSource"], "unknown");
    EXPECT_THAT(taken(), ElementsAre(path + "offline" + token));
    reporter.setPageKind("mac");
    time.advance(600);
    EXPECT_THAT(taken(), IsEmpty()) << "it has stopped";
    reporter.start();
    EXPECT_THAT(taken(), IsEmpty()) << "there is no session";
}

TEST_F(Presence, AnOldTokenIsRefreshedOnceForAReportAndAFailureEndsIt) {
    auth.expiresAt = 0;
    reporter.start();
    EXPECT_THAT(taken(), ElementsAre("POST /v1/token?key=key"));
    http.answer(500, "");
    time.advance(1);
    EXPECT_THAT(taken(), IsEmpty());
    time.advance(60);
    http.answer(200, R"({"id_token":"id2","refresh_token":"re2","expires_in":"3600"})");
    time.advance(1);
    EXPECT_THAT(taken(), ElementsAre("POST /v1/token?key=key", "POST /updatePresence heartbeat Bearer id2"));
}

struct Notices : Cloud {
    static std::string alert(const std::string& fields) {
        return R"({"fields":{"active":{"booleanValue":true})" + fields + "}}";
    }
    /// The poll that comes within `wait` seconds, with these two answers.
    void poll(HttpResponse first, HttpResponse second, double wait = 60) {
        time.advance(wait);
        http.answer(std::move(first));
        time.runUntilIdle();
        http.answer(std::move(second));
        time.runUntilIdle();
        EXPECT_THAT(taken(), ElementsAre("GET " + documents + "default Bearer id1",
                                         "GET " + documents + "maintenance Bearer id1"));
    }
    std::string shown() const {
        const auto& alert = announcements.announcement.get();
        return (alert ? alert->id + "|" + alert->title + "|" + alert->message : "-") + " " +
               announcements.maintenance->value_or("-");
    }
    const std::string documents = "/v1/projects/velmora-cloud-1a000/databases/(default)/documents/system_alerts/";
    Announcements announcements{auth, preferences, main};
};

TEST_F(Notices, ShowWhatTheTwoDocumentsSay) {
    announcements.start();
    announcements.start();
    const HttpResponse missing{404, "{}", {}}, down{0, "", "no network"}, broken{500, "{}", {}}, odd{200, "[", {}};
    poll(missing, missing, 0.1);
    const HttpResponse full{
        200,
        alert(
            R"(,"id":{"stringValue":"n1"},"title":{"stringValue":"Ti\u0007tle"},"message":{"stringValue":"M\nN"},"n":{"integerValue":"3"},"x":{"mapValue":{}})"),
        {}};
    const HttpResponse bare{200, alert(R"(,"message":{"stringValue":""})"), {}};
    const HttpResponse quiet{200, R"({"fields":{"active":{"booleanValue":false},"message":{"stringValue":"M"}}})", {}};
    const struct {
        HttpResponse first, second;
        const char* shown;
    } polls[] = {
        {full, bare, "n1|Ti\\x07tle|M N Scheduled maintenance in progress."},
        {down, broken, "n1|Ti\\x07tle|M N Scheduled maintenance in progress."},
        {odd, quiet, "n1|Ti\\x07tle|M N -"},
        {missing, full, "- M N"},
        {bare, missing, "default|Notice| -"},
        {quiet, missing, "- -"},
    };
    for (const auto& [first, second, expected] : polls) {
        poll(first, second);
        EXPECT_EQ(shown(), expected) << first.body << second.body;
    }
}

TEST_F(Notices, ADismissedOneStaysHiddenUntilItsIdChanges) {
    announcements.announcement = Announcements::Alert{"n1", "T", "M"};
    announcements.dismiss();
    EXPECT_EQ(shown(), "- -");
    EXPECT_EQ(preferences.get("dismissed_alert_n1"), "true");
    const auto pollFor = [&](Announcements& one, const std::string& id) {
        one.poll();
        http.answer(200, alert(R"(,"id":{"stringValue":")" + id + "\"}"));
        time.runUntilIdle();
        return one.announcement->has_value();
    };
    Announcements nextRun(auth, preferences, main);
    EXPECT_FALSE(pollFor(nextRun, "n1"));
    http.answer(404, "");
    EXPECT_TRUE(pollFor(nextRun, "n2"));
}

TEST_F(Cloud, ANewerBuildIsOfferedWhateverItsVersionText) {
    UpdateChecker checker(http, "https://d.test", 7, main);
    std::vector<std::string> told;
    const struct {
        int status;
        const char *body, *shown;
    } checks[] = {
        {200, R"({"build":8,"version":"0.0.9","url":"https://x","notes":"n"})", "8 0.0.9 https://x n"},
        {200, R"({"version":"9"})", "8 0.0.9 https://x n"},
        {503, "", "8 0.0.9 https://x n"},
        {200, R"({"build":9})", "9  https://d.test/downloads "},
        {200, R"({"build":7,"version":"9"})", "-"},
        {200, R"([{"build":9}])", "-"},
    };
    for (const auto& [status, body, shown] : checks) {
        checker.checkManually(
            [&told](const auto& answer) { told.push_back(answer ? answer->title + " " + answer->text : ""); });
        http.answer(status, body);
        time.runUntilIdle();
        const auto& info = checker.available.get();
        EXPECT_EQ(info ? std::to_string(info->build) + " " + info->version + " " + info->url + " " + info->notes : "-",
                  shown)
            << body;
        EXPECT_EQ(told.back(),
                  info ? "" : "You're up to date Velmora " + std::string(versionText) + " is the latest version.");
    }
    taken();
    checker.start();
    checker.start();
    time.advance(21601);
    EXPECT_THAT(taken(), ElementsAre("GET /downloads/version.json", "GET /downloads/version.json"));
    UpdateChecker nowhere(http, "", 7, main);
    nowhere.start();
    nowhere.checkManually([&told](const auto& answer) { told.push_back(answer->title); });
    EXPECT_THAT(taken(), IsEmpty());
    EXPECT_EQ(told.back(), "You're up to date");
}

TEST_F(Cloud, ATemplateReplyIsReadWhateverItsStatus) {
    const std::string slots =
        R"("slot_1":7,"slot_2":{"config":[],"atmOffset":"3","savedAt":5},)"
        R"("slot_3":{"config":{"a":{"b":[1]},"c":"x"},"atmOffset":4,"savedAt":"2026-06-10T14:00:05.123Z"},"slot_4":{})";
    const struct {
        HttpResponse answer;
        const char* told;
    } replies[] = {
        {{500, "{\"result\":{\"preferred\":\"slot_3\"," + slots + "}}", {}},
         R"(slot_3 slot_2{} - - slot_3{a={"b":[1]} c="x" } 4 2026-06-10T14:00:05.123Z)"},
        {{200, "{\"result\":{\"preferred\":3," + slots + "}}", {}},
         R"(- slot_2{} - - slot_3{a={"b":[1]} c="x" } 4 2026-06-10T14:00:05.123Z)"},
        {{200, R"({"result":[1],"more":1})", {}}, "-"},
        {{200, R"({"error":null})", {}}, "-"},
        {{200, R"({"error":{"message":"Quota\u0007"},"result":{}})", {}}, "Quota\\x07"},
        {{200, R"({"error":{"message":5}})", {}}, "Template service error"},
        {{404, R"({"error":"gone"})", {}}, "Template service error"},
        {{200, "[]", {}}, "The response is not valid JSON."},
        {{503, "<html>", {}}, "The response is not valid JSON."},
        {{0, "", "no network"}, "no network"},
    };
    for (const auto& [answer, expected] : replies) {
        std::string told;
        TemplatesService::load("NQ_QQQ", auth, [&](const std::variant<TemplatesService::List, std::string>& result) {
            if (const auto* problem = std::get_if<std::string>(&result)) return void(told = *problem);
            const auto& list = std::get<TemplatesService::List>(result);
            told = list.preferred.value_or("-");
            for (const auto& [key, slot] : list.savedSlots) {
                told += " " + key + "{";
                for (const auto& [name, value] : slot.config) told += name + "=" + value + " ";
                told += "} " + (slot.atmOffset ? std::to_string(int(*slot.atmOffset)) : "-") + " " +
                        slot.savedAt.value_or("-");
            }
        });
        http.answer(answer);
        time.runUntilIdle();
        EXPECT_EQ(told, expected) << answer.body;
    }
}

TEST_F(Cloud, TemplatesAreAskedForAndSavedWithAFreshToken) {
    const auto posted = [](const HttpRequest& request) {
        EXPECT_EQ(request.timeoutSeconds, 60);
        std::string line = request.method + " " + request.url;
        for (const auto& [name, value] : request.headers) line += " " + name + "=" + value;
        return line + " " + (request.body.front() == '{' ? json::parse(request.body).dump() : "");
    };
    const auto unheard = [](const auto&) {};
    TemplatesService::save("NQ_QQQ", "slot_2", {{"k", "[1]"}, {"\"", "{}"}}, 120.5, auth, unheard);
    auth.expiresAt = 0;
    TemplatesService::load("ES_\"", auth, unheard);
    http.answer(200, R"({"id_token":"id2","refresh_token":"re2","expires_in":"3600"})", 1);
    time.runUntilIdle();
    const std::string head = " Content-Type=application/json Authorization=Bearer ";
    ASSERT_EQ(http.requests.size(), 3u);
    EXPECT_EQ(posted(http.requests[0]), "POST https://c.test/saveChartTemplate" + head +
                                            R"(id1 {"data":{"atmOffset":120.5,"config":{"\"":{},"k":[1]},)"
                                            R"("slot":"slot_2","symbolSource":"NQ_QQQ"}})");
    EXPECT_EQ(posted(http.requests[2]),
              "POST https://c.test/loadChartTemplates" + head + R"(id2 {"data":{"symbolSource":"ES_\""}})");

    FirebaseRESTAuth nowhere(Endpoints{}, http, preferences, time);
    for (FirebaseRESTAuth* of : {&auth, &nowhere}) {
        of->signOut();
        std::string problem;
        TemplatesService::load("NQ_QQQ", *of, [&](const auto& result) { problem = std::get<std::string>(result); });
        EXPECT_EQ(problem, of == &auth ? "Not signed in."
                                       : "No template service is configured. Set VMR_FUNCTIONS_URL to its address.");
    }
    EXPECT_EQ(http.requests.size(), 3u);
}

}  // namespace
}  // namespace vmr::test
