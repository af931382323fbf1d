// A recorded market that plays again at its own times.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "relay/TradeSource.h"

namespace vmr::relay {

/// When a tape's first and last trades were, in seconds since 1970.
struct TapeSpan {
    double first = 0;
    double last = 0;
};

/// How much of a tape a player that was given no clock takes as history, in seconds.
inline constexpr double tapeHistory = 1800;

/// Where such a player starts: `tapeHistory` in, or half-way through a short tape. Seconds since 1970.
double tapeStart(const TapeSpan& span);

/// The span of a tape, or nothing and what is wrong in `error`. Reads the whole file. Any thread.
std::optional<TapeSpan> tapeSpan(const std::filesystem::path& file, std::string& error);

/// The trades of a file in order of time, those of one moment in the file's order. Prices are as recorded. The tape
/// holds no quotes: a price above the last one has hit the ask, one below it the bid, `tick` apart.
class Tape final : public TradeSource {
 public:
    /// Nothing and what is wrong in `error` for a file that cannot be read or holds no trades.
    static std::unique_ptr<Tape> load(const std::filesystem::path& file, double tick, std::string& error);

    void minuteTrades(std::int64_t minute, std::vector<Trade>& trades) override;
    std::int64_t historyStart(std::int64_t) override;
    std::size_t size() const { return trades_.size(); }

 private:
    explicit Tape(std::vector<Trade> trades) : trades_(std::move(trades)) {}
    std::vector<Trade> trades_;
};

}  // namespace vmr::relay
