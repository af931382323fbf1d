// The session of the process, and the account calls.
#include <gmock/gmock.h>

#include "FakeHttpClient.h"
#include "services/FirebaseRESTAuth.h"
#include "support/TestTime.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* granted =
    R"({"idToken":"id1","refreshToken":"re1","expiresIn":"3600","localId":"uid1","email":"other@x"})";
constexpr const char* refreshed = R"({"id_token":"id2","refresh_token":"re2","expires_in":"3600","user_id":"uid2"})";

class Auth : public testing::Test {
 protected:
    static Endpoints places() {
        Endpoints endpoints;
        endpoints.identityUrl = "https://id.test";
        endpoints.secureTokenUrl = "https://token.test";
        endpoints.apiKey = "key 1";
        return endpoints;
    }
    void signIn(int status, const std::string& body) {
        auth.signIn("me@x", "pass\"word", [this](const std::optional<AuthError>& error) { note(error); });
        http.answer(status, body);
        time.runUntilIdle();
    }
    void refresh() {
        auth.refresh([this](const std::variant<std::string, AuthError>& result) {
            if (const auto* token = std::get_if<std::string>(&result))
                results.push_back("token " + *token);
            else
                note(std::get<AuthError>(result));
        });
    }
    void note(const std::optional<AuthError>& error) { results.push_back(error ? error->text() : "done"); }
    std::string session() const {
        return auth.idToken.value_or("-") + " " + auth.refreshToken.value_or("-") + " " + auth.localId.value_or("-") +
               " " + auth.email.value_or("-");
    }
    std::vector<std::string> takeResults() {
        time.runUntilIdle();
        return std::exchange(results, {});
    }

    TestTime time{1781100000.0, 50.0};  // market time runs fast; a token lives in real time
    TestQueue main{time};
    FakeHttpClient http{main};
    MemoryPreferences preferences;
    FirebaseRESTAuth auth{places(), http, preferences, time};
    std::vector<std::string> results;
};

TEST_F(Auth, SignInSendsTheRequestAndKeepsTheSession) {
    signIn(200, granted);
    EXPECT_THAT(takeResults(), ElementsAre("done"));
    const auto& request = http.requests.at(0);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url, "https://id.test/v1/accounts:signInWithPassword?key=key%201");
    EXPECT_THAT(request.headers, ElementsAre(Pair("Content-Type", "application/json")));
    EXPECT_EQ(request.body, R"({"email":"me@x","password":"pass\"word","returnSecureToken":true})");
    EXPECT_EQ(request.timeoutSeconds, 60);
    EXPECT_EQ(session(), "id1 re1 uid1 me@x");
    EXPECT_THAT(preferences.values(), ElementsAre(Pair("vmr.auth.email", "me@x"), Pair("vmr.auth.refreshToken", "re1"),
                                                  Pair("vmr.auth.uid", "uid1")));
    time.advance(3539.9);
    EXPECT_TRUE(auth.tokenIsLive());
    time.advance(0.2);
    EXPECT_FALSE(auth.tokenIsLive());
}

TEST_F(Auth, RefreshSendsTheTokenRawAndRotatesIt) {
    signIn(200, R"({"idToken":"i","refreshToken":"r+/=&","expiresIn":"30"})");
    EXPECT_FALSE(auth.tokenIsLive());  // a life within the margin is over at once
    EXPECT_EQ(auth.localId, std::nullopt);
    refresh();
    http.answer(200, refreshed);
    EXPECT_THAT(takeResults(), ElementsAre("done", "token id2"));
    const auto& request = http.requests.at(1);
    EXPECT_EQ(request.url, "https://token.test/v1/token?key=key%201");
    EXPECT_THAT(request.headers, ElementsAre(Pair("Content-Type", "application/x-www-form-urlencoded")));
    EXPECT_EQ(request.body, "grant_type=refresh_token&refresh_token=r+/=&");
    EXPECT_EQ(session(), "id2 re2 uid2 me@x");
    EXPECT_DOUBLE_EQ(auth.expiresAt, time.monotonic() + 3540);

    refresh();
    http.answer(200, R"({"id_token":"id3","refresh_token":"re3","expires_in":"1e2","user_id":"somebody else"})");
    takeResults();
    EXPECT_EQ(session(), "id3 re3 uid2 me@x");
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), "re3");
}

