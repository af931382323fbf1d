// The overlay series as their definitions read, from bars and the date library's calendar; nothing of the program's.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "market/HfHistoryParser.h"
#include "market/SRLevelsParser.h"
#include "model/PlainBars.h"

namespace vmr::test {

std::vector<OvPoint> plainVwap(const Bars& bars, int hhmm);
/// The VWAP since 09:30, shown while stocks trade.
std::vector<OvPoint> plainNyVwap(const Bars& bars, int hhmm);
std::vector<OvPoint> plainEma(const Bars& bars, int period);
std::vector<OvCandle> plainSecond(const Bars& primary, const Bars& sec, int hhmm);
std::vector<OvColorPoint> plainHf(const Bars& bars, const HfByMin& flow, int tf, int hhmm, double fallback,
                                  const SRSessions& levels);
std::vector<OvPoint> plainVix(const Bars& bars, const Bars& vix, int tf, int hhmm, double scale, int smooth);

inline std::array<double, 6> numbers(const OvPoint& p) { return {p.idx, p.v}; }
inline std::array<double, 6> numbers(const OvColorPoint& p) { return {p.idx, p.v, p.positive ? 1.0 : 0, p.base, p.hf}; }
inline std::array<double, 6> numbers(const OvCandle& p) { return {p.idx, p.o, p.h, p.l, p.c, p.realC}; }

/// Sums made in another order differ by some 1e-13 of the value; a tick more or less in one bar of a session's VWAP,
/// the least that an error makes, is above 1e-9.
template <class Point>
void expectNear(const std::vector<Point>& got, const std::vector<Point>& expected, const std::string& what) {
    ASSERT_EQ(got.size(), expected.size()) << what;
    for (std::size_t i = 0; i < got.size(); ++i)
        for (std::size_t k = 0; k < 6; ++k) {
            const double value = numbers(expected[i])[k];
            ASSERT_NEAR(numbers(got[i])[k], value, 1e-10 * std::abs(value)) << what << " at " << i << ", number " << k;
        }
}

}  // namespace vmr::test
