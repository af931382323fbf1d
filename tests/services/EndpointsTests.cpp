// Which addresses are read, allowed and refused.
#include <gmock/gmock.h>

#include <map>

#include "services/Endpoints.h"
#include "services/Url.h"

namespace vmr::test {
namespace {

Endpoints from(const std::map<std::string, std::string>& environment) {
    return Endpoints::fromEnvironment([&](const char* name) -> std::optional<std::string> {
        const auto found = environment.find(name);
        if (found == environment.end()) return std::nullopt;
        return found->second;
    });
}

TEST(Endpoints, PlainAddressesAreForThisMachineOnly) {
    const std::map<std::string, bool> cases{
        {"wss://relay.test/", true},
        {"https://x.test:8443/a?b=c", true},
        {"WSS://RELAY.TEST", true},
        {"ws://localhost:9/", true},
        {"http://LOCALHOST", true},
        {"ws://127.0.0.1:8080/?token=a%20b", true},
        {"http://127.9.8.7", true},
        {"ws://[::1]:80/", true},
        {"ws://relay.test/", false},
        {"http://10.0.0.1", false},
        {"http://127.0.0.1.evil.test", false},
        {"http://localhost.evil.test", false},
        {"http://localhost@evil.test/", false},
        {"http://127.0.0.1:80@evil.test/", false},
        {"http://128.0.0.1", false},
        {"http://[::2]", false},
        {"ftp://localhost/", false},
        {"file:///etc/passwd", false},
        {"relay.test", false},
        {"wss://", false},
        {"wss:relay", false},
        {"wss://a b/", false},
        {"wss://a.test/\n", false},
        {"wss://a.test:99999/", false},
        {"", false},
        {std::string("wss://a.test/\0x", 15), false},
    };
    for (const auto& [url, allowed] : cases) EXPECT_EQ(isAllowedUrl(url), allowed) << url;
}

TEST(Endpoints, AnAddressIsTakenApart) {
    const auto url = parseUrl("wss://[::1]:99/p/q?token=a/b?c");
    ASSERT_TRUE(url);
    EXPECT_EQ(url->host, "::1");
    EXPECT_EQ(url->authority(), "[::1]:99");
    EXPECT_EQ(url->target, "/p/q?token=a/b?c");
    const auto bare = parseUrl("wss://relay.test?token=t");
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->port, "443");
    EXPECT_EQ(bare->authority(), "relay.test");
    EXPECT_EQ(bare->target, "/?token=t");
}

TEST(Endpoints, EscapesAllButTheQueryCharacters) {
    EXPECT_EQ(percentEncoded("aZ09-._~!$&'()*+,;=:@/?", queryCharacters), "aZ09-._~!$&'()*+,;=:@/?");
    EXPECT_EQ(percentEncoded("\xc3\xbc #%[]\"<>\\^`{|}\n", queryCharacters),
              "%C3%BC%20%23%25%5B%5D%22%3C%3E%5C%5E%60%7B%7C%7D%0A");
    EXPECT_EQ(percentEncoded("a&b=c", queryValueCharacters), "a%26b%3Dc");
}

TEST(Endpoints, TheEnvironmentComesOverTheBuiltInValues) {
    const Endpoints plain = from({});
    EXPECT_EQ(plain.relayUrl, "");
    EXPECT_EQ(plain.problem(), std::nullopt);
    const Endpoints set = from({{"VMR_RELAY_URL", "ws://127.0.0.1:4000/"},
                                {"VMR_IDENTITY_URL", "http://127.0.0.1:4001//"},
                                {"VMR_SECURETOKEN_URL", ""},
                                {"VMR_FUNCTIONS_URL", "https://f.test/"},
                                {"VMR_FIRESTORE_URL", "https://s.test"},
                                {"VMR_DOWNLOADS_URL", "https://d.test/x/"},
                                {"VMR_API_KEY", "k"}});
    EXPECT_EQ(set.relayUrl, "ws://127.0.0.1:4000/");
    EXPECT_EQ(set.identityUrl, "http://127.0.0.1:4001");
    EXPECT_EQ(set.secureTokenUrl, plain.secureTokenUrl);
    EXPECT_EQ(set.functionsUrl, "https://f.test");
    EXPECT_EQ(set.firestoreUrl, "https://s.test");
    EXPECT_EQ(set.downloadsUrl, "https://d.test/x");
    EXPECT_EQ(set.apiKey, "k");
    EXPECT_EQ(set.problem(), std::nullopt);
}

TEST(Endpoints, AProblemNamesTheVariableAndTheWayOut) {
    const std::map<std::string, std::string> cases{
        {"VMR_RELAY_URL", "ws://relay.test/"}, {"VMR_IDENTITY_URL", "http://id.test"},
        {"VMR_FUNCTIONS_URL", "f.test"},       {"VMR_DOWNLOADS_URL", "ftp://localhost"},
        {"VMR_FIRESTORE_URL", "wss://s.test"},
    };
    for (const auto& [name, value] : cases) {
        const auto problem = from({{name, value}}).problem();
        ASSERT_TRUE(problem) << name;
        EXPECT_EQ(problem->find(name), 0u) << *problem;
        EXPECT_THAT(*problem, testing::HasSubstr(name == "VMR_RELAY_URL" ? "wss://" : "https://"));
    }
    EXPECT_TRUE(from({{"VMR_RELAY_URL", "https://relay.test"}}).problem());
}

}  // namespace
}  // namespace vmr::test
