// Which addresses are read, allowed and refused.
#include <gmock/gmock.h>

#include <map>

#include "services/net/Endpoints.h"
#include "services/net/NetworkRules.h"
#include "services/net/Url.h"

namespace vmr::test {
namespace {

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
    EXPECT_EQ(parseUrl("wss://[::1]:99/p?token=a/b?c")->authority(), "[::1]:99");
    EXPECT_EQ(parseUrl("wss://relay.test?token=t")->target, "/?token=t");
}

TEST(Endpoints, TheEnvironmentComesOverTheBuiltInValues) {
    const auto all = [](const char* value) { return Endpoints::fromEnvironment([=](const char*) { return value; }); };
    EXPECT_EQ(all("http://127.0.0.1:4001//").identityUrl, "http://127.0.0.1:4001");
    EXPECT_EQ(all("").identityUrl, Endpoints().identityUrl);
    EXPECT_EQ(all("").problem(), std::nullopt);
    for (const std::string name : {"VMR_RELAY_URL", "VMR_IDENTITY_URL", "VMR_SECURETOKEN_URL", "VMR_FUNCTIONS_URL",
                                   "VMR_FIRESTORE_URL", "VMR_DOWNLOADS_URL"}) {
        const auto one = Endpoints::fromEnvironment(
            [&](const char* asked) { return asked == name ? std::optional("ws://relay.test/") : std::nullopt; });
        EXPECT_THAT(one.problem().value_or(""), testing::StartsWith(name));
    }
    EXPECT_THAT(all("wss://relay.test/").problem().value_or(""), testing::StartsWith("VMR_IDENTITY_URL"));
}

TEST(NetworkRules, OneProxyAndOneTrustStoreForAllConnections) {
    using Variables = std::map<std::string, std::string>;
    const auto lookup = [](const Variables& variables) {
        return [variables](const char* name) {
            const auto found = variables.find(name);
            return found == variables.end() ? std::nullopt : std::optional(found->second);
        };
    };
    const struct {
        Variables variables;
        const char *url, *proxy;
    } cases[] = {
        {{{"https_proxy", "p:3"}, {"HTTPS_PROXY", "q"}, {"all_proxy", "r"}}, "wss://relay.test/", "http://p:3"},
        {{{"https_proxy", ""}, {"HTTPS_PROXY", "http://q"}}, "https://relay.test/", "http://q:80"},
        {{{"http_proxy", "p"}, {"ALL_PROXY", "socks5://[::2]"}}, "wss://relay.test/", "socks5://[::2]:1080"},
        {{{"all_proxy", "p"}}, "ws://localhost/", "none"},
        {{{"all_proxy", "p"}, {"no_proxy", "b.test, .Relay.test"}}, "wss://a.RELAY.test/", "none"},
        {{{"all_proxy", "p"}, {"NO_PROXY", "*"}}, "wss://relay.test/", "none"},
        {{{"all_proxy", "p"}, {"no_proxy", "lay.test"}}, "wss://relay.test/", "http://p:80"},
        {{{"all_proxy", "http://"}}, "wss://relay.test/", "the proxy's address cannot be read"},
        {{{"HTTP_PROXY", "p"}}, "wss://relay.test/", "none"},
    };
    for (const auto& [variables, url, expected] : cases) {
        const auto proxy = proxyFor(*parseUrl(url), lookup(variables));
        EXPECT_EQ(!proxy ? "none" : !proxy->problem.empty() ? proxy->problem : proxy->address(), expected) << url;
    }
    const auto own = TrustStore::find(lookup({{"SSL_CERT_DIR", "/d"}}));
    EXPECT_EQ(own.file + "|" + own.folder + "|" + own.system, "|/d|") << "no other store beside it";
}

}  // namespace
}  // namespace vmr::test
