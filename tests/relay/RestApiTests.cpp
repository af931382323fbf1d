#include "relay/RestApi.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "relay/PracticeRelay.h"
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
    RestApi api{accounts, faults, clock};
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

struct TemplateApi : RestApiTest {
    ~TemplateApi() override { std::filesystem::remove_all(folder); }
    static std::string asking(const std::string& pair, const std::string& slot = {}, const std::string& config = "{}") {
        std::string body = R"({"data":{"symbolSource":")" + pair + "\"";
        if (!slot.empty()) body += R"(,"slot":")" + slot + R"(","atmOffset":7,"config":)" + config;
        return body + "}}";
    }
    static std::string said(RestApi& of, const char* name, const std::string& body, const std::string& token) {
        const RestReply reply = of.answer({"POST", std::string("/") + name, body, token});
        const json told = json::parse(reply.body);
        return std::to_string(reply.status) + " " +
               (told.contains("error") ? told["error"]["message"].get<std::string>() : told["result"].dump());
    }
    std::string load(const std::string& pair) { return said(api, "loadChartTemplates", asking(pair), token); }
    std::string save(const std::string& body) { return said(api, "saveChartTemplate", body, token); }

    const std::string token = "Bearer " + accounts.issue().idToken;
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / UuidSource().next().text();
    const std::filesystem::path file = folder / "templates.json", moved = folder.string() + ".moved";
};

TEST_F(TemplateApi, KeepsSlotsByPairAndPrefersTheOneSavedLast) {
    EXPECT_EQ(load("NQ_QQQ"), "200 {}");
    EXPECT_EQ(save(asking("NQ_QQQ", "slot_2", R"({"a":[1]})")).substr(0, 4), "200 ");
    clock.advance(0.01);  // half a second of the market
    save(asking("NQ_QQQ", "slot_1"));
    save(asking("ES_SPY", "slot_3"));
    EXPECT_EQ(load("NQ_QQQ"), R"(200 {"preferred":"slot_1",)"
                              R"("slot_1":{"atmOffset":7,"config":{},"savedAt":"2026-06-10T14:00:00.500Z"},)"
                              R"("slot_2":{"atmOffset":7,"config":{"a":[1]},"savedAt":"2026-06-10T14:00:00.000Z"}})");
    EXPECT_EQ(said(api, "loadChartTemplates", asking("NQ_QQQ"), "Bearer x"),
              "401 Request had invalid authentication credentials.");
    EXPECT_EQ(api.answer({"GET", "/loadChartTemplates", "", token}).status, 405);
    const std::string large = "{\"a\":\"" + std::string(TemplateShelf::largestConfig, 'x') + "\"}";
    for (const auto& [body, wrong] : {std::pair(asking(""), "400 INVALID_SYMBOL_SOURCE"),
                                      {asking(std::string(65, 'x'), "slot_1"), "400 INVALID_SYMBOL_SOURCE"},
                                      {asking("NQ_QQQ"), "400 INVALID_SLOT"},
                                      {asking("NQ_QQQ", "slot_4"), "400 INVALID_SLOT"},
                                      {asking("NQ_QQQ", "slot_1", "[]"), "400 INVALID_CONFIG"},
                                      {asking("NQ_QQQ", "slot_1", large), "400 The template is too large."},
                                      {std::string("{}"), "400 Invalid JSON payload received."}})
        EXPECT_EQ(save(body), wrong);
    for (std::size_t i = 2; i < TemplateShelf::mostPairs; ++i) save(asking("P" + std::to_string(i), "slot_1"));
    EXPECT_EQ(save(asking("ONE_MORE", "slot_1")), "429 Too many charts have templates.");
    EXPECT_EQ(save(asking("ES_SPY", "slot_1")).substr(0, 4), "200 ");
}

