#include "relay/Payloads.h"

#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <span>

#include "market/Roots.h"
#include "relay/Instruments.h"

namespace vmr::relay::payload {

namespace {
std::string envelope(std::string_view type, std::string_view channel, std::string_view key, std::string_view data) {
    std::string text;
    text.reserve(data.size() + channel.size() + 64);
    text.append(R"({"type":")").append(type).append(R"(","channel":)").append(quoted(channel));
    text.append(",\"").append(key).append("\":").append(data).append("}");
    return text;
}

void appendPrices(std::string& out, const Candle& bar, std::span<const std::string_view, 5> keys) {
    const std::array values{bar.open, bar.high, bar.low, bar.close, bar.volume};
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) out += ',';
        out.append("\"").append(keys[i]).append("\":");
        appendNumber(out, values[i]);
    }
}

constexpr std::array<std::string_view, 5> shortKeys{"o", "h", "l", "c", "v"};
constexpr std::array<std::string_view, 5> longKeys{"open", "high", "low", "close", "volume"};
}  // namespace

std::string quoted(std::string_view text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void appendInteger(std::string& out, std::int64_t value) {
    std::array<char, 24> buffer;
    out.append(buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr);
}

void appendNumber(std::string& out, double value) {
    std::array<char, 32> buffer;
    out.append(buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr);
}

std::string snapshot(std::string_view channel, std::string_view data) {
    return envelope("snapshot", channel, "data", data);
}

std::string event(std::string_view channel, std::string_view data) {
    return envelope("event", channel, "payload", data);
}

std::string batch(std::string_view channel, std::string_view events) {
    std::string list;
    list.reserve(events.size() + 2);
    list.append("[").append(events).append("]");
    return envelope("batch", channel, "events", list);
}

std::string hello(std::string_view email) { return R"({"type":"hello","email":)" + quoted(email) + "}"; }

std::string error(std::string_view message) { return R"({"type":"error","message":)" + quoted(message) + "}"; }

void appendBar(std::string& out, const Candle& bar) {
    out += R"({"ts":)";
    appendInteger(out, bar.time * 1000);
    out += ',';
    appendPrices(out, bar, shortKeys);
    out += '}';
}

std::string bars(const std::vector<Candle>& bars, BarsShape shape) {
    std::string text;
    text.reserve(bars.size() * 96 + 32);
    text += shape == BarsShape::list ? "[" : shape == BarsShape::candles ? R"({"candles":[)" : R"({"candles":{)";
    for (std::size_t i = 0; i < bars.size(); ++i) {
        if (i > 0) text += ',';
        if (shape != BarsShape::keyed) {
            appendBar(text, bars[i]);
            continue;
        }
        text += '"';
        appendInteger(text, bars[i].time);
        text += "\":{";
        appendPrices(text, bars[i], shortKeys);
        text += '}';
    }
    text += shape == BarsShape::list ? "]" : shape == BarsShape::candles ? "]}" : "}}";
    return text;
}

std::string bar(const Candle& bar, BarShape shape) {
    std::string text;
    if (shape == BarShape::bareMs) {
        appendBar(text, bar);
        return text;
    }
    const bool nested = shape == BarShape::minute;
    text += nested ? R"({"minuteTs":)" : R"({"time":)";
    appendInteger(text, bar.time);
    text += nested ? R"(,"candle":{)" : ",";
    appendPrices(text, bar, nested ? shortKeys : longKeys);
    text += nested ? "}}" : "}";
    return text;
}

void appendTrade(std::string& out, const Trade& trade) {
    out += R"({"price":)";
    appendNumber(out, trade.price);
    out += R"(,"size":)";
    appendNumber(out, trade.size);
    out += R"(,"ts":)";
    appendInteger(out, trade.timeMs);
    out += '}';
}

std::string quote(const Trade& trade) {
    std::string text = R"({"bid":)";
    appendNumber(text, trade.bid);
    text += R"(,"ask":)";
    appendNumber(text, trade.ask);
    return text + "}";
}

std::string contracts(const std::map<std::string, std::string>& map) { return nlohmann::json{{"map", map}}.dump(); }

std::string catalog() {
    nlohmann::json futures = nlohmann::json::array();
    for (const BuiltInFuture& row : builtInInstruments) {
        std::vector<std::string_view> sources{row.etf};
        if (!row.index.empty()) sources.push_back(row.index);
        nlohmann::json one{
            {"sym", row.sym},     {"sources", sources},         {"defaultSource", row.etf},
            {"tick", row.tick()}, {"tickValue", row.tickValue}, {"hfScale", hfScaleFor(row.sym, row.etf)}};
        if (!row.pair.empty()) one["pair"] = row.pair;
        futures.push_back(std::move(one));
    }
    nlohmann::json stocks = nlohmann::json::array();
    for (const Instrument& one : instruments()) {
        if (one.family == Family::stocks) stocks.push_back({{"sym", one.symbol}, {"hfScale", 0.0000002}});
    }
    return nlohmann::json{{"catalog", {{"futures", futures}, {"stocks", stocks}}}}.dump();
}

}  // namespace vmr::relay::payload
