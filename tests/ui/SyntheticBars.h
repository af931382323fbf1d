// Bars for pictures: the same for the same count, on whole minutes of one trading day.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "market/Records.h"

namespace vmr::test {

inline std::vector<Candle> syntheticBars(int count) {
    std::vector<Candle> out;
    std::uint32_t state = 12345;
    const auto random = [&state] {
        state = state * 1664525U + 1013904223U;
        return (state >> 8) / 16777216.0;
    };
    const auto quarter = [](double price) { return std::round(price * 4) / 4; };
    double close = 21480.25;
    constexpr std::int64_t start = 1781098200;  // 2026-06-10 09:30 in New York
    for (int i = 0; i < count; ++i) {
        Candle bar;
        bar.time = start + 60LL * i;
        bar.open = close;
        bar.close = quarter(bar.open + (random() - 0.49) * 14 + 4 * std::sin(i / 7.0));
        bar.high = quarter(std::max(bar.open, bar.close) + random() * 6);
        bar.low = quarter(std::min(bar.open, bar.close) - random() * 6);
        bar.volume = std::floor(100 + random() * 900);
        close = bar.close;
        out.push_back(bar);
    }
    return out;
}

}  // namespace vmr::test
