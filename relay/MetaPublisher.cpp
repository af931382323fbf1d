#include "relay/MetaPublisher.h"

#include "relay/FrontMonth.h"
#include "relay/Payloads.h"

namespace vmr::relay {

namespace {
constexpr const char* contractsChannel = "meta:contracts";
constexpr const char* instrumentsChannel = "meta:instruments";
}  // namespace

bool MetaPublisher::serves(const std::string& channel) const {
    return channel == contractsChannel || channel == instrumentsChannel;
}

std::optional<std::string> MetaPublisher::snapshot(const std::string& channel) {
    if (channel == instrumentsChannel) return payload::snapshot(channel, payload::catalog());
    return payload::snapshot(channel, payload::contracts(contracts()));
}

void MetaPublisher::tick(std::int64_t nowMs) {
    const std::int64_t date = calendar_.date(nowMs / 1000);
    if (date == date_) return;
    date_ = date;
    byDate_ = frontContracts(date);
    publishChange();
}

void MetaPublisher::setContract(const std::string& root, const std::string& contract) {
    if (contract.empty()) {
        overrides_.erase(root);
    } else {
        overrides_[root] = contract;
    }
    publishChange();
}

std::map<std::string, std::string> MetaPublisher::contracts() const {
    auto all = overrides_;
    all.insert(byDate_.begin(), byDate_.end());
    return all;
}

void MetaPublisher::publishChange() {
    std::string body = payload::contracts(contracts());
    if (body == sent_) return;
    sent_ = std::move(body);
    hub_.publish(contractsChannel, Frame(payload::event(contractsChannel, sent_)));
}

}  // namespace vmr::relay
