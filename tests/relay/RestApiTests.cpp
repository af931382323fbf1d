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
const std::string signInBody = R"({"email":"practice@velmora.test","password":"practice"})";

struct RestApiTest : testing::Test {
    json posted(const std::string& path, const std::string& body) {
        return json::parse(api.answer({"POST", path + key, body}).body);
    }
    json refreshed(const json& token) {
        return posted(tokenPath, "grant_type=refresh_token&refresh_token=" + token.get<std::string>());
    }
    test::TestTime clock;
    Accounts accounts{clock, 100};
    Faults faults;
    RestApi api{accounts, faults};
};

TEST_F(RestApiTest, SaysWhatIsWrongWithARequest) {
    const std::string invalid = "Invalid JSON payload received.", grant = "grant_type=refresh_token";
    struct Case {
        std::string method, target, body;
        int status;
        std::string message;
    };
    for (const Case& one : {
             Case{"POST", "/v1/accounts" + key, "", 404, "Not found"},
             {"GET", signInPath + key, signInBody, 405, "Method not allowed"},
             {"POST", tokenPath, grant, 403, "The request is missing a valid API key."},
             {"POST", tokenPath + key + "0", grant, 400, "API key not valid. Please pass a valid API key."},
             {"POST", signInPath + key, "{", 400, invalid},
             {"POST", signInPath + key, R"({"password":"practice"})", 400, "MISSING_EMAIL"},
             {"POST", signInPath + key, R"({"email":"practice"})", 400, "INVALID_EMAIL"},
             {"POST", signInPath + key, R"({"email":"a@velmora.test"})", 400, "EMAIL_NOT_FOUND"},
             {"POST", signInPath + key, R"({"email":"practice@velmora.test"})", 400, "MISSING_PASSWORD"},
             {"POST", signInPath + key, R"({"email":"practice@velmora.test","password":"Practice"})", 400,
              "INVALID_PASSWORD"},
             {"POST", tokenPath + key, "", 400, "MISSING_GRANT_TYPE"},
             {"POST", tokenPath + key, "grant_type=password", 400, "INVALID_GRANT_TYPE"},
             {"POST", tokenPath + key, grant + "&refresh_token=", 400, "MISSING_REFRESH_TOKEN"},
             {"POST", tokenPath + key, grant + "&refresh_token=x", 400, "INVALID_REFRESH_TOKEN"},
             {"POST", codePath + key, R"({"email":"practice@velmora.test"})", 400, "MISSING_REQ_TYPE"},
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
    const json first =
        posted("/v1/accounts%3asignInWithPassword", R"({"email":"Practice@VELMORA.test","password":"practice"})");
    EXPECT_EQ(first["expiresIn"], "100");
    clock.advance(60);
    const json second = refreshed(first["refreshToken"]), third = refreshed(second["refresh_token"]);
    EXPECT_EQ(second["expires_in"], "100");
    EXPECT_EQ(second["access_token"], second["id_token"]);
    EXPECT_EQ(second["user_id"], first["localId"]);
    EXPECT_NE(second["id_token"], third["id_token"]);
    const auto accepted = [&] {
        std::string all;
        for (const json& token : {first["idToken"], second["id_token"], third["id_token"]})
            all += accounts.accepts(token) ? '+' : '-';
        return all;
    };
    for (const auto& [seconds, expected] : {std::pair(39.9, "+++"), {0.1, "-++"}, {59.9, "-++"}, {0.1, "---"}}) {
        clock.advance(seconds);
        EXPECT_EQ(accepted(), expected);
    }
    EXPECT_TRUE(accounts.accepts(refreshed(first["refreshToken"])["id_token"])) << "a refresh token stays good";
}

}  // namespace
}  // namespace vmr::relay
