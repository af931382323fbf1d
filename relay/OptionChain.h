// The listed options of one source on one trading day, and what they amount to at a price and a moment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "relay/DerivedMarket.h"

namespace vmr::relay {

/// What stands at one strike. Exposures are dollars, as dealers feel them who own the calls and are short the puts:
/// gamma for a move of 1%, and both gammas positive, so that call less put is the net (positive: dealers damp the
/// market); delta with its own sign, puts negative, so that call and put add up. Flow is signed likewise.
struct StrikeSums {
    std::int64_t callGex = 0, putGex = 0, callDex = 0, putDex = 0, callHf = 0, putHf = 0, callOI = 0, putOI = 0;

    StrikeSums& operator+=(const StrikeSums& other);
    std::int64_t netGex() const { return callGex - putGex; }
};

/// The sums of some strikes, which are those of the chain from `first` on.
struct StrikeTable {
    std::size_t first = 0;
    std::vector<StrikeSums> rows;
};

struct ChainState {
    double spot = 0;                        ///< price in the source's own units
    StrikeTable all;                        ///< over all expirations
    std::vector<StrikeTable> byExpiration;  ///< in the order of the chain's expirations
};

/// Levels of a table; a strike of 0 says that there is none.
struct ChainLevels {
    double callWall = 0;   ///< where the gamma of calls peaks
    double putWall = 0;    ///< where the gamma of puts peaks
    double gammaFlip = 0;  ///< the first strike above the sign change of net gamma from - to + that is nearest the spot
};

/// Strikes, expirations, open interest and volatilities are fixed over the day. One thread.
class OptionChain {
 public:
    /// `ratio` is chart price over source price.
    OptionChain(const OptionSource& source, const MarketSession& session, double ratio, std::uint64_t seed);

    double ratio() const { return ratio_; }
    const MarketSession& session() const { return session_; }
    /// Ascending, in the source's own units, evenly spaced; 60 to 250.
    const std::vector<double>& strikes() const { return strikes_; }
    /// Ascending ISO dates of three weeks on which the exchanges are open: all, or the last of each week only.
    const std::vector<std::string>& expirations() const { return dates_; }

    /// The whole chain. `chartPrice` is the root's price.
    void state(double chartPrice, std::int64_t timeMs, const OptionFlow& flow, ChainState& out) const;

    /// Net gamma exposure of each strike over all expirations, in dollars; many times cheaper.
    void netGamma(double chartPrice, std::int64_t timeMs, std::vector<double>& out) const;

    /// Net flow of each strike over all expirations.
    void netFlow(double chartPrice, std::int64_t timeMs, const OptionFlow& flow, std::vector<double>& out) const;

    ChainLevels levels(const StrikeTable& table, double spot) const;

 private:
    struct Listing {
        double callOI, putOI, volatility;
    };
    struct Expiration {
        std::int64_t expiry;  // seconds since 1970
        double share;         // of the day's flow
        std::size_t first;
        std::vector<Listing> strikes;
    };
    struct FlowWeights {
        std::vector<double> call, put;
    };
    void listStrikes();
    void listExpirations();
    Expiration list(std::int64_t date, int ahead) const;
    Listing listing(std::size_t strike, std::int64_t date, int ahead) const;
    void weigh(double spot, std::int64_t timeMs, FlowWeights& weights) const;

    const OptionSource& source_;
    MarketSession session_;
    double ratio_;
    std::uint64_t seed_;
    double spot_;        // at the session's open
    double volatility_;  // per year
    std::vector<double> strikes_, logStrikes_;
    std::vector<std::string> dates_;
    std::vector<Expiration> expirations_;
    mutable FlowWeights weights_;
};

/// The sum over all strikes.
StrikeSums totalOf(const StrikeTable& table);

}  // namespace vmr::relay
