// The channels about instruments: the catalog and the front contracts.
#pragma once

#include <map>
#include <string>

#include "relay/ChannelHub.h"
#include "relay/SessionCalendar.h"

namespace vmr::relay {

/// "meta:contracts" follows the clock's front months and is sent again when one changes.
class MetaPublisher final : public Publisher {
 public:
    explicit MetaPublisher(ChannelHub& hub) : hub_(hub) {}

    bool serves(const std::string& channel) const override;
    int order(const std::string&) const override { return 100; }
    std::optional<std::string> snapshot(const std::string& channel) override;
    void tick(std::int64_t nowMs) override;

    /// Names another front contract of a root from now on; an empty one goes back to the clock's.
    void setContract(const std::string& root, const std::string& contract);

    /// As of the last tick.
    std::map<std::string, std::string> contracts() const;

 private:
    void publishChange();

    ChannelHub& hub_;
    SessionCalendar calendar_;
    std::int64_t date_ = -1;
    std::map<std::string, std::string> byDate_, overrides_;
    std::string sent_;
};

}  // namespace vmr::relay
