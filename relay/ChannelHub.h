// Who listens to which channel.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "relay/Publisher.h"

namespace vmr::relay {

/// Joins sockets and publishers. The relay's thread alone.
class ChannelHub {
 public:
    static constexpr std::size_t mostChannels = 256;  ///< of one subscriber

    void add(std::unique_ptr<Publisher> publisher);

    /// Publishes up to `nowMs` to those who listen already, sends the snapshots as of that moment and puts the
    /// subscriber on the channels, so that it misses nothing and gets nothing twice. A channel that it has already is
    /// sent anew. Gives back the names that nobody serves.
    std::vector<std::string> subscribe(Subscriber& subscriber, const std::vector<std::string>& channels,
                                       std::int64_t nowMs);

    void unsubscribe(Subscriber& subscriber, const std::vector<std::string>& channels);
    void leave(Subscriber& subscriber);

    /// Publishes up to `nowMs`. Before the last tick's moment, everybody gets new snapshots as of `nowMs` instead.
    void tick(std::int64_t nowMs);

    /// Called with what the listeners of a channel get, once whatever their number: the snapshot of a channel's first
    /// listener, then all that is published, with the time of the last tick.
    using Tap = std::function<void(std::int64_t nowMs, const std::string& channel, const Frame& frame)>;
    void setTap(Tap tap) { tap_ = std::move(tap); }

    bool wanted(const std::string& channel) const { return listeners_.contains(channel); }
    void publish(const std::string& channel, const Frame& frame);

    /// The channels of one subscriber, or of all.
    std::vector<std::string> channelsOf(const Subscriber& subscriber) const;
    std::vector<std::string> channels() const;

 private:
    Publisher* publisherOf(const std::string& channel) const;
    void goBack(std::int64_t nowMs);
    void remove(Subscriber& subscriber, const std::string& channel);

    std::vector<std::unique_ptr<Publisher>> publishers_;
    std::map<std::string, std::set<Subscriber*>> listeners_;  // no channel without a listener
    Tap tap_;
    std::int64_t nowMs_ = 0;
};

}  // namespace vmr::relay
