// The channels of options-derived data.
#pragma once

#include "relay/Publisher.h"

namespace vmr {

/// Accepts every "derived:" channel and publishes nothing yet: the practice market has no options. A family that gets
/// data becomes a publisher of its own, added to the hub before this one, which takes what is left.
class DerivedPublisher final : public Publisher {
 public:
    bool serves(const std::string& channel) const override {
        return channel.starts_with("derived:") && channel.size() > 8;
    }
    int order(const std::string&) const override { return 200; }
    std::optional<std::string> snapshot(const std::string&) override { return std::nullopt; }
};

}  // namespace vmr
