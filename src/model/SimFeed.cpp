#include "model/SimFeed.h"

#include <utility>

#include "sim/SimEngine.h"

namespace vmr {

void SimFeed::open(const std::string& root, const std::string& contract) {
    root_ = root;
    contract_ = contract;
    heldSeed_.reset();
    if (known_) watch();
}

void SimFeed::watch() {
    if (!sim_) return;
    sim_->watch(this, root_, contract_);
    sim_->setConnected(this, connected_);
}

void SimFeed::setConnected(bool connected) {
    connected_ = connected;
    if (sim_) sim_->setConnected(this, connected);
}

void SimFeed::contractsKnown() {
    if (std::exchange(known_, true)) return;
    watch();
    if (const auto seed = std::exchange(heldSeed_, std::nullopt); seed && feeds())
        sim_->seedLast(root_, seed->price, seed->when);
}

void SimFeed::contracts(const std::map<std::string, std::string>& map) const {
    if (!sim_) return;
    for (const auto& [root, contract] : map) sim_->roll(root, contract);
}

void SimFeed::end() {
    open({}, {});
    problem_.end();
}

bool SimFeed::feeds() const { return sim_ && known_ && !root_.empty() && sim_->watches().follows(this); }

void SimFeed::onTrade(double price, double at) const {
    if (feeds()) sim_->onTrade(root_, price, at);
}

void SimFeed::onQuote(double bid, double ask, double at) const {
    if (feeds()) sim_->onQuote(root_, bid, ask, at);
}

void SimFeed::seedLast(double price, std::int64_t bar) {
    constexpr double barLength = 60;
    const double when = static_cast<double>(bar) + barLength;
    if (feeds()) return sim_->seedLast(root_, price, when);
    if (!known_ && !heldSeed_) heldSeed_ = Seed{price, when};
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

void SimFeed::watchProblem(std::function<void(std::optional<std::string>)> tell) {
    if (!sim_) return;
    tell(sim_->problem());
    problem_ = sim_->changed.connect([this, tell = std::move(tell)](SimEngine::Field field) {
        if (field == SimEngine::Field::keeping) tell(sim_->problem());
    });
}

}  // namespace vmr
