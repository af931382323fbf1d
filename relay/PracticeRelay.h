// A local market that speaks the relay's wire protocol and the cloud's sign-in REST, on loopback only.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Clock.h"
#include "market/Records.h"

namespace vmr::relay {

/// Recorded trades to play as one symbol's market.
struct TapeOptions {
    std::filesystem::path file;  ///< CSV or .csv.gz with at least a timestamp and a price column
    std::string symbol;          ///< futures root or stock symbol that the tape is
};

struct PracticeRelayOptions {
    static constexpr double busiest = 1000;
    std::uint64_t seed = 1;
    double busy = 1;          ///< times as many simulated trades as usual from the minute of the start on, to `busiest`
    double tokenLife = 3600;  ///< real seconds that an identity token lives
    int relayPort = 0;        ///< 0 takes a free port
    int restPort = 0;
    std::optional<TapeOptions> tape;
    std::optional<std::filesystem::path> record;     ///< file to write all that the channels' subscribers get
    std::optional<std::filesystem::path> replay;     ///< recording to play in place of the market
    std::optional<std::filesystem::path> templates;  ///< file that keeps chart templates beyond the run
};

/// Runs on threads of its own from `start` until destruction. Everything may be called from any thread.
class PracticeRelay {
 public:
    /// `clock` gives market time; it must outlive the relay. When it is steered, the relay follows at once: set
    /// forward, it sends what has happened in between (after more than a day, new snapshots); set back, new snapshots.
    PracticeRelay(const Clock& clock, PracticeRelayOptions options);
    ~PracticeRelay();

    /// Opens the ports. Nothing on success, else what failed (a port in use, an unreadable tape or recording).
    std::optional<std::string> start();

    std::string relayUrl() const;  ///< "ws://127.0.0.1:PORT/"
    std::string restUrl() const;   ///< "http://127.0.0.1:PORT", for every REST endpoint
    std::string apiKey() const;    ///< the 39-character key that the REST side accepts

    /// The variables that lead a client here and nowhere else: every address, and the key. Names and values.
    std::vector<std::pair<std::string, std::string>> variables() const;

    /// The practice account.
    std::string email() const;
    std::string password() const;

    /// Carries out one line such as a person types on standard input; answers "ok ..." or "error: ...". "help" lists
    /// them: drop the socket, close with a code, mute pings, stall before "hello", malformed frames, a large snapshot,
    /// refuse sign-in, expire tokens, delay.
    std::string command(const std::string& line);

    /// The relay's own closed and forming one-minute bars of "futures:CONTRACT", "stocks:SYM" or "indices:I:VIX" as
    /// built from its trades up to now, history included; of a recording those that it has played.
    std::vector<Candle> ledger(const std::string& channel) const;

    /// What made the recording end early, such as a full disk; the relay itself goes on.
    std::optional<std::string> recordingProblem() const;

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace vmr::relay
