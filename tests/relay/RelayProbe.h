// A practice relay that runs, a plain client of it, and one request at a time to its sign-in endpoints.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "market/ClockSetting.h"
#include "relay/HandClock.h"
#include "relay/PracticeRelay.h"

namespace vmr::test {

using nlohmann::json;

/// What a read gave: a message, or how the connection ended.
struct Heard {
    std::string text;
    int closeCode = 0;   ///< of a close frame
    bool ended = false;  ///< closed, dropped, or nothing came in time
    bool timedOut = false;
};

/// Blocking calls, each with a limit of 20 real seconds.
class RelayProbe {
 public:
    /// Opens a socket with this token; `status()` is 101 when it was let in.
    RelayProbe(const PracticeRelay& relay, const std::string& token);
    ~RelayProbe();

    int status() const;
    void send(const std::string& text);
    void subscribe(const std::vector<std::string>& channels);
    Heard read(double seconds = 20);
    /// The next message of that type and, unless empty, channel; null when the connection ended first.
    json next(const std::string& type, const std::string& channel = {});
    /// Whether a ping is answered.
    bool answers();

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// Signs the practice account in and gives its identity token.
std::string signedIn(const PracticeRelay& relay);

struct RunningRelay : testing::Test {
    void start(const PracticeRelayOptions& options = {}) {
        relay = std::make_unique<PracticeRelay>(clock, options);
        const auto wrong = relay->start();
        ASSERT_FALSE(wrong) << *wrong;
        token = signedIn(*relay);
    }
    void SetUp() override { start(); }
    std::unique_ptr<RelayProbe> greeted() {
        auto probe = std::make_unique<RelayProbe>(*relay, token);
        EXPECT_EQ(probe->next("hello")["type"], "hello");
        return probe;
    }
    HandClock clock{*parseMoment("2026-06-10T10:00:20")};
    std::unique_ptr<PracticeRelay> relay;
    std::string token;
};

}  // namespace vmr::test
