// Which addresses are read, allowed and refused.
#include <gmock/gmock.h>

#include <map>

#include "base/SystemProxies.h"
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
    using Answers = std::vector<std::string>;
    const struct {
        Variables variables;
        const char *url, *proxy;
        Answers system = {"http://system:1"};  // which a variable that is set keeps from being asked
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
        {{{"http_proxy", "p"}}, "wss://relay.test/", "none"},
        {{{"HTTPS_PROXY", ""}}, "wss://relay.test/", "none"},
        {{{"no_proxy", "lay.test"}}, "wss://relay.test/", "http://system:1"},
        {{{"no_proxy", "relay.test"}}, "wss://relay.test/", "none"},
        {{}, "wss://[::1]/", "none"},
        {{}, "wss://relay.test/", "none", {}},
        {{}, "wss://relay.test/", "none", {"socks5://p", "DIRECT://", "http://q"}},
        {{}, "wss://relay.test/", "http://q:80", {"http://", "socks5://p", "https://p", "http://q", "direct://"}},
        {{}, "https://relay.test/", "socks5://p:9", {"ftp://q:8", "socks://p:9", "http://r"}},
        {{}, "wss://relay.test/", "socks5://p:1080", {"socks5://p", "socks4://q"}},
    };
    constexpr std::string_view ofHttps[] = {"http", "socks5"};
    for (const auto& [variables, address, expected, system] : cases) {
        const Url url = *parseUrl(address);
        const auto schemes = std::span(ofHttps).first(url.scheme == "https" ? 2 : 1);
        const auto proxy =
            systemDecides(url, lookup(variables)) ? firstUsable(system, schemes) : proxyFor(url, lookup(variables));
        EXPECT_EQ(!proxy ? "none" : !proxy->problem.empty() ? proxy->problem : proxy->address(), expected) << address;
    }
    const auto own = TrustStore::find(lookup({{"SSL_CERT_DIR", "/d"}}));
    EXPECT_EQ(own.file + "|" + own.folder + "|" + own.system, "|/d|") << "no other store beside it";
}

TEST(NetworkRules, ReadWhatWindowsListsOfProxies) {
    const struct {
        const char *list, *exempt, *url;
        std::vector<std::string> proxies;
    } cases[] = {
        {"p:3", "", "https://relay.test:443/", {"http://p:3"}},
        {"http=p:1;HTTPS=q:2 https=r", "", "https://relay.test:443/", {"http://q:2", "http://r"}},
        {"http=p:1; socks=s:4", "", "https://relay.test:443/", {"socks4://s:4"}},
        {"http=p:1", "", "https://relay.test:443/", {"direct://"}},
        {"", "", "https://relay.test:443/", {"direct://"}},
        {"p", "b.test; *.Relay.test", "https://a.relay.test:443/", {"direct://"}},
        {"p", "*.relay.test;elay.*;re*.net", "https://relay.test:443/", {"http://p"}},
        {"p", "10.*;relay.test:8*", "https://relay.test:8443/", {"direct://"}},
        {"p", "<local>", "https://relay.test:443/", {"http://p"}},
        {"p", "<local>", "https://relay:443/", {"direct://"}},
    };
    for (const auto& [list, exempt, url, proxies] : cases)
        EXPECT_EQ(listedProxies(list, exempt, url), proxies) << list << " " << exempt;
}

}  // namespace
}  // namespace vmr::test
