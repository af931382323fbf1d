#include "relay/LevelsPublisher.h"

#include <algorithm>

#include "relay/MarketTime.h"
#include "relay/Payloads.h"

namespace vmr::relay {

namespace {
constexpr std::string_view prefix = "derived:srlevels:";
constexpr std::size_t daysKept = 12;

const Instrument* rootOf(std::string_view channel) {
    return channel.starts_with(prefix) ? findInstrument(Family::futures, channel.substr(prefix.size())) : nullptr;
}
}  // namespace

bool LevelsPublisher::serves(const std::string& channel) const { return rootOf(channel) != nullptr; }

void LevelsPublisher::opened(const std::string& channel, std::int64_t nowMs) {
    Open& one = open_[channel];
    one.instrument = rootOf(channel);
    const auto known = market_.path(*one.instrument).closed(nowMs);
    one.scannedMs = (known.empty() ? minuteOf(nowMs) : known.front().minute) * 1000 - 1;
    advance(one, nowMs);
}

void LevelsPublisher::closed(const std::string& channel) { open_.erase(channel); }

bool LevelsPublisher::scan(Open& one, std::int64_t minute, std::int64_t nowMs) {
    const MarketSession* session = market_.session(*one.instrument, minute, nowMs);
    if (!session) return false;
    const auto [entry, fresh] = one.days.try_emplace(session->start, Day{*session, {}, {}});
    Day& day = entry->second;
    bool changed = false;
    for (const Trade& trade : market_.path(*one.instrument).trades(minute)) {
        if (trade.timeMs <= one.scannedMs || trade.timeMs > nowMs) continue;
        const auto come = [&](Triggers& side, const auto& reached) {
            while (side.count < MarketSession::levels && (side.count == 0 || reached(side.count - 1))) {
                side.times[side.count++] = trade.timeMs / 1000;
                changed = true;
            }
        };
        come(day.up, [&](std::size_t level) { return trade.price >= day.session.up[level]; });
        come(day.down, [&](std::size_t level) { return trade.price <= day.session.down[level]; });
    }
    if (fresh && !changed) one.days.erase(entry);
    return changed;
}

std::vector<std::int64_t> LevelsPublisher::advance(Open& one, std::int64_t nowMs) {
    std::vector<std::int64_t> changed;
    const std::int64_t start = minuteOf(one.scannedMs + 1);
    const auto known = market_.path(*one.instrument).closed(nowMs);
    const auto first = std::lower_bound(known.begin(), known.end(), start,
                                        [](const PriceMinute& a, std::int64_t b) { return a.minute < b; });
    for (auto at = first; at != known.end(); ++at) {
        const MarketSession* session = market_.session(*one.instrument, at->minute, nowMs);
        const auto day = session ? one.days.find(session->start) : one.days.end();
        const auto within = [&](const Triggers& side, const auto& reached) {
            return side.count == MarketSession::levels || (side.count > 0 && !reached(side.count - 1));
        };
        // Most minutes reach no level: their high and low say so, which spares making their trades again.
        const bool quiet = day != one.days.end() &&
                           within(day->second.up, [&](std::size_t i) { return at->high >= session->up[i]; }) &&
                           within(day->second.down, [&](std::size_t i) { return at->low <= session->down[i]; });
        if (!quiet && scan(one, at->minute, nowMs)) changed.push_back(session->start);
    }
    const std::int64_t minute = minuteOf(nowMs);
    if (scan(one, minute, nowMs)) {
        if (const MarketSession* session = market_.session(*one.instrument, minute, nowMs))
            changed.push_back(session->start);
    }
    one.scannedMs = nowMs;
    while (one.days.size() > daysKept) one.days.erase(one.days.begin());
    std::erase_if(changed, [&](std::int64_t day) { return !one.days.contains(day); });
    changed.erase(std::unique(changed.begin(), changed.end()), changed.end());
    return changed;
}

std::string LevelsPublisher::text(const Day& day) {
    std::string out = R"({"sessionOpenTs":)" + std::to_string(day.session.start) + R"(,"openPrice":)";
    payload::appendNumber(out, day.session.open);
    const auto side = [&](std::string_view key, char letter, const Triggers& in,
                          const std::array<double, MarketSession::levels>& prices) {
        out.append(",\"").append(key).append("\":[");
        for (std::size_t i = 0; i < in.count; ++i) {
            const std::string number = std::to_string(i + 1);
            out += (i > 0 ? ",{\"i\":" : "{\"i\":") + number + R"(,"label":")" + letter + number + R"(","price":)";
            payload::appendNumber(out, prices[i]);
            out += R"(,"triggerTime":)" + std::to_string(in.times[i]) + "}";
        }
        out += ']';
    };
    side("up", 'R', day.up, day.session.up);
    side("dn", 'S', day.down, day.session.down);
    return out + "}";
}

std::optional<std::string> LevelsPublisher::snapshot(const std::string& channel) {
    const auto found = open_.find(channel);
    if (found == open_.end()) return std::nullopt;
    std::string data = R"({"sessions":{)";
    for (const auto& [start, day] : found->second.days)
        data += (data.back() == '{' ? "\"" : ",\"") + std::to_string(start) + "\":" + text(day);
    return payload::snapshot(channel, data + "}}");
}

void LevelsPublisher::tick(std::int64_t nowMs) {
    for (auto& [channel, one] : open_) {
        if (nowMs <= one.scannedMs) continue;
        for (const std::int64_t start : advance(one, nowMs))
            hub_.publish(channel, Frame(payload::event(channel, text(one.days.at(start)))));
    }
}

}  // namespace vmr::relay
