#include "relay/ReplayPublisher.h"

#include "relay/Payloads.h"

namespace vmr::relay {

using Kind = MarketChannel::Kind;

int ReplayPublisher::order(const std::string& channel) const {
    const auto name = priceChannel(channel);
    if (name) return static_cast<int>(name->kind);
    return channel.starts_with("meta:") ? 100 : 110;
}

std::optional<std::string> ReplayPublisher::snapshot(const std::string& channel) {
    const auto name = priceChannel(channel);
    std::optional<std::string> data;
    if (name && (name->kind == Kind::history || name->kind == Kind::minutes)) {
        const auto found = bars_.find(name->base);
        if (found != bars_.end()) data = found->second.data(name->kind == Kind::history);
    } else if (const auto found = others_.find(channel); found != others_.end()) {
        data = found->second->data();
    }
    if (!data) return std::nullopt;
    return payload::snapshot(channel, *data);
}

void ReplayPublisher::tick(std::int64_t nowMs) {
    for (const RecordedFrame* next = reader_->peek(); next && next->timeMs <= nowMs; next = reader_->peek()) {
        take(*next);
        hub_.publish(next->channel, next->frame);
        reader_->pop();
    }
}

void ReplayPublisher::wentBack(std::int64_t nowMs) {
    bars_.clear();
    others_.clear();
    reader_->rewind();
    for (const RecordedFrame* next = reader_->peek(); next && next->timeMs <= nowMs; next = reader_->peek()) {
        take(*next);
        reader_->pop();
    }
}

void ReplayPublisher::take(const RecordedFrame& recorded) {
    const auto message = Json::parse(*recorded.frame.bytes);
    if (!message || !message->isObject()) return;
    const bool snapshot = (*message)["type"].string() == "snapshot";
    const Json payload = message->at((*message)[snapshot ? "data" : "payload"]);
    const auto name = priceChannel(recorded.channel);
    if (name && name->kind != Kind::quote) return takePrices(*name, *message, payload);
    auto& state = others_[recorded.channel];
    if (!state) state = ChannelState::make(recorded.channel);
    state->take(payload, snapshot);
}

void ReplayPublisher::takePrices(const PriceChannel& name, const Json& message, const Json& payload) {
    BarsState& bars = bars_[name.base];
    if (name.kind != Kind::trades) return bars.takeBars(payload, name.kind == Kind::history);
    bars.takeTrade(payload);
    for (const JsonView trade : message["events"].items()) bars.takeTrade(trade);
}

std::vector<Candle> ReplayPublisher::bars(const std::string& channel) const {
    std::vector<Candle> list;
    if (const auto found = bars_.find(channel); found != bars_.end()) {
        for (const auto& entry : found->second.bars()) list.push_back(entry.second);
    }
    return list;
}

}  // namespace vmr::relay
