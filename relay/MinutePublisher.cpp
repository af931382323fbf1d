#include "relay/MinutePublisher.h"

#include <algorithm>
#include <array>

#include "relay/MarketTime.h"
#include "relay/Payloads.h"

namespace vmr::relay {

namespace {
constexpr std::int64_t longestGapMs = 86400000;
constexpr std::array families{&flowMinutes, &bubbleSeries, &triangleSeries, &oscillatorMinutes};

const OptionSource* sourceOf(const std::string& channel, const MinuteFamily& family) {
    if (!channel.starts_with(family.prefix)) return nullptr;
    return findOptionSource(std::string_view(channel).substr(family.prefix.size()));
}

/// About three seconds of real time, in market time, rounded up to a divisor of a minute; 0 when a minute is shorter.
std::int64_t stepAt(double speed) {
    for (const std::int64_t seconds : {5, 10, 15, 20, 30}) {
        if (static_cast<double>(seconds) >= 3 * speed) return seconds * 1000;
    }
    return 0;
}

std::string keyed(std::int64_t minute, const std::string& value) {
    return "\"" + std::to_string(minute) + "\":" + value;
}
}  // namespace

int MinutePublisher::order(const std::string& channel) const {
    for (std::size_t i = 0; i < families.size(); ++i) {
        if (sourceOf(channel, *families[i])) return 120 + static_cast<int>(i);
    }
    return -1;
}

bool MinutePublisher::serves(const std::string& channel) const { return order(channel) >= 0; }

void MinutePublisher::opened(const std::string& channel, std::int64_t nowMs) {
    const MinuteFamily& family = *families[static_cast<std::size_t>(order(channel) - 120)];
    Open& one = open_[channel];
    one.family = &family;
    one.series = family.make(book_, *sourceOf(channel, family));
    fill(one, nowMs);
}

void MinutePublisher::closed(const std::string& channel) { open_.erase(channel); }

void MinutePublisher::fill(Open& one, std::int64_t nowMs) {
    one.minutes.clear();
    one.running.clear();
    one.endMs = minuteOf(nowMs) * 1000;
    one.asOfMs = 0;
    const auto all = one.series->path().closed(nowMs);
    const std::size_t count = std::min(all.size(), one.family->most);
    const std::vector<PriceMinute> newest(all.end() - static_cast<std::ptrdiff_t>(count), all.end());
    for (const PriceMinute& minute : newest) {
        std::string value = one.series->value(minute.minute, one.endMs);
        if (!value.empty()) one.minutes.emplace_hint(one.minutes.end(), minute.minute, std::move(value));
    }
    run(one, nowMs);
}

/// Brings the minute under way up to date; whether it has changed.
bool MinutePublisher::run(Open& one, std::int64_t nowMs) {
    const std::int64_t stepMs = stepAt(clock_.speed());
    const std::int64_t asOf = stepMs > 0 ? nowMs - nowMs % stepMs : minuteOf(nowMs) * 1000;
    if (asOf <= one.asOfMs) return false;  // before it when the clock has just got faster
    one.asOfMs = asOf;
    const std::int64_t minute = minuteOf(asOf);
    std::string value = asOf > minute * 1000 ? one.series->value(minute, asOf) : std::string();
    const bool changed = !value.empty() && (minute != one.runningMinute || value != one.running);
    one.runningMinute = minute;
    one.running = std::move(value);
    return changed;
}

std::optional<std::string> MinutePublisher::snapshot(const std::string& channel) {
    const auto found = open_.find(channel);
    if (found == open_.end()) return std::nullopt;
    const Open& one = found->second;
    std::string data = "{\"" + std::string(one.family->snapshotKey) + "\":{";
    const std::size_t start = data.size();
    for (const auto& [minute, value] : one.minutes) data += (data.size() > start ? "," : "") + keyed(minute, value);
    if (!one.running.empty()) data += (data.size() > start ? "," : "") + keyed(one.runningMinute, one.running);
    return payload::snapshot(channel, data + "}}");
}

void MinutePublisher::publish(const std::string& channel, const Open& one, std::int64_t minute,
                              const std::string& value) {
    const MinuteFamily& family = *one.family;
    std::string text;
    if (family.eventKey.empty()) {
        text.append("{\"").append(family.snapshotKey).append("\":{").append(keyed(minute, value)).append("}}");
    } else {
        text = R"({"minuteTs":)" + std::to_string(minute);
        text.append(",\"").append(family.eventKey).append("\":").append(value).append("}");
    }
    hub_.publish(channel, Frame(payload::event(channel, text)));
}

void MinutePublisher::advance(const std::string& channel, Open& one, std::int64_t nowMs) {
    const std::int64_t end = minuteOf(nowMs) * 1000;
    for (; one.endMs < end; one.endMs += 60000) {
        const std::int64_t minute = one.endMs / 1000;
        std::string value = one.series->value(minute, one.endMs + 60000);
        if (value.empty()) continue;
        publish(channel, one, minute, value);
        one.minutes.insert_or_assign(one.minutes.end(), minute, std::move(value));
        if (one.minutes.size() > one.family->most) one.minutes.erase(one.minutes.begin());
    }
    if (run(one, nowMs)) publish(channel, one, one.runningMinute, one.running);
}

void MinutePublisher::tick(std::int64_t nowMs) {
    for (auto& [channel, one] : open_) {
        if (nowMs - one.endMs <= longestGapMs) {
            advance(channel, one, nowMs);
            continue;
        }
        fill(one, nowMs);
        if (auto text = snapshot(channel)) hub_.publish(channel, Frame(std::move(*text)));
    }
}

}  // namespace vmr::relay
