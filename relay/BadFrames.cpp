#include "relay/BadFrames.h"

#include <array>
#include <cmath>

#include "relay/Payloads.h"

namespace vmr::relay {

namespace {
/// `head` + `body` + `tail`, padded with blanks before the tail to `bytes`.
std::string padded(std::string text, std::string_view tail, std::size_t bytes) {
    if (text.size() + tail.size() < bytes) text.append(bytes - text.size() - tail.size(), ' ');
    return text.append(tail);
}

Candle madeUpBar(const Instrument& instrument, double near, std::int64_t time) {
    const auto wave = [&](double period) { return std::round(6 * std::sin(static_cast<double>(time / 60) / period)); };
    const double ticks = std::round(near * instrument.ticksPerPoint) + wave(37) + wave(11);
    const auto price = [&](double offset) { return (ticks + offset) / instrument.ticksPerPoint; };
    return {time, price(0), price(3), price(-3), price(1), 100};
}

std::size_t barBytes(const Candle& bar) {
    std::string text;
    payload::appendBar(text, bar);
    return text.size() + 1;  // and the comma after it
}

std::string strikeRow(std::size_t index) {
    const auto n = [](double value) { return std::to_string(static_cast<long long>(value)); };
    const double x = static_cast<double>(index);
    std::string row = R"({"strike":)" + n(100 + x);
    row += R"(,"callGex":)" + n(1e6 + 7 * x) + R"(,"putGex":-)" + n(9e5 + 5 * x) + R"(,"callDex":)" + n(4e5 + x);
    row += R"(,"putDex":-)" + n(3e5 + x) + R"(,"callHf":)" + n(1e4 + x) + R"(,"putHf":-)" + n(2e4 + x);
    return row + R"(,"callOI":)" + n(500 + x) + R"(,"putOI":)" + n(600 + x) + "}";
}
}  // namespace

Frame malformedFrame(std::size_t index) {
    static const std::array frames{
        Frame("this is no JSON"),
        Frame("\xff\xfe{\"type\":\"pong\"\x80}", true),
        Frame(R"({"type":"snapshot","channel":"futures:NQM6","data":{"candles":[{"ts":17)"),
        Frame(R"([{"type":"hello"}])"),
        Frame(R"({"channel":"futures:NQM6","data":{}})"),
        Frame(R"({"type":"snapshot","data":{"candles":[]}})"),
        Frame(R"({"type":"event","channel":5,"payload":{}})"),
        Frame(R"({"type":7,"channel":"futures:NQM6"})"),
        Frame(R"({"type":"surprise","channel":"futures:NQM6"})"),
        Frame(R"({"type":"batch","channel":"futures:NQM6:trades"})"),
        Frame(R"({"type":"batch","channel":"futures:NQM6:trades","events":{"price":1}})"),
        Frame(""),
    };
    return frames[index % frames.size()];
}

Frame wrongFrame(const std::string& channel, std::size_t index) {
    static constexpr std::array<std::string_view, 12> payloads{
        "null",
        "17",
        R"("text")",
        "[1,2,null]",
        "{}",
        R"({"price":"n/a","ts":"soon","bid":null,"ask":{}})",
        R"({"candles":5,"map":[],"catalog":"none"})",
        R"({"candles":[{"ts":"x","o":1},7],"map":{"NQ":5},"catalog":[]})",
        R"({"candles":{"x":{"o":1},"60":8},"catalog":{"futures":{},"stocks":5}})",
        R"({"minuteTs":"now","candle":[1,2,3,4]})",
        R"({"gexByStrike":[{"strike":"high"},{}],"expirations":[1,{}],"byExpiration":[]})",
        R"({"bubbles":{"x":1},"triangles":[],"sessions":"none","lines":7})",
    };
    const std::string_view payload = payloads[index % payloads.size()];
    const std::size_t round = index / payloads.size() + index;
    if (round % 3 == 0) return Frame(payload::snapshot(channel, payload));
    if (round % 3 == 1) return Frame(payload::event(channel, payload));
    return Frame(payload::batch(channel, std::string(payload) + ",[],\"\"," + std::string(payload)));
}

std::string bigBars(std::size_t bytes, const std::string& channel, const Instrument& instrument,
                    const std::vector<Candle>& ledger, std::int64_t minute) {
    const std::string empty = payload::snapshot(channel, R"({"candles":[]})");
    const std::string_view tail = "]}}";
    std::size_t room = bytes > empty.size() ? bytes - empty.size() : 0;
    const auto fits = [&room](const Candle& bar) {
        const std::size_t need = barBytes(bar);
        if (need > room) return false;
        room -= need;
        return true;
    };
    std::vector<Candle> newestFirst;
    bool more = true;
    for (auto bar = ledger.rbegin(); more && bar != ledger.rend(); ++bar) {
        if ((more = fits(*bar))) newestFirst.push_back(*bar);
    }
    const double near = ledger.empty() ? instrument.anchor : ledger.front().open;
    for (std::int64_t time = ledger.empty() ? minute : ledger.front().time - 60; more && time > 0; time -= 60) {
        const Candle bar = madeUpBar(instrument, near, time);
        if ((more = fits(bar))) newestFirst.push_back(bar);
    }
    std::string text = empty.substr(0, empty.size() - tail.size());
    text.reserve(bytes);
    for (auto bar = newestFirst.rbegin(); bar != newestFirst.rend(); ++bar) {
        if (bar != newestFirst.rbegin()) text += ',';
        payload::appendBar(text, *bar);
    }
    return padded(std::move(text), tail, bytes);
}

std::string bigDerived(std::size_t bytes, const std::string& channel) {
    const std::string_view tail = "]}}";
    const std::string empty = payload::snapshot(channel, R"({"etfRatio":1.0,"gexByStrike":[]})");
    std::string text = empty.substr(0, empty.size() - tail.size());
    text.reserve(bytes);
    for (std::size_t index = 0;; ++index) {
        const std::string row = (index > 0 ? "," : "") + strikeRow(index);
        if (text.size() + row.size() + tail.size() > bytes) break;
        text += row;
    }
    return padded(std::move(text), tail, bytes);
}

}  // namespace vmr::relay
