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
    test::TestTime clock;
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
              "INVALID_PASSWORD"},
             {"POST", tokenPath + key, grant + "&refresh_token=x", 400, "INVALID_REFRESH_TOKEN"},
             {"POST", codePath + key, R"({"requestType":"PASSWORD_RESET","email":"a@b.c"})", 400, "EMAIL_NOT_FOUND"},
         }) {
        const RestReply reply = api.answer({one.method, one.target, one.body});
        EXPECT_EQ(reply.status, one.status) << one.target << one.body;
        const json error = json::parse(reply.body)["error"];
        EXPECT_EQ(error["message"], one.message) << one.target << one.body;
        EXPECT_EQ(error["code"], one.status);
    }
    EXPECT_EQ(posted(codePath, R"({"requestType":"PASSWORD_RESET","email":"practice@velmora.test"})")["email"],
              Accounts::email);
}

TEST_F(RestApiTest, EveryTokenLivesItsOwnLifeAndARefreshGivesMore) {
    const json first = posted(signInPath, R"({"email":"Practice@VELMORA.test","password":"practice"})");
    const std::string form = "grant_type=refresh_token&refresh_token=" + first["refreshToken"].get<std::string>();
    clock.advance(60);
    const json second = posted(tokenPath, form);
    EXPECT_TRUE(accounts.accepts(first["idToken"]));
    clock.advance(40);
    EXPECT_TRUE(!accounts.accepts(first["idToken"]) && accounts.accepts(second["id_token"]));
    clock.advance(60);
    EXPECT_FALSE(accounts.accepts(second["id_token"]));
    EXPECT_TRUE(accounts.accepts(posted(tokenPath, form)["id_token"])) << "a refresh token stays good";
}

}  // namespace
}  // namespace vmr::relay
