// The seam between the channels' families and those who listen: a new family of channels is a new publisher.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace vmr::relay {

/// One message on its way to any number of sockets.
struct Frame {
    std::shared_ptr<const std::string> bytes;
    bool binary = false;

    Frame() = default;
    explicit Frame(std::string text, bool isBinary = false)
        : bytes(std::make_shared<const std::string>(std::move(text))), binary(isBinary) {}
};

/// Whoever subscribes to channels: one socket. Compared by address.
class Subscriber {
 public:
    virtual ~Subscriber() = default;
    /// Queues the message; never fails.
    virtual void send(const Frame& frame) = 0;
};

/// Serves one family of channels. The hub calls it, on the relay's thread alone; times are milliseconds of market time.
class Publisher {
 public:
    virtual ~Publisher() = default;

    /// Whether the channel is of this family and exists.
    virtual bool serves(const std::string& channel) const = 0;

    /// A subscriber gets its snapshots in ascending order of this.
    virtual int order(const std::string& channel) const = 0;

    /// The channel has its first subscriber, or lost its last one. `nowMs` is where the last `tick` stood.
    virtual void opened(const std::string& /*channel*/, std::int64_t /*nowMs*/) {}
    virtual void closed(const std::string& /*channel*/) {}

    /// The message that a new subscriber gets, as of the last `tick`; nothing for a channel that has none.
    virtual std::optional<std::string> snapshot(const std::string& channel) = 0;

    /// Publishes everything up to `nowMs`, which is never before the last tick's.
    virtual void tick(std::int64_t /*nowMs*/) {}

    /// The clock has been set back: whatever is kept of later moments must go. No channel is open; those that have
    /// subscribers are opened again after this and a `tick` of the same moment, and their snapshots are sent anew.
    virtual void wentBack(std::int64_t /*nowMs*/) {}
};

}  // namespace vmr::relay
