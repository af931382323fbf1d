#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "relay/HandClock.h"
#include "relay/Query.h"
#include "relay/RestApi.h"

namespace vmr {
namespace {

using nlohmann::json;

struct RestApiTest : testing::Test {
    RestReply post(const std::string& path, const std::string& body) {
        return api.answer({"POST", path + "?key=" + std::string(Accounts::apiKey), body});
    }
    json signIn() {
        return json::parse(
            post("/v1/accounts:signInWithPassword", R"({"email":"Practice@Velmora.test","password":"practice"})").body);
    }
    json refresh(const std::string& token) {
        return json::parse(post("/v1/token", "grant_type=refresh_token&refresh_token=" + token).body);
    }
    test::HandClock clock{1781100000};
    Accounts accounts{clock, 3600};
    Faults faults;
    RestApi api{accounts, faults};
};

TEST_F(RestApiTest, SignsInAndRefreshesWithTextualExpiry) {
    const json session = signIn();
    EXPECT_EQ(session["expiresIn"], "3600");
    EXPECT_EQ(session["localId"], std::string(Accounts::localId));
    EXPECT_TRUE(accounts.accepts(session["idToken"]));
    const json next = refresh(session["refreshToken"]);
    EXPECT_EQ(next["expires_in"], "3600");
    EXPECT_EQ(next["user_id"], session["localId"]);
    EXPECT_NE(next["refresh_token"], session["refreshToken"]);
    EXPECT_TRUE(accounts.accepts(next["id_token"]));
    EXPECT_TRUE(refresh(session["refreshToken"]).contains("id_token")) << "an older refresh token stays good";
}

TEST_F(RestApiTest, TokensExpireInRealTimeAndOnDemand) {
    const json session = signIn();
    clock.age(3599);
    EXPECT_TRUE(accounts.accepts(session["idToken"]));
    clock.age(1);
    EXPECT_FALSE(accounts.accepts(session["idToken"]));
    const std::string fresh = refresh(session["refreshToken"])["id_token"];
    accounts.expireIdTokens();
    EXPECT_FALSE(accounts.accepts(fresh));
    accounts.expireRefreshTokens();
    EXPECT_EQ(refresh(session["refreshToken"])["error"]["message"], "TOKEN_EXPIRED");
    EXPECT_TRUE(accounts.accepts(signIn()["idToken"]));
}

TEST_F(RestApiTest, AnswersFaultsAsTheCloudDoes) {
    const std::string key = "?key=" + std::string(Accounts::apiKey);
    const std::string in = "/v1/accounts:signInWithPassword", code = "/v1/accounts:sendOobCode";
    const struct {
        RestRequest request;
        int status;
        const char* message;
    } cases[] = {
        {{"POST", in + key, R"({"email":"practice@velmora.test","password":"x"})"}, 400, "INVALID_PASSWORD"},
        {{"POST", in + key, R"({"email":"practice@velmora.test"})"}, 400, "MISSING_PASSWORD"},
        {{"POST", in + key, R"({"email":"who@velmora.test","password":"x"})"}, 400, "EMAIL_NOT_FOUND"},
        {{"POST", in + key, R"({"email":"who","password":"x"})"}, 400, "INVALID_EMAIL"},
        {{"POST", in + key, R"({"email":5})"}, 400, "MISSING_EMAIL"},
        {{"POST", in + key, "[]"}, 400, "Invalid JSON payload received."},
        {{"POST", in + key, "{"}, 400, "Invalid JSON payload received."},
        {{"POST", in + "?key=wrong", "{}"}, 400, "API key not valid. Please pass a valid API key."},
        {{"POST", in, "{}"}, 403, "The request is missing a valid API key."},
        {{"GET", in + key, ""}, 405, "Method not allowed"},
        {{"POST", "/v1/accounts:signUp" + key, "{}"}, 404, "Not found"},
        {{"POST", "/v1/token" + key, ""}, 400, "MISSING_GRANT_TYPE"},
        {{"POST", "/v1/token" + key, "grant_type=password"}, 400, "INVALID_GRANT_TYPE"},
        {{"POST", "/v1/token" + key, "grant_type=refresh_token"}, 400, "MISSING_REFRESH_TOKEN"},
        {{"POST", "/v1/token" + key, "grant_type=refresh_token&refresh_token=x"}, 400, "INVALID_REFRESH_TOKEN"},
        {{"POST", code + key, R"({"email":"practice@velmora.test"})"}, 400, "MISSING_REQ_TYPE"},
        {{"POST", code + key, R"({"requestType":"PASSWORD_RESET","email":"who@x.y"})"}, 400, "EMAIL_NOT_FOUND"},
    };
    for (const auto& one : cases) {
        const RestReply reply = api.answer(one.request);
        EXPECT_EQ(reply.status, one.status) << one.message;
        const json error = json::parse(reply.body)["error"];
        EXPECT_EQ(error["message"], one.message);
        EXPECT_EQ(error["code"], one.status);
    }
    EXPECT_EQ(post(code, R"({"requestType":"PASSWORD_RESET","email":"practice@velmora.test"})").status, 200);
    faults.refuse = true;
    EXPECT_EQ(signIn()["error"]["message"], "USER_DISABLED");
}

TEST(Query, DecodesEscapesAndLeavesPlusAlone) {
    EXPECT_EQ(queryValue("a=1&token=x%2By+z%7c%7C%zz%4", "token"), "x+y+z||%zz%4");
    EXPECT_EQ(queryValue("token", "token"), "");
    EXPECT_EQ(queryValue("tokens=1", "token"), std::nullopt);
    EXPECT_EQ(queryOf("/?token=a?b"), "token=a?b");
}

}  // namespace
}  // namespace vmr
