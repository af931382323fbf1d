// The session of the process, and the account calls.
#include <gmock/gmock.h>

#include "services/cloud/AccountService.h"
#include "services/cloud/FirebaseRESTAuth.h"
#include "support/pane/FakeHttpClient.h"
#include "support/time/TestTime.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* granted =
    R"({"idToken":"id1","refreshToken":"re1","expiresIn":"3600","localId":"uid1","email":"other@x"})";
constexpr const char* refreshed = R"({"id_token":"id2","refresh_token":"re2","expires_in":"3600","user_id":"uid2"})";

std::string shown(const FirebaseRESTAuth& auth) {
    return auth.idToken.value_or("-") + " " + auth.refreshToken.value_or("-") + " " + auth.localId.value_or("-") + " " +
           auth.email.value_or("-");
}

class Auth : public testing::Test {
 protected:
    void askToSignIn() {
        auth.signIn("me@x", "pass\"word", [this](const std::optional<AuthError>& error) { note(error); });
    }
    std::vector<std::string> signIn(int status, const std::string& body) {
        askToSignIn();
        http.answer(status, body);
        return takeResults();
    }
    void refresh() {
        auth.refresh([this](const std::variant<std::string, AuthError>& result) {
            const auto* token = std::get_if<std::string>(&result);
            token ? results.push_back("token " + *token) : note(std::get<AuthError>(result));
        });
    }
    void note(const std::optional<AuthError>& error) { results.push_back(error ? error->text() : "done"); }
    std::vector<std::string> takeResults() {
        time.runUntilIdle();
        return std::exchange(results, {});
    }

    const Endpoints places{"", "https://id.test", "https://token.test", "", "", "", "key 1"};
    TestTime time{1781100000.0, 50.0};  // market time runs fast; a token lives in real time
    TestQueue main{time};
    FakeHttpClient http{main};
    MemoryPreferences preferences;
    FirebaseRESTAuth auth{places, http, preferences, time};
    std::vector<std::string> results;
};

TEST_F(Auth, SignInSendsTheRequestAndKeepsTheSession) {
    EXPECT_THAT(signIn(200, granted), ElementsAre("done"));
    const auto& request = http.requests.at(0);
    EXPECT_EQ(request.url, "https://id.test/v1/accounts:signInWithPassword?key=key%201");
    EXPECT_EQ(request.body, R"({"email":"me@x","password":"pass\"word","returnSecureToken":true})");
    EXPECT_EQ(shown(auth), "id1 re1 uid1 me@x");
    const FirebaseRESTAuth resumed(places, http, preferences, time);
    EXPECT_EQ(shown(resumed), "- re1 uid1 me@x") << "by the next process, through a refresh";
    EXPECT_FALSE(resumed.tokenIsLive());
    time.advance(3539.9);
    EXPECT_TRUE(auth.tokenIsLive());
    time.advance(0.2);
    EXPECT_FALSE(auth.tokenIsLive());
}

TEST_F(Auth, RefreshSendsTheTokenAsAFormDoesAndRotatesIt) {
    signIn(200, R"({"idToken":"i","refreshToken":"r+/=&","expiresIn":"30"})");
    EXPECT_FALSE(auth.tokenIsLive());  // a life within the margin is over at once
    refresh();
    http.answer(200, refreshed);
    EXPECT_THAT(takeResults(), ElementsAre("token id2"));
    EXPECT_EQ(http.requests.at(1).url, "https://token.test/v1/token?key=key%201");
    EXPECT_EQ(http.requests.at(1).body, "grant_type=refresh_token&refresh_token=r%2B%2F%3D%26");
    EXPECT_EQ(shown(auth) + " " + preferences.get("vmr.auth.refreshToken").value_or("-"), "id2 re2 uid2 me@x re2");
    auth.refused("i");  // an older one
    time.advance(3539.9);
    EXPECT_TRUE(auth.tokenIsLive());
    auth.refused("id2");
    EXPECT_FALSE(auth.tokenIsLive());
    refresh();
    http.answer(200, refreshed);
    time.runUntilIdle();
    EXPECT_TRUE(auth.tokenIsLive());
    time.advance(3540);
    EXPECT_FALSE(auth.tokenIsLive()) << "a refreshed token, too, ends a minute early";
}

