#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "relay/HandClock.h"
#include "relay/RestApi.h"

namespace vmr {
namespace {

using nlohmann::json;

const std::string key = "?key=" + std::string(Accounts::apiKey);
const std::string in = "/v1/accounts:signInWithPassword", code = "/v1/accounts:sendOobCode";

struct RestApiTest : testing::Test {
    json post(const std::string& path, const std::string& body) {
        return json::parse(api.answer({"POST", path + key, body}).body);
    }
    json signIn() { return post(in, R"({"email":"Practice@Velmora.test","password":"practice"})"); }
    json refresh(const std::string& token) {
        return post("/v1/token", "grant_type=refresh_token&refresh_token=" + token);
    }
    test::HandClock clock{1781100000};
    Accounts accounts{clock, 3600};
    Faults faults;
    RestApi api{accounts, faults};
};

TEST_F(RestApiTest, TokensAreGrantedRefreshedAndExpireInRealTimeAndOnDemand) {
    const json session = signIn();
    EXPECT_EQ(session["expiresIn"], "3600");
    EXPECT_EQ(session["localId"], std::string(Accounts::localId));
    clock.age(3599);
    EXPECT_TRUE(accounts.accepts(session["idToken"]));
    clock.age(1);
    EXPECT_FALSE(accounts.accepts(session["idToken"]));
    const json next = refresh(session["refreshToken"]);
    EXPECT_EQ(next["expires_in"], "3600");
    EXPECT_NE(next["refresh_token"], session["refreshToken"]);
    EXPECT_TRUE(accounts.accepts(next["id_token"]));
    EXPECT_TRUE(refresh(session["refreshToken"]).contains("id_token")) << "an older refresh token stays good";
    accounts.expireIdTokens();
    EXPECT_FALSE(accounts.accepts(next["id_token"]));
    accounts.expireRefreshTokens();
    EXPECT_EQ(refresh(session["refreshToken"])["error"]["message"], "TOKEN_EXPIRED");
    faults.refuse = true;
    EXPECT_EQ(signIn()["error"]["message"], "USER_DISABLED");
}

TEST_F(RestApiTest, AnswersFaultsAsTheCloudDoes) {
    const struct {
        RestRequest request;
        int status;
        const char* message;
    } cases[] = {
        {{"POST", in + key, R"({"email":"practice@velmora.test","password":"x"})"}, 400, "INVALID_PASSWORD"},
        {{"POST", in + key, R"({"email":"who@velmora.test","password":"x"})"}, 400, "EMAIL_NOT_FOUND"},
        {{"POST", in + key, "{"}, 400, "Invalid JSON payload received."},
        {{"POST", in + "?key=wrong", "{}"}, 400, "API key not valid. Please pass a valid API key."},
        {{"POST", "/v1/accounts:signUp" + key, "{}"}, 404, "Not found"},
        {{"POST", "/v1/token" + key, "grant_type=password"}, 400, "INVALID_GRANT_TYPE"},
        {{"POST", "/v1/token" + key, "grant_type=refresh_token&refresh_token=x"}, 400, "INVALID_REFRESH_TOKEN"},
        {{"POST", code + key, R"({"requestType":"PASSWORD_RESET","email":"who@x.y"})"}, 400, "EMAIL_NOT_FOUND"},
    };
    for (const auto& one : cases) {
        const RestReply reply = api.answer(one.request);
        EXPECT_EQ(reply.status, one.status) << one.message;
        EXPECT_EQ(json::parse(reply.body)["error"]["message"], one.message);
    }
}

}  // namespace
}  // namespace vmr
