// The per-minute data about a source's options.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "relay/ChainBook.h"

namespace vmr::relay {

/// One kind of per-minute data of one source. The relay's thread.
class MinuteSeries {
 public:
    virtual ~MinuteSeries() = default;

    /// The JSON object of a minute as it stood at `asOfMs`, which may lie in it or after it; empty for a minute in
    /// which the source's market was at rest.
    virtual std::string value(std::int64_t minute, std::int64_t asOfMs) = 0;

    /// Whose minutes there are.
    virtual PricePath& path() = 0;
};

/// A family of channels, with how its messages are built.
struct MinuteFamily {
    std::string_view prefix;       ///< of the channels, before the source's name
    std::string_view snapshotKey;  ///< under which a snapshot holds the minutes
    std::string_view eventKey;     ///< under which an event holds the one; empty for an event shaped as the snapshot
    std::size_t most;              ///< newest minutes in a snapshot
    std::unique_ptr<MinuteSeries> (*make)(ChainBook& book, const OptionSource& source);
};

/// The three strikes where gamma weighs most at the minute's end.
extern const MinuteFamily bubbleSeries;
/// The strikes with the largest net flow of the minute.
extern const MinuteFamily triangleSeries;
/// Open, high, low and close of the net flow since the session's open.
extern const MinuteFamily flowMinutes;
/// Momentum of the source's own future or stock, of ES and of VIX, and the flows, on a scale of ±120.
extern const MinuteFamily oscillatorMinutes;

}  // namespace vmr::relay
