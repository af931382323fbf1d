// What a pane tells the simulator: the market of its root, the catalog's price steps, the commission.
#pragma once

#include <string>
#include <vector>

#include "model/Catalog.h"

namespace vmr {

class SimEngine;

/// Without an account, and for a chart without a root, it tells nothing. Main thread.
class SimFeed {
 public:
    /// `sim` may be null and must outlive it.
    explicit SimFeed(SimEngine* sim) : sim_(sim) {}

    void onTrade(const std::string& root, double price) const;
    void onQuote(const std::string& root, double bid, double ask) const;
    void seedLast(const std::string& root, double price) const;
    void updateSpecs(const std::vector<CatalogFut>& futures) const;
    void setCommission(double perContract) const;

 private:
    SimEngine* sim_;
};

}  // namespace vmr
