#include "model/SimFeed.h"

#include "sim/SimEngine.h"

namespace vmr {

void SimFeed::onTrade(const std::string& root, double price) const {
    if (sim_ && !root.empty()) sim_->onTrade(root, price);
}

void SimFeed::onQuote(const std::string& root, double bid, double ask) const {
    if (sim_ && !root.empty()) sim_->onQuote(root, bid, ask);
}

void SimFeed::seedLast(const std::string& root, double price) const {
    if (sim_ && !root.empty()) sim_->seedLast(root, price);
}

void SimFeed::updateSpecs(const std::vector<CatalogFut>& futures) const {
    if (!sim_) return;
    std::map<std::string, sim::Spec> specs;
    for (const CatalogFut& fut : futures) specs[fut.sym] = {fut.tick, fut.tickValue};
    sim_->updateSpecs(specs);
}

void SimFeed::setCommission(double perContract) const {
    if (sim_) sim_->commission = perContract;
}

}  // namespace vmr
