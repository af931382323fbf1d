#include "relay/ChainPublisher.h"

#include <algorithm>
#include <cmath>

#include "relay/Payloads.h"

namespace vmr::relay {

namespace {
constexpr std::string_view prefix = "derived:";

const OptionSource* sourceOf(std::string_view channel) {
    return channel.starts_with(prefix) ? findOptionSource(channel.substr(prefix.size())) : nullptr;
}
}  // namespace

/// The grid gets coarser and finer with the clock's speed, but the state never goes back for it.
std::int64_t ChainPublisher::onGrid(std::int64_t nowMs) const {
    const auto gridMs = 1000 * static_cast<std::int64_t>(std::ceil(std::clamp(clock_.speed(), 1.0, 86400.0)));
    return std::max(asOfMs_, nowMs - nowMs % gridMs);
}

bool ChainPublisher::serves(const std::string& channel) const { return sourceOf(channel) != nullptr; }

void ChainPublisher::opened(const std::string& channel, std::int64_t nowMs) {
    asOfMs_ = onGrid(nowMs);
    const OptionSource* source = sourceOf(channel);
    open_[channel] = {source, fieldsOf(*source, asOfMs_)};
}

void ChainPublisher::closed(const std::string& channel) { open_.erase(channel); }

void ChainPublisher::wentBack(std::int64_t /*nowMs*/) {
    asOfMs_ = 0;
    book_.forget();
}

std::optional<std::string> ChainPublisher::snapshot(const std::string& channel) {
    const auto found = open_.find(channel);
    if (found == open_.end() || found->second.fields.empty()) return std::nullopt;
    return payload::snapshot(channel, objectOf(found->second.fields));
}

void ChainPublisher::tick(std::int64_t nowMs) {
    const std::int64_t asOf = onGrid(nowMs);
    if (asOf == asOfMs_) return;
    asOfMs_ = asOf;
    for (auto& [channel, one] : open_) {
        JsonFields fields = fieldsOf(*one.source, asOf);
        if (fields.empty()) continue;
        const std::string changes = objectOf(fields, &one.fields);
        one.fields = std::move(fields);
        if (changes.size() > 2) hub_.publish(channel, Frame(payload::event(channel, changes)));
    }
}

JsonFields ChainPublisher::fieldsOf(const OptionSource& source, std::int64_t asOfMs) {
    DerivedMarket& market = book_.market();
    const auto moment = market.path(source.instrument()).at(asOfMs);
    if (!moment) return {};
    // A closed market shows the state of its last trade: one millisecond earlier lies in the session that has ended.
    const MarketSession* session = market.session(source.instrument(), (moment->timeMs - 1) / 1000, asOfMs);
    if (!session) return {};
    const OptionChain& chain = book_.chain(source, *session);
    chain.state(moment->price, moment->timeMs, market.flow(source, *session, moment->price, moment->timeMs), state_);
    return chainFields(chain, state_);
}

}  // namespace vmr::relay
