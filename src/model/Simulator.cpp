// What a pane tells the simulator: the market of its root, the catalog's price steps, the commission.
#include "model/AppModel.h"
#include "sim/SimEngine.h"

namespace vmr {

void AppModel::simOnTrade(double price) {
    if (at_.sim) at_.sim->onTrade(simRoot, price);
}

void AppModel::simOnQuote(double bid, double ask) {
    if (at_.sim) at_.sim->onQuote(simRoot, bid, ask);
}

void AppModel::simSeedLast(double price) {
    if (at_.sim) at_.sim->seedLast(simRoot, price);
}

void AppModel::simUpdateSpecs() {
    if (!at_.sim) return;
    std::map<std::string, sim::Spec> specs;
    for (const CatalogFut& fut : catFutures.get()) specs[fut.sym] = {fut.tick, fut.tickValue};
    at_.sim->updateSpecs(specs);
}

void AppModel::simTakeCommission() {
    if (at_.sim) at_.sim->commission = config->simCommission;
}

}  // namespace vmr
