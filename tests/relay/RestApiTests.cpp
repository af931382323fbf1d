#include "relay/RestApi.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/time/TestTime.h"

namespace vmr::relay {
namespace {

using nlohmann::json;

const std::string key = "?key=" + std::string(Accounts::apiKey);
const std::string signInPath = "/v1/accounts:signInWithPassword", codePath = "/v1/accounts:sendOobCode",
                  tokenPath = "/v1/token";

struct RestApiTest : testing::Test {
    json posted(const std::string& path, const std::string& body) {
        return json::parse(api.answer({"POST", path + key, body}).body);
    }
    test::TestTime clock{1781100000, 50};  // market time runs fast; tokens and locks live in real time
    Accounts accounts{clock, 100};
    Faults faults;
    RestApi api{accounts, faults};
};

TEST_F(RestApiTest, SaysWhatIsWrongWithARequest) {
    const std::string grant = "grant_type=refresh_token";
    struct Case {
        std::string method, target, body;
        int status;
        std::string message;
    };
    for (const Case& one : {
             Case{"POST", "/v1/accounts" + key, "", 404, "Not found"},
             {"GET", signInPath + key, "", 405, "Method not allowed"},
             {"POST", tokenPath, grant, 403, "The request is missing a valid API key."},
             {"POST", tokenPath + key + "0", grant, 400, "API key not valid. Please pass a valid API key."},
             {"POST", signInPath + key, "{", 400, "Invalid JSON payload received."},
             {"POST", signInPath + key, R"({"password":"practice"})", 400, "MISSING_EMAIL"},
             {"POST", signInPath + key, R"({"email":"practice@velmora.test","password":"Practice"})", 400,
              "INVALID_LOGIN_CREDENTIALS"},
             {"POST", signInPath + key, R"({"email":"a@b.c","password":"practice"})", 400, "INVALID_LOGIN_CREDENTIALS"},
             {"POST", tokenPath + key, grant + "&refresh_token=x", 400, "INVALID_REFRESH_TOKEN"},
             {"POST", codePath + key, R"({"requestType":"PASSWORD_RESET","email":"a"})", 400, "INVALID_EMAIL"},
         }) {
        const RestReply reply = api.answer({one.method, one.target, one.body});
        EXPECT_EQ(reply.status, one.status) << one.target << one.body;
        const json error = json::parse(reply.body)["error"];
        EXPECT_EQ(error["message"], one.message) << one.target << one.body;
        EXPECT_EQ(error["code"], one.status);
        EXPECT_EQ(error["status"], one.status == 404   ? "NOT_FOUND"
                                   : one.status == 403 ? "PERMISSION_DENIED"
                                                       : "INVALID_ARGUMENT");
    }
    EXPECT_EQ(posted(codePath, R"({"requestType":"PASSWORD_RESET","email":"a@b.c"})")["email"], "a@b.c")
        << "whether there is such an account is not said";
}

TEST_F(RestApiTest, EveryTokenLivesItsOwnLifeAndARefreshGivesMore) {
    const json first = posted(signInPath, R"({"email":"Practice@VELMORA.test","password":"practice"})");
    std::string form = "grant_type=refresh_token&refresh_token=" + first["refreshToken"].get<std::string>();
    EXPECT_EQ(posted(tokenPath, form)["error"]["message"], "INVALID_REFRESH_TOKEN") << "its + is a blank here";
    form.replace(form.find('+'), 1, "%2B");
    clock.advance(60);
    const json second = posted(tokenPath, form);
    EXPECT_TRUE(accounts.accepts(first["idToken"]));
    clock.advance(40);
    EXPECT_TRUE(!accounts.accepts(first["idToken"]) && accounts.accepts(second["id_token"]));
    clock.advance(60);
    EXPECT_FALSE(accounts.accepts(second["id_token"]));
    EXPECT_TRUE(accounts.accepts(posted(tokenPath, form)["id_token"])) << "a refresh token stays good";
}

TEST_F(RestApiTest, ManyWrongSignInsInARowLockTheAccountForAWhile) {
    const auto tried = [&](const std::string& word) {
        const json reply = posted(signInPath, R"({"email":"practice@velmora.test","password":")" + word + "\"}");
        return reply.contains("error") ? reply["error"]["message"].get<std::string>().substr(0, 9) : "in";
    };
    for (int i = 1; i < Accounts::mostFailures; ++i) EXPECT_EQ(tried("x"), "INVALID_L");
    EXPECT_EQ(tried("practice"), "in") << "which begins the count anew";
    for (int i = 0; i < Accounts::mostFailures; ++i) EXPECT_EQ(tried("x"), "INVALID_L");
    EXPECT_EQ(tried("practice"), "TOO_MANY_");
    clock.advance(Accounts::lockSeconds);
    EXPECT_EQ(tried("x"), "INVALID_L");
    EXPECT_EQ(tried("practice"), "in") << "after the lock, too, the count begins anew";
}

TEST_F(RestApiTest, ServesPresenceNoticesAndTheRelease) {
    const std::string token = "Bearer " + accounts.issue().idToken;
    const std::string alerts = "/v1/projects/velmora-cloud-1a000/databases/(default)/documents/system_alerts/";
    const auto asked = [&](const char* method, const std::string& path, const std::string& body = {}) {
        EXPECT_EQ(api.answer({method, path, body}).status, path.starts_with("/downloads") ? 200 : 401);
        const RestReply reply = api.answer({method, path, body, token});
        return std::to_string(reply.status) + " " + json::parse(reply.body).value("fields", json()).dump();
    };
    const std::string report = R"({"symbol":"NQ","gexSource":"ETF","action":"online","tabId":"t","page":"mac"})";
    EXPECT_EQ(asked("POST", "/updatePresence", report), "200 null");
    EXPECT_EQ(asked("POST", "/updatePresence", R"({"action":"gone","tabId":"t"})"), "400 null");
    EXPECT_EQ(api.cloud().presence(), "ok 1 pane; t online NQ ETF mac (1)");

    EXPECT_EQ(asked("GET", alerts + "default"), "404 null");
    for (const auto& [text, answer] :
         {std::pair("n1 Title only", "error: it is notice ID TITLE | MESSAGE, or notice off"),
          {"n1 A title | and text", "ok notice n1"}})
        EXPECT_EQ(api.cloud().notice(text), answer);
    EXPECT_EQ(asked("GET", alerts + "default"),
              R"(200 {"active":{"booleanValue":true},"id":{"stringValue":"n1"},"message":{"stringValue":"and text"},)"
              R"("title":{"stringValue":"A title"}})");
    api.cloud().notice("off");
    EXPECT_EQ(asked("GET", alerts + "default"), "404 null");
    EXPECT_EQ(api.cloud().maintenance(""), "ok maintenance");
    EXPECT_EQ(asked("GET", alerts + "maintenance"),
              R"(200 {"active":{"booleanValue":true},"message":{"stringValue":""}})");
    EXPECT_EQ(api.cloud().maintenance("off"), "ok off");

    EXPECT_EQ(api.answer({"GET", "/downloads/version.json", ""}).status, 404);
    EXPECT_EQ(api.cloud().release("x", "1", "u"), "error: x is no build number");
    EXPECT_EQ(api.cloud().release("12", "1.2", "https://v"), "ok build 12 is 1.2");
    EXPECT_EQ(json::parse(api.answer({"GET", "/downloads/version.json", ""}).body),
              json({{"build", 12}, {"version", "1.2"}, {"url", "https://v"}}));
}

}  // namespace
}  // namespace vmr::relay
