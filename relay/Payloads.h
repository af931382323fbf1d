// The relay's messages as JSON text.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "market/Records.h"
#include "relay/TradeSource.h"

namespace vmr::relay::payload {

/// A JSON string of `text`, quotes included; bytes that are no UTF-8 are replaced.
std::string quoted(std::string_view text);

void appendInteger(std::string& out, std::int64_t value);

/// The shortest text that reads back as `value`, which must be finite.
void appendNumber(std::string& out, double value);

// The three envelopes of a channel; `data` and `events` are JSON texts, `events` without its brackets.
std::string snapshot(std::string_view channel, std::string_view data);
std::string event(std::string_view channel, std::string_view data);
std::string batch(std::string_view channel, std::string_view events);

std::string hello(std::string_view email);
std::string error(std::string_view message);
inline constexpr std::string_view pong = R"({"type":"pong"})";

/// How bars are written: a list, a list under `candles`, or an object of bars by their second under `candles`.
enum class BarsShape { list, candles, keyed };
std::string bars(const std::vector<Candle>& bars, BarsShape shape);

/// How one bar is written: under `candle` beside `minuteTs`, or bare with `ts` and short keys or `time` and long ones.
enum class BarShape { minute, bareMs, bareSeconds };
std::string bar(const Candle& bar, BarShape shape);

/// The object {"ts","o","h","l","c","v"}.
void appendBar(std::string& out, const Candle& bar);

/// The object {"price","size","ts"}.
void appendTrade(std::string& out, const Trade& trade);
std::string quote(const Trade& trade);

/// The body of "meta:contracts".
std::string contracts(const std::map<std::string, std::string>& map);

/// The body of "meta:instruments".
std::string catalog();

}  // namespace vmr::relay::payload
