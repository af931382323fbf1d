// Book-keeping the slow way: every contract is held one by one at its price.
#pragma once

#include <map>
#include <numeric>
#include <utility>

#include "sim/SimRecords.h"

namespace vmr::test {

/// Follows an account through its fills alone.
class PlainLedger {
 public:
    struct Trip {
        bool isLong = true;
        std::size_t most = 0;
        double entry = 0;
        double fees = 0;
        double result = 0;
        std::vector<double> exits;  // one per contract
        std::string endedBy;
    };
    struct Root {
        bool isLong = true;
        std::vector<double> contracts;  // what each one cost, after averaging
        double realized = 0;
        Trip trip;
    };

    double start = 50000;
    double results = 0;
    double fees = 0;
    std::map<std::string, Root> roots;
    std::vector<Trip> finished;  // oldest first
    std::size_t partialCloses = 0;
    std::size_t reversals = 0;

    double cash() const { return start + results - fees; }

    void reset(double balance) { *this = PlainLedger(balance, partialCloses, reversals); }
    PlainLedger() = default;

    /// `worth` is what a contract gains when its price rises by 1.
    void apply(const sim::Fill& fill, double worth) {
        Root& root = roots[fill.sym];
        const bool buys = fill.side == sim::Side::buy;
        std::int64_t left = fill.qty;
        fees += fill.commission;
        const bool closes = !root.contracts.empty() && root.isLong != buys;
        if (closes) {
            root.trip.fees += fill.commission;
            for (; left > 0 && !root.contracts.empty(); --left) closeOne(root, fill.price, worth);
            if (root.contracts.empty()) {
                root.trip.endedBy = fill.tag;
                finished.push_back(std::exchange(root.trip, {}));
            } else {
                ++partialCloses;
            }
        }
        if (left == 0) return;
        if (closes) ++reversals;
        root.isLong = root.trip.isLong = buys;
        root.contracts.insert(root.contracts.end(), static_cast<std::size_t>(left), fill.price);
        const double sum = std::accumulate(root.contracts.begin(), root.contracts.end(), 0.0);
        const double average = sum / static_cast<double>(root.contracts.size());
        root.contracts.assign(root.contracts.size(), average);
        root.trip.most = std::max(root.trip.most, root.contracts.size());
        root.trip.entry = average;
        if (!closes) root.trip.fees += fill.commission;
    }

 private:
    PlainLedger(double balance, std::size_t partials, std::size_t reversed)
        : start(balance), partialCloses(partials), reversals(reversed) {}

    void closeOne(Root& root, double price, double worth) {
        const double result = (root.isLong ? 1 : -1) * (price - root.contracts.back()) * worth;
        root.contracts.pop_back();
        root.realized += result;
        root.trip.result += result;
        root.trip.exits.push_back(price);
        results += result;
    }
};

}  // namespace vmr::test
