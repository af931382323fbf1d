// A whole pane for benchmarks: the real model and relay client over a socket that the benchmark plays.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "base/Clock.h"
#include "market/SessionTime.h"
#include "model/AppModel.h"

namespace vmr::bench {

/// Runs what was posted, and the single timers that are due, when the benchmark says so; repeating timers never fire.
class HandQueue final : public SerialQueue {
 public:
    explicit HandQueue(const Clock& clock) : clock_(clock) {}
    void post(Task task) override { tasks_.push_back(std::move(task)); }
    TimerId after(double seconds, Task task) override {
        timers_.emplace(clock_.monotonic() + seconds, std::move(task));
        return ++ids_;
    }
    TimerId every(double, double, Task) override { return ++ids_; }
    void cancel(TimerId) override {}
    bool isCurrent() const override { return true; }
    /// Tells whether there was anything.
    bool run() {
        if (tasks_.empty()) return false;
        while (!tasks_.empty()) {
            Task task = std::move(tasks_.front());
            tasks_.pop_front();
            task();
        }
        return true;
    }
    void runTimers() {
        while (!timers_.empty() && timers_.begin()->first <= clock_.monotonic()) {
            Task task = std::move(timers_.begin()->second);
            timers_.erase(timers_.begin());
            task();
        }
    }

 private:
    const Clock& clock_;
    std::deque<Task> tasks_;
    std::multimap<double, Task> timers_;
    TimerId ids_ = 0;
};

class OneSocket final : public WebSocket {
 public:
    explicit OneSocket(Events& events) : events_(events) {}
    void open(const std::string&, std::size_t, Events events) override { events_ = std::move(events); }
    void sendText(std::string) override {}
    void cancel(int) override {}

 private:
    Events& events_;
};

class NoHttp final : public HttpClient {
 public:
    void send(HttpRequest, Done) override {}
};

/// A signed-in pane on NQ with a full history, in open market, whose queues run by hand.
struct HandPane {
    HandPane() {
        auth.idToken = "token";
        auth.refreshToken = "refresh";
        auth.expiresAt = clock.monotonic() + 1e6;
        preferences.set("gex-last-symbol", "NQ");
        const auto relay = [this] {
            return std::make_unique<RelayClient>(
                "wss://relay.test/", [this] { return std::make_unique<OneSocket>(events); }, queue, main, clock);
        };
        model = std::make_unique<AppModel>(PaneSurroundings{.clock = clock,
                                                            .main = main,
                                                            .preferences = preferences,
                                                            .auth = auth,
                                                            .session = session,
                                                            .ids = ids,
                                                            .hfScales = hfScales,
                                                            .makeRelay = relay,
                                                            .print = [](const std::string&) {}});
        settle();
        events.onOpen();
        events.onFrame(R"({"type":"hello"})", false);
        settle();
        for (int i = 0; i < 5000; ++i) model->bars.candles.push_back({minute - (4999 - i) * 60, 100, 101, 99, 100, 1});
    }
    void settle() {
        while (queue.run() || main.run()) {
        }
    }
    /// One message through the whole way, as it comes from the socket.
    void receive(std::string frame) {
        events.onFrame(std::move(frame), false);
        settle();
    }
    static constexpr std::int64_t minute = 1'781'100'000;  // 2026-06-10 10:00 New York
    SystemClock clock{static_cast<double>(minute), 1e-6};
    HandQueue main{clock}, queue{clock};
    MemoryPreferences preferences;
    NoHttp http;
    FirebaseRESTAuth auth{Endpoints{}, http, preferences, clock};
    SessionTime session;
    UuidSource ids;
    HfScales hfScales;
    WebSocket::Events events;
    std::unique_ptr<AppModel> model;
};

}  // namespace vmr::bench
