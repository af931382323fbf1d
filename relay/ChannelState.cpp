#include "relay/ChannelState.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/NumberText.h"
#include "market/CandleParser.h"
#include "relay/BarBook.h"
#include "relay/MarketTime.h"

namespace vmr::relay {

namespace {
using Kind = MarketChannel::Kind;
constexpr double latestMs = 7258118400000;  // 2200-01-01
constexpr std::size_t minuteBars = 2;

/// An object merged key by key.
class FieldsState final : public ChannelState {
 public:
    void take(const Json& payload, bool snapshot) override {
        if (!payload.isObject()) return;
        if (snapshot) fields_.clear();
        known_ = true;
        for (const auto& [key, value] : payload.members()) fields_[std::string(key)] = payload.at(value);
    }
    std::optional<std::string> data() const override {
        if (!known_) return std::nullopt;
        std::string text = "{";
        for (const auto& [key, value] : fields_)
            text += (text.size() > 1 ? "," : "") + payload::quoted(key) + ":" + value.text();
        return text + "}";
    }

 private:
    std::map<std::string, Json> fields_;
    bool known_ = false;
};

struct KeyedShape {
    std::string_view prefix, many, one, key;
};
constexpr std::array keyedShapes{KeyedShape{"derived:gexBubbles:", "bubbles", "bubble", "minuteTs"},
                                 KeyedShape{"derived:hfTriangles:", "triangles", "triangle", "minuteTs"},
                                 KeyedShape{"derived:hfHistory:", "candles", "candle", "minuteTs"},
                                 KeyedShape{"derived:osc:", "points", "", ""},
                                 KeyedShape{"derived:srlevels:", "sessions", "", "sessionOpenTs"}};

/// An object of objects, each under its minute or session.
class KeyedState final : public ChannelState {
 public:
    explicit KeyedState(const KeyedShape& shape) : shape_(shape) {}

    void take(const Json& payload, bool) override {
        if (!payload.isObject()) return;
        const JsonView many = payload[shape_.many];
        known_ = known_ || many.isObject();
        for (const auto& [key, value] : many.members()) entries_[std::string(key)] = payload.at(value);
        const JsonView key = payload[shape_.key];
        if (many.isObject() || key.kind() != JsonView::Kind::integer) return;
        const JsonView one = shape_.one.empty() ? JsonView(payload) : payload[shape_.one];
        if (!one.isObject()) return;
        known_ = true;
        entries_[std::to_string(key.integer())] = payload.at(one);
    }
    std::optional<std::string> data() const override {
        if (!known_) return std::nullopt;
        std::string text = "{\"" + std::string(shape_.many) + "\":{";
        for (const auto& [key, value] : entries_)
            text += (text.back() == '{' ? "" : ",") + payload::quoted(key) + ":" + value.text();
        return text + "}}";
    }

 private:
    const KeyedShape& shape_;
    std::map<std::string, Json> entries_;
    bool known_ = false;
};

bool isMoment(JsonView value, double most) { return value.isNumber() && value.number() > 0 && value.number() <= most; }
}  // namespace

std::unique_ptr<ChannelState> ChannelState::make(std::string_view channel) {
    for (const KeyedShape& shape : keyedShapes) {
        if (channel.starts_with(shape.prefix)) return std::make_unique<KeyedState>(shape);
    }
    return std::make_unique<FieldsState>();
}

void BarsState::takeBars(const Json& payload, bool history) {
    const auto keep = [&](const std::optional<Candle>& bar) {
        if (bar) bars_[bar->time] = *bar;
    };
    const auto timed = [](JsonView object) -> std::optional<Candle> {
        if (!isMoment(object["ts"], latestMs) && !isMoment(object["time"], latestMs / 1000)) return std::nullopt;
        RepairTally uncounted;
        return CandleParser::candleFromMs(object, uncounted);
    };
    const JsonView list = payload.isArray() ? JsonView(payload) : payload["candles"];
    if (history && list.isArray()) shape_ = payload.isArray() ? payload::BarsShape::list : payload::BarsShape::candles;
    if (history && list.isObject()) shape_ = payload::BarsShape::keyed;
    if (list.isArray()) {
        for (const JsonView item : list.items()) keep(timed(item));
    } else if (list.isObject()) {
        for (const auto& [key, value] : list.members()) {
            if (const auto time = parseInt(key)) keep(CandleParser::candle(value, *time));
        }
    } else if (payload["minuteTs"].kind() == JsonView::Kind::integer) {
        keep(CandleParser::candle(payload["candle"], payload["minuteTs"].integer()));
    } else {
        keep(timed(payload));
    }
}

void BarsState::takeTrade(JsonView trade) {
    if (bars_.empty() || !isMoment(trade["ts"], latestMs) || !trade["price"].isNumber()) return;
    const Trade one{static_cast<std::int64_t>(trade["ts"].number()), trade["price"].number(), trade["size"].number(), 0,
                    0};
    const std::int64_t minute = minuteOf(one.timeMs);
    std::optional<Candle> bar;
    if (const auto found = bars_.find(minute); found != bars_.end()) bar = found->second;
    addTrade(bar, minute, one);
    bars_[minute] = *bar;
}

std::optional<std::string> BarsState::data(bool history) const {
    if (bars_.empty()) return std::nullopt;
    std::vector<Candle> list;
    auto from = bars_.begin();
    if (!history && bars_.size() > minuteBars) from = std::prev(bars_.end(), minuteBars);
    for (; from != bars_.end(); ++from) list.push_back(from->second);
    return payload::bars(list, history ? shape_ : payload::BarsShape::candles);
}

std::optional<PriceChannel> priceChannel(std::string_view channel) {
    const bool known =
        channel.starts_with("futures:") || channel.starts_with("stocks:") || channel.starts_with("indices:");
    if (!known) return std::nullopt;
    for (const auto& [ending, kind] : {std::pair(std::string_view(":1m"), Kind::minutes),
                                       {std::string_view(":trades"), Kind::trades},
                                       {std::string_view(":quote"), Kind::quote}}) {
        if (channel.ends_with(ending))
            return PriceChannel{std::string(channel.substr(0, channel.size() - ending.size())), kind};
    }
    return PriceChannel{std::string(channel), Kind::history};
}

}  // namespace vmr::relay
