// Which addresses are read, allowed and refused.
#include <gmock/gmock.h>

#include <map>

#include "services/net/Endpoints.h"
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
    EXPECT_THAT(all("ws://relay.test/").problem().value_or(""), testing::StartsWith("VMR_RELAY_URL"));
    EXPECT_THAT(all("wss://relay.test/").problem().value_or(""), testing::StartsWith("VMR_IDENTITY_URL"));
}

}  // namespace
}  // namespace vmr::test
