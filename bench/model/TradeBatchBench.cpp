// A batch of trades from the socket's frame to the pane's bars, beside the JSON library's bare parse of the same bytes.
#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <algorithm>
#include <deque>

#include "base/Clock.h"
#include "market/SessionTime.h"
#include "model/AppModel.h"

namespace vmr {
namespace {

// Runs what was posted when the benchmark says so; timers never fire.
class HandQueue final : public SerialQueue {
 public:
    void post(Task task) override { tasks_.push_back(std::move(task)); }
    TimerId after(double, Task) override { return ++timers_; }
    TimerId every(double, double, Task) override { return ++timers_; }
    void cancel(TimerId) override {}
    bool isCurrent() const override { return true; }
    bool run() {
        if (tasks_.empty()) return false;
        while (!tasks_.empty()) {
            Task task = std::move(tasks_.front());
            tasks_.pop_front();
            task();
        }
        return true;
    }

 private:
    std::deque<Task> tasks_;
    TimerId timers_ = 0;
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

// A signed-in pane on NQ with a full history, in open market.
struct Pane {
    Pane() {
        auth.idToken = "token";
        auth.refreshToken = "refresh";
        auth.expiresAt = clock.monotonic() + 1e6;
        RelayClient::setPrinter([](const std::string&) {});
        preferences.set("gex-last-symbol", "NQ");
        model = std::make_unique<AppModel>(PaneSurroundings{
            clock,
            main,
            preferences,
            auth,
            session,
            ids,
            [this] {
                return std::make_unique<RelayClient>(
                    "wss://relay.test/", [this] { return std::make_unique<OneSocket>(events); }, queue, main, clock);
            },
            [](const std::string&) {},
            {}});
        settle();
        events.onOpen();
        events.onFrame(R"({"type":"hello"})", false);
        settle();
        for (int i = 0; i < 5000; ++i) model->candles.push_back({minute - (4999 - i) * 60, 100, 101, 99, 100, 1});
    }
    void settle() {
        while (queue.run() || main.run()) {
        }
    }
    static constexpr std::int64_t minute = 1'781'100'000;  // 2026-06-10 10:00 New York
    SystemClock clock{static_cast<double>(minute), 1e-6};
    HandQueue main, queue;
    MemoryPreferences preferences;
    NoHttp http;
    FirebaseRESTAuth auth{Endpoints{}, http, preferences, clock};
    SessionTime session;
    UuidSource ids;
    WebSocket::Events events;
    std::unique_ptr<AppModel> model;
};

std::string batchText(const std::string& channel, int count) {
    std::string text = R"({"type":"batch","channel":")" + channel + R"(","events":[)";
    for (int i = 0; i < count; ++i)
        text += std::string(i ? "," : "") + R"({"price":)" + std::to_string(21'000 + (i * 7 % 40) * 0.25) +
                R"(,"size":)" + std::to_string(1 + i % 9) + R"(,"ts":)" + std::to_string(Pane::minute * 1000 + i * 10) +
                "}";
    return text + "]}";
}

void tradeBatch(benchmark::State& state) {
    Pane pane;
    const std::string text = batchText("futures:NQM6:trades", 100);
    const simdjson::padded_string padded(text);
    simdjson::dom::parser parser;
    const SystemClock clock;
    double bare = 1, decoding = 1, mainShare = 1,
           freeing = 1;  // the least of each, what another process disturbs least
    for (auto _ : state) {
        std::string frame = text;  // the socket's own buffer
        const double t0 = clock.monotonic();
        benchmark::DoNotOptimize(parser.parse(padded).error());
        const double t1 = clock.monotonic();
        pane.events.onFrame(std::move(frame), false);
        const double t2 = clock.monotonic();
        pane.main.run();
        const double t3 = clock.monotonic();
        pane.queue.run();
        const double t4 = clock.monotonic();
        bare = std::min(bare, t1 - t0);
        decoding = std::min(decoding, t2 - t1);
        mainShare = std::min(mainShare, t3 - t2);
        freeing = std::min(freeing, t4 - t3);
        state.SetIterationTime(t4 - t1);
    }
    if (pane.model->candles.back().close != 21'000 + (99 * 7 % 40) * 0.25)
        state.SkipWithError("the trades did not arrive");
    state.counters["to_bare_parse"] = (decoding + mainShare + freeing) / bare;
    state.counters["bare_us"] = bare * 1e6;
    state.counters["decode_us"] = decoding * 1e6;
    state.counters["main_us"] = mainShare * 1e6;
    state.counters["free_us"] = freeing * 1e6;
}
BENCHMARK(tradeBatch)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
