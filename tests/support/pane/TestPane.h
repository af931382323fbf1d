// A whole pane in virtual time: the real model, relay client and session over a played server and memory alone.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "market/SessionTime.h"
#include "model/AppModel.h"
#include "model/StateDocument.h"
#include "support/market/SyntheticMarket.h"
#include "support/pane/FakeHttpClient.h"
#include "support/pane/FakeWebSocket.h"
#include "support/time/TestTime.h"

namespace vmr::test {

/// Starts on Wednesday 2026-06-10 at 10:00 New York, a whole minute in open market, unless told otherwise.
class TestPane {
 public:
    static constexpr double wednesdayAt10 = 1781100000;

    explicit TestPane(double start = wednesdayAt10, double speed = 1) : time(start, speed) {
        http.responder = [this](const HttpRequest&) { return grant(); };
        queue.every(5, 10, [this] {  // the server answers pings
            if (sockets.count() > 0) sockets.last().frame(R"({"type":"pong"})");
        });
    }
    ~TestPane() { model.reset(); }
    TestPane(const TestPane&) = delete;

    /// An answer to a sign-in or to a refresh: a new token that lives one hour.
    HttpResponse grant() {
        const std::string id = R"("id)" + std::to_string(++tokens) + "\",";
        return {200,
                R"({"refreshToken":"r","expiresIn":"3600","localId":"uid","idToken":)" + id + R"("id_token":)" + id +
                    R"("refresh_token":"r","expires_in":"3600"})",
                std::nullopt};
    }

    /// With `other` in place of its own session.
    PaneSurroundings surroundings(FirebaseRESTAuth* other = nullptr) {
        const auto relay = [this] {
            return std::make_unique<RelayClient>("wss://relay.test/", sockets.factory(), queue, main, time);
        };
        return {.clock = time,
                .main = main,
                .preferences = preferences,
                .auth = other ? *other : auth,
                .session = session,
                .ids = ids,
                .hfScales = hfScales,
                .makeRelay = relay,
                .print = [this](const std::string& line) { printed.push_back(line); },
                .sim = sim,
                .strictFeed = strictFeed};
    }
    template <class... Restore>
    AppModel& make(const Restore&... restore) {
        model = std::make_unique<AppModel>(surroundings(), restore...);
        return *model;
    }
    void signIn() {
        model->signIn("a@b.c", "secret", true);
        time.runUntilIdle();
    }
    /// The newest socket opens and the relay greets.
    void greet() {
        sockets.last().accept();
        frame(R"({"type":"hello","email":"a@b.c"})");
    }
    /// A signed-in, connected pane; what it opened, if anything, stands in the log, which is then emptied.
    template <class... Restore>
    AppModel& open(const Restore&... restore) {
        make(restore...);
        signIn();
        greet();
        takeLog();
        return *model;
    }
    /// The same with the chart of `symbol`.
    AppModel& openSymbol(const std::string& symbol) {
        preferences.set("gex-last-symbol", symbol);
        return open();
    }

    void frame(const std::string& bytes) {
        sockets.last().frame(bytes);
        time.runUntilIdle();
    }
    void message(const std::string& type, const std::string& channel, const std::string& key, const std::string& body) {
        frame(R"({"type":")" + type + R"(","channel":")" + channel + R"(",")" + key + "\":" + body + "}");
    }
    void event(const std::string& channel, const std::string& body) { message("event", channel, "payload", body); }
    void snapshot(const std::string& channel, const std::string& body) { message("snapshot", channel, "data", body); }
    void batch(const std::string& channel, const std::string& body) { message("batch", channel, "events", body); }

    /// The log's texts since the last call.
    std::vector<std::string> takeLog() {
        std::vector<std::string> texts;
        for (const LogLine& line : std::exchange(model->log.logLines, {})) texts.push_back(line.text);
        return texts;
    }
    /// The pane's state but for its log.
    std::string documentWithoutLog() {
        auto lines = std::exchange(model->log.logLines, {});
        auto text = stateDocument({time, {model.get()}});
        model->log.logLines = std::move(lines);
        return text;
    }

    TestTime time;
    TestQueue main{time};
    TestQueue queue{time};
    MemoryPreferences preferences;
    FakeHttpClient http{main};
    FakeWebSockets sockets{queue};
    FirebaseRESTAuth auth{Endpoints{}, http, preferences, time};
    SessionTime session;
    UuidSource ids{1};
    HfScales hfScales;
    std::vector<std::string> printed;
    int tokens = 0;
    SimEngine* sim = nullptr;  ///< to be set before the pane is made
    bool strictFeed = false;   ///< likewise
    std::unique_ptr<AppModel> model;
};

/// The same as a test fixture.
class PaneFixture : public testing::Test, public TestPane {
 protected:
    /// The whole minute in which the test starts.
    static constexpr std::int64_t minute = static_cast<std::int64_t>(wednesdayAt10);
};

/// A chart that shows nothing: it counts how often it was told.
struct StillChart : ChartPort {
    void contentChanged() override { ++told; }
    bool interacting() const override { return dragged; }
    std::optional<Viewport> viewport() const override { return std::nullopt; }
    int told = 0;
    bool dragged = false;
};

/// JSON of bars, one a minute from `start` (seconds), all prices `price` and volume 1.
inline std::string flatBars(std::int64_t start, int count, double price = 100) {
    const std::string p = std::to_string(price);
    const std::string rest = R"(,"o":)" + p + R"(,"h":)" + p + R"(,"l":)" + p + R"(,"c":)" + p + R"(,"v":1},)";
    std::string out = "[";
    for (int i = 0; i < count; ++i) out += R"({"time":)" + std::to_string(start + i * 60) + rest;
    out.back() = ']';
    return out;
}

}  // namespace vmr::test
