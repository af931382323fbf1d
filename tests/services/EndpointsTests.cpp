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
        {"http://LOCALHOST", true},
        {"ws://127.9.8.7:8080/?token=a%20b", true},
        {"ws://[::1]:80/", true},
        {"ws://relay.test/", false},
        {"http://10.0.0.1", false},
        {"http://127.0.0.1.evil.test", false},
        {"http://127.0.0.1:80@evil.test/", false},
        {"ftp://localhost/", false},
        {"wss://a.test/\n", false},
        {std::string("wss://a.test/\0x", 15), false},
    };
    for (const auto& [url, allowed] : cases) EXPECT_EQ(isAllowedUrl(url), allowed) << url;
}

TEST(Endpoints, AnAddressIsTakenApartAndEscaped) {
    const auto url = parseUrl("wss://[::1]:99/p/q?token=a/b?c");
    ASSERT_TRUE(url);
    EXPECT_EQ(url->authority(), "[::1]:99");
    EXPECT_EQ(url->target, "/p/q?token=a/b?c");
    EXPECT_EQ(parseUrl("wss://relay.test?token=t")->port, "443");
    EXPECT_EQ(parseUrl("wss://relay.test?token=t")->target, "/?token=t");
    EXPECT_EQ(percentEncoded("aZ09-._~!$&'()*+,;=:@/?", queryCharacters), "aZ09-._~!$&'()*+,;=:@/?");
}

TEST(Endpoints, TheEnvironmentComesOverTheBuiltInValues) {
    const Endpoints set = from({{"VMR_RELAY_URL", "ws://127.0.0.1:4000/"},
                                {"VMR_IDENTITY_URL", "http://127.0.0.1:4001//"},
                                {"VMR_SECURETOKEN_URL", ""}});
    EXPECT_EQ(set.relayUrl, "ws://127.0.0.1:4000/");
    EXPECT_EQ(set.identityUrl, "http://127.0.0.1:4001");
    EXPECT_EQ(set.secureTokenUrl, from({}).secureTokenUrl);
    EXPECT_EQ(set.problem(), std::nullopt);
    const std::map<std::string, std::string> wrong{{"VMR_RELAY_URL", "ws://relay.test/"},
                                                   {"VMR_IDENTITY_URL", "http://id.test"},
                                                   {"VMR_FIRESTORE_URL", "wss://s.test"}};
    for (const auto& [name, value] : wrong) {
        const auto problem = from({{name, value}}).problem();
        ASSERT_TRUE(problem) << name;
        EXPECT_THAT(*problem, testing::StartsWith(name));
        EXPECT_THAT(*problem, testing::HasSubstr(name == "VMR_RELAY_URL" ? "wss://" : "https://"));
    }
}

}  // namespace
}  // namespace vmr::test
