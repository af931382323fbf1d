// Book-keeping that knows nothing of the engine's.
#pragma once

#include <algorithm>
#include <map>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "sim/SimRecords.h"

namespace vmr::test {

/// How often each thing was seen, by its name.
using Counts = std::map<std::string, std::size_t>;

/// Follows an account through its fills alone, book-keeping the slow way: every contract is held at its price.
class PlainLedger {
 public:
    explicit PlainLedger(Counts& counts) : counts_(counts) {}

    struct Root {
        sim::Side side = sim::Side::buy;
        std::vector<double> contracts;  // what each one cost, after averaging
        double realized = 0;
        sim::Trade trip;  // the round trip so far; `exit` is a sum until it ends
        int exits = 0;    // contracts that have left it
    };

    double cash = 50000;
    std::map<std::string, Root> roots;
    std::vector<sim::Trade> finished;  // oldest first

    /// `worth` is what a contract gains when its price rises by 1.
    void apply(const sim::Fill& fill, double worth) {
        Root& root = roots[fill.sym];
        std::int64_t left = fill.qty;
        cash -= fill.commission;
        const bool closes = !root.contracts.empty() && root.side != fill.side;
        // a trade that a reversal opens has no fee of its opening
        root.trip.fees += fill.commission;
        if (closes) {
            for (; left > 0 && !root.contracts.empty(); --left) closeOne(root, fill.price, worth);
            if (!root.contracts.empty()) return static_cast<void>(++counts_["partial closes"]);
            root.trip.exit /= std::exchange(root.exits, 0);
            root.trip.exitTag = fill.tag;
            finished.push_back(std::exchange(root.trip, {}));
        }
        if (left == 0) return;
        counts_["reversals"] += closes ? 1 : 0;
        root.side = root.trip.side = fill.side;
        root.contracts.insert(root.contracts.end(), static_cast<std::size_t>(left), fill.price);
        const auto size = static_cast<std::int64_t>(root.contracts.size());
        const double sum = std::accumulate(root.contracts.begin(), root.contracts.end(), 0.0);
        root.trip.entry = sum / static_cast<double>(size);
        root.contracts.assign(root.contracts.size(), root.trip.entry);
        root.trip.qty = std::max(root.trip.qty, size);
    }

 private:
    void closeOne(Root& root, double price, double worth) {
        const double result = (root.side == sim::Side::buy ? 1 : -1) * (price - root.contracts.back()) * worth;
        root.contracts.pop_back();
        for (double* sum : {&root.realized, &root.trip.pnl, &cash}) *sum += result;
        root.trip.exit += price;
        ++root.exits;
    }

    Counts& counts_;
};

}  // namespace vmr::test