TEST_F(Auth, AFailedCallIsToldAndChangesNothing) {
    signIn(200, granted);
    takeResults();
    const double until = auth.expiresAt;
    struct Case {
        int status;
        const char* body;
        const char* text;
    };
    const Case cases[] = {
        {400, R"({"error":{"message":"INVALID_PASSWORD"}})", "Auth error (400): INVALID_PASSWORD"},
        {400, "", "Auth error (400): request failed"},
        {503, "<html>", "Auth error (503): request failed"},
        {302, R"({"error":"text"})", "Auth error (302): request failed"},
        {403, R"({"error":{"message":5}})", "Auth error (403): request failed"},
        {199, R"([{"error":{"message":"X"}}])", "Auth error (199): request failed"},
        {200, "not JSON", "The response is not valid JSON."},
        {200, "", "The response is not valid JSON."},
        {200, "[1]", "Unexpected auth response."},
        {200, R"({"idToken":"i","refreshToken":"r"})", "Unexpected auth response."},
        {200, R"({"idToken":"i","refreshToken":"r","expiresIn":3600})", "Unexpected auth response."},
        {200, R"({"idToken":"i","refreshToken":"r","expiresIn":" 3600"})", "Unexpected auth response."},
        {200, R"({"idToken":"i","refreshToken":"r","expiresIn":"3600s"})", "Unexpected auth response."},
        {200, R"({"idToken":null,"refreshToken":"r","expiresIn":"3600"})", "Unexpected auth response."},
        {200, R"({"idToken":"i","refreshToken":9,"expiresIn":"3600"})", "Unexpected auth response."},
        {200, refreshed, "Unexpected auth response."},
    };
    for (const auto& [status, body, text] : cases) {
        signIn(status, body);
        EXPECT_THAT(takeResults(), ElementsAre(text)) << body;
    }
    refresh();
    http.answer(200, granted);  // the other call's key names
    refresh();
    http.fail("Could not resolve host");
    EXPECT_THAT(takeResults(), ElementsAre("Unexpected auth response.", "Could not resolve host"));
    EXPECT_EQ(session(), "id1 re1 uid1 me@x");
    EXPECT_EQ(auth.expiresAt, until);
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), "re1");

    auth.signIn("a", "\xff", [this](const std::optional<AuthError>& error) {
        results.push_back(error && error->kind == AuthError::Kind::transport ? "refused" : "?");
    });
    EXPECT_THAT(takeResults(), ElementsAre("refused"));
}

TEST_F(Auth, TheStoredSessionIsResumedThroughRefresh) {
    struct Case {
        std::map<std::string, std::string> stored;
        std::string session;
    };
    const Case cases[] = {
        {{{"vmr.auth.refreshToken", "r"}, {"vmr.auth.uid", "u"}, {"vmr.auth.email", "e"}}, "- r u e"},
        {{{"vmr.auth.refreshToken", "r"}}, "- r - -"},
        {{{"vmr.auth.refreshToken", ""}, {"vmr.auth.uid", "u"}, {"vmr.auth.email", "e"}}, "- - - -"},
        {{{"vmr.auth.uid", "u"}, {"vmr.auth.email", "e"}}, "- - - -"},
    };
    for (const auto& [stored, expected] : cases) {
        MemoryPreferences kept;
        for (const auto& [key, value] : stored) kept.set(key, value);
        const FirebaseRESTAuth resumed(places(), http, kept, time);
        EXPECT_EQ(resumed.idToken.value_or("-") + " " + resumed.refreshToken.value_or("-") + " " +
                      resumed.localId.value_or("-") + " " + resumed.email.value_or("-"),
                  expected);
        EXPECT_FALSE(resumed.tokenIsLive());
        EXPECT_EQ(resumed.expiresAt, FirebaseRESTAuth::distantPast);
    }
}

TEST_F(Auth, ASessionThatIsNotKeptLeavesNoTrace) {
    signIn(200, granted);
    auth.persistSession = false;
    signIn(200, granted);
    EXPECT_THAT(preferences.values(), IsEmpty());
    EXPECT_TRUE(auth.tokenIsLive());
    preferences.set("vmr.auth.uid", "left over");
    auth.signOut();
    EXPECT_THAT(preferences.values(), IsEmpty());
    EXPECT_EQ(session(), "- - - -");
    EXPECT_EQ(auth.expiresAt, FirebaseRESTAuth::distantPast);
    EXPECT_FALSE(auth.persistSession);
    takeResults();
    refresh();
    EXPECT_THAT(takeResults(), ElementsAre("Not signed in."));
    EXPECT_EQ(http.waiting(), 0u);
}

TEST_F(Auth, AnAnswerAfterSignOutDoesNotBringTheSessionBack) {
    signIn(200, granted);
    takeResults();
    refresh();
    auth.signIn("me@x", "p", [this](const std::optional<AuthError>& error) { note(error); });
    auth.signOut();
    http.answer(200, refreshed);
    http.answer(200, granted);
    EXPECT_THAT(takeResults(), ElementsAre("Not signed in.", "Not signed in."));
    EXPECT_EQ(session(), "- - - -");
    EXPECT_THAT(preferences.values(), IsEmpty());
    signIn(200, granted);  // and a new session is not held up
    EXPECT_THAT(takeResults(), ElementsAre("done"));
}

TEST_F(Auth, OfTwoRefreshesTheLaterAnswerWins) {
    signIn(200, granted);
    takeResults();
    refresh();
    refresh();
    http.answer(200, R"({"id_token":"second","refresh_token":"s","expires_in":"100"})", 1);
    http.answer(200, R"({"id_token":"first","refresh_token":"f","expires_in":"100"})");
    EXPECT_THAT(takeResults(), ElementsAre("token second", "token first"));
    EXPECT_EQ(session(), "first f uid1 me@x");
}

TEST_F(Auth, PasswordResetTellsTheStatusAlone) {
    const auto ask = [this] {
        AccountService::sendPasswordReset(http, places(), "me@x", [this](const std::optional<std::string>& error) {
            results.push_back(error.value_or("sent"));
        });
    };
    ask();
    http.answer(204, "");
    ask();
    http.answer(400, R"({"error":{"message":"EMAIL_NOT_FOUND"}})");
    ask();
    http.fail("timed out");
    EXPECT_THAT(takeResults(), ElementsAre("sent", "HTTP 400", "timed out"));
    EXPECT_EQ(http.requests.at(0).url, "https://id.test/v1/accounts:sendOobCode?key=key%201");
    EXPECT_EQ(http.requests.at(0).body, R"({"email":"me@x","requestType":"PASSWORD_RESET"})");
}

}  // namespace
}  // namespace vmr::test
