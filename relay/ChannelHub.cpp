#include "relay/ChannelHub.h"

#include <algorithm>

namespace vmr::relay {

void ChannelHub::add(std::unique_ptr<Publisher> publisher) { publishers_.push_back(std::move(publisher)); }

Publisher* ChannelHub::publisherOf(const std::string& channel) const {
    for (const auto& one : publishers_) {
        if (one->serves(channel)) return one.get();
    }
    return nullptr;
}

std::vector<std::string> ChannelHub::subscribe(Subscriber& subscriber, const std::vector<std::string>& channels,
                                               std::int64_t nowMs) {
    struct Wish {
        int order;
        std::string channel;
        Publisher* publisher;
        bool first;
    };
    tick(nowMs);  // before the subscriber joins: what is published now is part of its snapshot
    std::vector<Wish> wishes;
    std::vector<std::string> refused;
    std::size_t held = channelsOf(subscriber).size();
    for (const std::string& channel : channels) {
        Publisher* publisher = publisherOf(channel);
        const auto known = listeners_.find(channel);
        const bool fresh = known == listeners_.end() || !known->second.contains(&subscriber);
        if (!publisher || (fresh && held >= mostChannels)) {
            refused.push_back(channel);
            continue;
        }
        held += fresh;
        const bool first = known == listeners_.end();
        if (first) publisher->opened(channel, nowMs);
        listeners_[channel].insert(&subscriber);
        wishes.push_back({publisher->order(channel), channel, publisher, first});
    }
    std::stable_sort(wishes.begin(), wishes.end(), [](const Wish& a, const Wish& b) { return a.order < b.order; });
    for (const Wish& wish : wishes) {
        auto text = wish.publisher->snapshot(wish.channel);
        if (!text) continue;
        const Frame frame(std::move(*text));
        subscriber.send(frame);
        if (wish.first && tap_) tap_(nowMs_, wish.channel, frame);
    }
    return refused;
}

void ChannelHub::remove(Subscriber& subscriber, const std::string& channel) {
    const auto found = listeners_.find(channel);
    if (found == listeners_.end() || found->second.erase(&subscriber) == 0 || !found->second.empty()) return;
    listeners_.erase(found);
    publisherOf(channel)->closed(channel);
}

void ChannelHub::unsubscribe(Subscriber& subscriber, const std::vector<std::string>& channels) {
    for (const std::string& channel : channels) remove(subscriber, channel);
}

void ChannelHub::leave(Subscriber& subscriber) { unsubscribe(subscriber, channelsOf(subscriber)); }

void ChannelHub::tick(std::int64_t nowMs) {
    if (nowMs < nowMs_) return goBack(nowMs);
    nowMs_ = nowMs;
    for (const auto& one : publishers_) one->tick(nowMs);
}

void ChannelHub::goBack(std::int64_t nowMs) {
    nowMs_ = nowMs;
    for (const auto& [channel, listeners] : listeners_) publisherOf(channel)->closed(channel);
    for (const auto& one : publishers_) one->wentBack(nowMs);
    for (const auto& one : publishers_) one->tick(nowMs);
    std::multimap<int, std::string> wanted;  // by the order of their snapshots
    for (const auto& [channel, listeners] : listeners_) {
        Publisher* publisher = publisherOf(channel);
        publisher->opened(channel, nowMs);
        wanted.emplace(publisher->order(channel), channel);
    }
    for (const auto& [order, channel] : wanted) {
        if (auto text = publisherOf(channel)->snapshot(channel)) publish(channel, Frame(std::move(*text)));
    }
}

void ChannelHub::publish(const std::string& channel, const Frame& frame) {
    const auto found = listeners_.find(channel);
    if (found == listeners_.end()) return;
    for (Subscriber* one : found->second) one->send(frame);
    if (tap_) tap_(nowMs_, channel, frame);
}

std::vector<std::string> ChannelHub::channelsOf(const Subscriber& subscriber) const {
    std::vector<std::string> names;
    for (const auto& [name, listeners] : listeners_) {
        if (listeners.contains(const_cast<Subscriber*>(&subscriber))) names.push_back(name);
    }
    return names;
}

std::vector<std::string> ChannelHub::channels() const {
    std::vector<std::string> names;
    for (const auto& entry : listeners_) names.push_back(entry.first);
    return names;
}

}  // namespace vmr::relay
