// What a pane tells the simulator: the market of its root, the contracts, the catalog's price steps, the commission.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/Signal.h"
#include "model/Catalog.h"

namespace vmr {

class SimEngine;

/// Without an account, and for a chart without a root, it passes nothing on; and nothing of the market before the
/// front contracts are known, since the chart's built-in contract may be an old one, whose prices would fill orders of
/// the new. Nor does it pass prices of a contract that the account does not follow. Main thread.
class SimFeed {
 public:
    /// Real seconds from the greeting after which the contracts count as known, whether the server told them or not.
    static constexpr double contractsWait = 2;

    /// `sim` may be null and must outlive it.
    explicit SimFeed(SimEngine* sim) : sim_(sim) {}
    ~SimFeed() { end(); }
    SimFeed(const SimFeed&) = delete;
    SimFeed& operator=(const SimFeed&) = delete;

    /// The pane shows `contract` of `root` from now on; an empty root for none.
    void open(const std::string& root, const std::string& contract);
    void setConnected(bool connected);
    /// The front contracts are known, or do not come.
    void contractsKnown();
    /// What the server says of the contracts, by root.
    void contracts(const std::map<std::string, std::string>& map) const;
    /// Passes nothing on any more.
    void end();

    // `at` is market time in seconds since 1970.
    void onTrade(double price, double at) const;
    void onQuote(double bid, double ask, double at) const;
    /// The close of the newest bar, which began at `bar`, seconds since 1970.
    void seedLast(double price, std::int64_t bar);
    void updateSpecs(const std::vector<CatalogFut>& futures) const;
    void setCommission(double perContract) const;

    /// Calls with the account's lasting problem, now and whenever how it is kept changes.
    void watchProblem(std::function<void(std::optional<std::string>)> tell);

 private:
    struct Seed {
        double price, when;
    };
    bool feeds() const;
    void watch();

    SimEngine* sim_;
    std::string root_, contract_;
    bool known_ = false;  // the contracts
    bool connected_ = false;
    std::optional<Seed> heldSeed_;
    Connection problem_;
};

}  // namespace vmr