TEST_F(TemplateApi, ItsFileOutlivesItAndIsItsOwnersAlone) {
    namespace fs = std::filesystem;
    fs::create_directories(folder);
    fs::permissions(folder, fs::perms(0755));
    ASSERT_EQ(api.templates().keepIn(file), std::nullopt);
    save(asking("NQ_QQQ", "slot_2", R"({"a":"\u00e9"})"));
    const std::string told = load("NQ_QQQ");
    EXPECT_EQ(fs::status(file).permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(fs::status(folder).permissions() & fs::perms::all, fs::perms(0755)) << "the folder is the person's";
    RestApi next(accounts, faults, clock);
    ASSERT_EQ(next.templates().keepIn(file), std::nullopt);
    EXPECT_EQ(said(next, "loadChartTemplates", asking("NQ_QQQ"), token), told);

    fs::rename(folder, moved);
    EXPECT_EQ(save(asking("NQ_QQQ", "slot_1")).substr(0, 4), "500 ");
    EXPECT_EQ(save(asking("ES_SPY", "slot_1")).substr(0, 4), "500 ");
    EXPECT_EQ(
        json::parse(api.answer({"POST", "/saveChartTemplate", asking("NQ", "slot_1"), token}).body)["error"]["status"],
        "INTERNAL");
    EXPECT_EQ(load("NQ_QQQ") + load("ES_SPY"), told + "200 {}") << "as the file has it";
    fs::rename(moved, folder);

    const auto opened = [this](const fs::path& path) {
        return RestApi(accounts, faults, clock).templates().keepIn(path).value_or("kept");
    };
    const auto shelf = [](const std::string& pairs) { return R"({"a":{)" + pairs + "}}"; };
    const auto filled = [](const std::string& pair, std::size_t bytes) {
        return "\"" + pair + R"(":{"slot_1":{"savedAt":"","config":{"a":")" + std::string(bytes, 'x') + "\"}}}";
    };
    std::string many = filled("P0", 1);
    for (std::size_t i = 1; i <= TemplateShelf::mostPairs; ++i) many += "," + filled("P" + std::to_string(i), 1);
    for (const std::string& odd :
         {std::string(), std::string("[]"), shelf(R"("NQ_QQQ":{"slot_9":{}})"), shelf(R"("NQ_QQQ":{"slot_1":7})"),
          shelf(filled("NQ", TemplateShelf::largestConfig)), shelf(filled(std::string(65, 'x'), 1)), shelf(many)}) {
        std::ofstream(file) << odd;
        fs::permissions(file, fs::perms(0644));
        EXPECT_EQ(opened(file), "the file " + file.string() + " holds no templates") << odd.substr(0, 40);
        EXPECT_EQ(fs::status(file).permissions() & fs::perms::all, fs::perms(0644));
        PracticeRelayOptions options;
        options.templates = file;
        EXPECT_TRUE(PracticeRelay(clock, options).start()) << "a relay that could not keep them does not run";
        EXPECT_EQ(fs::file_size(file), odd.size()) << "it is left as it is";
    }
    fs::create_symlink(folder / "nowhere", folder / "link");
    for (const fs::path& path : {folder, folder / "link"})
        EXPECT_EQ(opened(path), "cannot read the file " + path.string());
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_NE(opened(folder / "no" / "such"), "kept");
}

TEST_F(TemplateApi, GoesWrongAsTheConsoleSays) {
    const auto asked = [this] {
        const RestReply reply = api.answer({"POST", "/loadChartTemplates", asking("NQ"), token});
        return std::to_string(reply.status) + " " + std::to_string(int(reply.delay)) + " " +
               (json::accept(reply.body) ? json::parse(reply.body).dump() : reply.body);
    };
    const char* const wrong =
        "error: it is templates error TEXT, status 200 to 599 but not 204 or 304, delay SECONDS, text RAW, or ok";
    for (const auto& [command, answer, reply] :
         {std::tuple("error No more  room", "ok templates fail", R"(400 0 {"error":{"message":"No more  room"}})"),
          {"status 500", "ok templates status 500", R"(500 0 {"error":{"message":"No more  room"}})"},
          {"ok", "ok templates", R"(200 0 {"result":{}})"},
          {"text {\"error\":{}}", "ok templates answer that text", R"(200 0 {"error":{}})"},
          {"text", "ok templates answer that text", "200 0 "},
          {"delay 3", "ok templates delay 3", "200 3 "},
          {"ok", "ok templates", R"(200 0 {"result":{}})"},
          {"status 199", wrong, R"(200 0 {"result":{}})"},
          {"status 204", wrong, R"(200 0 {"result":{}})"},
          {"status 304", wrong, R"(200 0 {"result":{}})"}}) {
        EXPECT_EQ(api.templates().command(command), answer);
        EXPECT_EQ(asked(), reply) << command;
    }
}

}  // namespace
}  // namespace vmr::relay
