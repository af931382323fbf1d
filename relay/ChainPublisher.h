// The channels "derived:SOURCE": option positioning of a source by strike.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "base/Clock.h"
#include "relay/ChainBook.h"
#include "relay/ChainPayload.h"
#include "relay/ChannelHub.h"

namespace vmr::relay {

/// A snapshot holds all fields, an event those that have changed. The state is that of whole seconds of market time, so
/// many of them apart that there is one event a second of real time at most; it works for subscribed sources only.
class ChainPublisher final : public Publisher {
 public:
    /// `clock` is the market's. All three must outlive the publisher.
    ChainPublisher(ChannelHub& hub, ChainBook& book, const Clock& clock) : hub_(hub), book_(book), clock_(clock) {}

    bool serves(const std::string& channel) const override;
    int order(const std::string&) const override { return 110; }
    void opened(const std::string& channel, std::int64_t nowMs) override;
    void closed(const std::string& channel) override;
    std::optional<std::string> snapshot(const std::string& channel) override;
    void tick(std::int64_t nowMs) override;
    void wentBack(std::int64_t nowMs) override;

 private:
    struct Open {
        const OptionSource* source = nullptr;
        JsonFields fields;  // as of `asOfMs_`
    };
    JsonFields fieldsOf(const OptionSource& source, std::int64_t asOfMs);
    std::int64_t onGrid(std::int64_t nowMs) const;

    ChannelHub& hub_;
    ChainBook& book_;
    const Clock& clock_;
    std::int64_t asOfMs_ = 0;
    std::map<std::string, Open> open_;
    ChainState state_;
};

}  // namespace vmr::relay
