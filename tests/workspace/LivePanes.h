// Panes on a practice relay of their own, over real sockets.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/AsioLoop.h"
#include "base/Preferences.h"
#include "base/SteerableClock.h"
#include "market/SessionTime.h"
#include "relay/PracticeRelay.h"
#include "services/cloud/FirebaseRESTAuth.h"
#include "services/net/BeastWebSocket.h"
#include "services/net/CurlHttpClient.h"
#include "sim/SimEngine.h"
#include "workspace/PaneHost.h"
#include "workspace/ShellCommands.h"

namespace vmr::test {

class LivePanes : public testing::Test {
 protected:
    /// `withFunctions` points the service's functions at the relay, too; without, sockets are all that joins them.
    explicit LivePanes(bool withFunctions = false) {
        const auto wrong = relay.start();
        EXPECT_FALSE(wrong) << *wrong;
        endpoints.relayUrl = relay.relayUrl();
        endpoints.apiKey = relay.apiKey();
        endpoints.identityUrl = endpoints.secureTokenUrl = relay.restUrl();
        if (withFunctions) endpoints.functionsUrl = relay.restUrl();
        auth = std::make_unique<FirebaseRESTAuth>(endpoints, http, preferences, clock);
        host = std::make_unique<PaneHost>(
            PaneSurroundings{
                clock, loop, preferences, *auth, session, ids, scales, {}, [](const std::string&) {}, {}, &sim},
            [this](AsioLoop& queue) {
                return std::make_unique<RelayClient>(endpoints.relayUrl, makeBeastWebSockets(queue), queue, loop,
                                                     clock);
            });
    }

    /// Looks every 5 ms of real time; whether the condition came to hold within `limit` seconds.
    bool runUntil(const std::function<bool()>& done, double limit = 60) {
        bool held = false;
        const auto look = loop.every(0, 0.005, [&] {
            if ((held = done())) loop.quit();
        });
        const auto end = loop.after(limit, [&] { loop.quit(); });
        loop.run();
        for (const auto timer : {look, end}) loop.cancel(timer);
        return held;
    }
    bool signIn(int pane) {
        bool over = false, worked = false;
        host->find(pane)->signIn(relay.email(), relay.password(), true, [&](bool ok) {
            over = true;
            worked = ok;
        });
        return runUntil([&] { return over; }) && worked;
    }
    /// The relay has seen all sockets end; it lets an account have only so many.
    bool noSocketIsLeft() {
        return runUntil([&] { return relay.command("status").starts_with("ok 0 sockets"); });
    }
    bool streaming(int pane) { return host->find(pane)->session.connected && !host->find(pane)->bars.candles.empty(); }

    /// What a shell over the panes needs.
    ShellSurroundings shell() {
        const auto hear = [this](const std::string& line) {
            EXPECT_TRUE(line.starts_with("[cmd] ")) << line;
            answers.push_back(line.substr(6));
        };
        return {*host, sim, hear, [] {}, [](const std::string&) { return std::nullopt; }, {}, {}};
    }

    SteerableClock clock{1781100030, 1};  // Wednesday 2026-06-10, 10:00:30 New York
    relay::PracticeRelay relay{clock, {}};
    AsioLoop loop;
    MemoryPreferences preferences;
    CurlHttpClient http{loop};
    Endpoints endpoints;
    SessionTime session;
    UuidSource ids{1};
    HfScales scales;
    std::unique_ptr<FirebaseRESTAuth> auth;
    SimEngine sim{SimSetup{clock, session, UuidSource(2), nullptr, nullptr, nullptr, {}, {}}};
    std::unique_ptr<PaneHost> host;
    std::vector<std::string> answers;  // of the shell, without their mark
};

}  // namespace vmr::test