TEST_F(Auth, AFailedCallIsToldAndChangesNothing) {
    signIn(200, granted);
    const struct {
        int status;
        const char *body, *text;
    } cases[] = {
        {400, R"({"error":{"message":"INVALID_PASSWORD"}})", "Auth error (400): INVALID_PASSWORD"},
        {400, R"({"error":{"message":"A\u001b[2J\n[cmd]"}})", "Auth error (400): A\\x1b[2J\\n[cmd]"},
        {403, R"({"error":{"message":5}})", "Auth error (403): request failed"},
        {200, "not JSON", "The response is not valid JSON."},
        {200, R"({"idToken":"i","refreshToken":"r","expiresIn":"3600s"})", "Unexpected auth response."},
        {200, refreshed, "Unexpected auth response."},
    };
    for (const auto& [status, body, text] : cases) EXPECT_THAT(signIn(status, body), ElementsAre(text)) << body;
    refresh();
    http.answer({0, "", "Could not resolve host"});
    EXPECT_THAT(takeResults(), ElementsAre("Could not resolve host"));
    EXPECT_EQ(shown(auth), "id1 re1 uid1 me@x");
    EXPECT_TRUE(auth.tokenIsLive());
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), "re1");
}

TEST_F(Auth, ASessionThatIsNotKeptOrIsOverLeavesNoTrace) {
    signIn(200, granted);
    refresh();
    askToSignIn();
    auth.signOut();
    http.answer(200, refreshed);
    http.answer(200, granted);
    refresh();
    EXPECT_THAT(takeResults(), ElementsAre("Not signed in.", "Not signed in.", "Not signed in."));
    EXPECT_EQ(shown(auth), "- - - -") << "answers after the end do not bring it back";
    EXPECT_THAT(preferences.values(), IsEmpty());
    signIn(200, granted);
    auth.persistSession = false;
    signIn(200, granted);
    EXPECT_THAT(preferences.values(), IsEmpty());
    EXPECT_TRUE(auth.tokenIsLive());
}

TEST_F(Auth, AStoredSessionIsSeenAndErasedByItsOwnEndpointsAlone) {
    signIn(200, granted);
    const Endpoints others{"", "https://id.test", "https://elsewhere.test", "", "", "", "key 1"};
    for (const char* round : {"first", "again"}) {
        FirebaseRESTAuth other(others, http, preferences, time);
        EXPECT_EQ(shown(other), round == std::string("first") ? "- - - -" : "- theirs - o@x");
        other.signIn("o@x", "p", [](const auto&) {});
        http.answer(200, R"({"idToken":"i","refreshToken":"theirs","expiresIn":"9"})");
        time.runUntilIdle();
    }
    FirebaseRESTAuth(others, http, preferences, time).signOut();
    EXPECT_EQ(preferences.values().size(), 4u);
    EXPECT_EQ(shown(FirebaseRESTAuth(places, http, preferences, time)), "- re1 uid1 me@x");
    preferences.remove("vmr.auth.endpoints");  // as an earlier version left it: of the public endpoints
    EXPECT_EQ(shown(FirebaseRESTAuth(places, http, preferences, time)), "- - - -");
    EXPECT_EQ(shown(FirebaseRESTAuth({}, http, preferences, time)), "- re1 uid1 me@x");
}

TEST_F(Auth, WithASetupProblemNothingIsSentOrErased) {
    signIn(200, granted);
    const auto before = preferences.values();
    auth.setupProblem = "no key";
    refresh();
    askToSignIn();
    EXPECT_THAT(takeResults(), ElementsAre("no key", "no key"));
    EXPECT_EQ(http.requests.size(), 1u);
    EXPECT_EQ(preferences.values(), before);
}

TEST_F(Auth, AResetMailIsAskedForAndFailuresTellTheStatusAlone) {
    const auto ask = [&](const std::string& email, const HttpResponse& answer) {
        AccountService::sendPasswordReset(http, places, email, [this](const std::optional<std::string>& problem) {
            results.push_back(problem.value_or("sent"));
        });
        if (results.empty()) http.answer(answer);
        return takeResults();
    };
    EXPECT_THAT(ask("me@\"x", {200, "not read", {}}), ElementsAre("sent"));
    const HttpRequest& request = http.requests.at(0);
    EXPECT_EQ(request.method + " " + request.url, "POST https://id.test/v1/accounts:sendOobCode?key=key%201");
    EXPECT_THAT(request.headers, ElementsAre(std::pair("Content-Type", "application/json")));
    EXPECT_EQ(request.timeoutSeconds, 60);
    EXPECT_EQ(request.body, R"({"email":"me@\"x","requestType":"PASSWORD_RESET"})");
    EXPECT_THAT(ask("me@x", {299, "", {}}), ElementsAre("sent"));
    EXPECT_THAT(ask("me@x", {400, R"({"error":{"message":"EMAIL_NOT_FOUND"}})", {}}), ElementsAre("HTTP 400"));
    EXPECT_THAT(ask("me@x", {0, "", "Could not resolve host"}), ElementsAre("Could not resolve host"));
    EXPECT_THAT(ask("\xff", {}), testing::SizeIs(1)) << "what is no text is not sent";
    EXPECT_EQ(http.requests.size(), 4u);
}

}  // namespace
}  // namespace vmr::test
