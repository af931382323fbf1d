#include "model/BarRollSelfTest.h"

#include <array>
#include <cstdint>
#include <vector>

#include "market/Records.h"
#include "market/SessionTime.h"

namespace vmr {

namespace {
struct Run {
    const char* name;
    bool isStock;
    std::int64_t base;  // seconds since 1970
    int minutes;
    int tradeEvery;  // seconds; 0 for no trades
};

constexpr std::int64_t june10At14 = 1781114400;  // 2026-06-10 14:00:00 New York
constexpr std::int64_t june10At10 = 1781100000;  // 2026-06-10 10:00:00 New York

class Simulation {
 public:
    explicit Simulation(const Run& run) : run_(run) { bars_.push_back({run.base - 60, 100, 100, 100, 100, 0}); }

    BarRollResult play() {
        const std::int64_t end = run_.base + run_.minutes * 60;
        for (std::int64_t sec = run_.base - 30; sec <= end; ++sec) {
            const std::int64_t minute = sec / 60 * 60;
            const bool open = session_.marketOpen(sec, run_.isStock);
            if (open && bars_.back().time < minute) roll(minute);
            if (run_.tradeEvery >= 1 && sec % run_.tradeEvery == 0) trade(minute);
            if (open && bars_.back().time != minute)
                return {false, std::string(run_.name) + ": FALHA sec=" + std::to_string(sec) + " last=" +
                                   std::to_string(bars_.back().time) + " esperado=" + std::to_string(minute)};
            if (bars_.size() >= 2 && bars_[bars_.size() - 2].time >= bars_.back().time)
                return {false,
                        std::string(run_.name) + ": FALHA barra duplicada/fora de ordem sec=" + std::to_string(sec)};
        }
        return {true, std::string(run_.name) + ": OK — " + std::to_string(created_) + " barras em " +
                          std::to_string(run_.minutes) + " min"};
    }

 private:
    void roll(std::int64_t minute) {
        const double close = bars_.back().close;
        bars_.push_back({minute, close, close, close, close, 0});
        ++created_;
    }

    void trade(std::int64_t minute) {
        Candle& last = bars_.back();
        if (last.time < minute) {
            const double close = last.close;
            bars_.push_back({minute, close, close + 1.0, close, close + 1.0, 1.0});
            ++created_;
        } else if (last.time == minute) {
            last.high += 0.5;
            last.close += 0.5;
            last.volume += 1.0;
        }
    }

    const Run& run_;
    SessionTime session_;
    std::vector<Candle> bars_;
    int created_ = 0;
};
}  // namespace

BarRollResult runBarRollSelfTest() {
    constexpr std::array<Run, 4> runs{{{"futuros quieto", false, june10At14, 120, 0},
                                       {"futuros ativo", false, june10At14, 120, 7},
                                       {"ações quieto", true, june10At10, 300, 0},
                                       {"ações ativo", true, june10At10, 300, 5}}};
    BarRollResult all{true, ""};
    for (const Run& run : runs) {
        const BarRollResult one = Simulation(run).play();
        all.ok = all.ok && one.ok;
        if (!all.summary.empty()) all.summary += "\n  ";
        all.summary += one.summary;
    }
    return all;
}

}  // namespace vmr
