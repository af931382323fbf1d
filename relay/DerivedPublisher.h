// The channels of options-derived data that nobody publishes.
#pragma once

#include "relay/Publisher.h"

namespace vmr::relay {

/// Accepts every "derived:" channel and has no data: a source without options on the practice market. Added to the hub
/// behind the publishers that have some.
class DerivedPublisher final : public Publisher {
 public:
    bool serves(const std::string& channel) const override {
        return channel.starts_with("derived:") && channel.size() > 8;
    }
    int order(const std::string&) const override { return 200; }
    std::optional<std::string> snapshot(const std::string&) override { return std::nullopt; }
};

}  // namespace vmr::relay
