// Messages that a client must survive.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "market/Records.h"
#include "relay/Instruments.h"
#include "relay/Publisher.h"

namespace vmr::relay {

/// The `index`th kind of a frame that is no message (no JSON, invalid UTF-8, cut short, no object, no type, no channel
/// and so on); the kinds repeat.
Frame malformedFrame(std::size_t index);

/// The `index`th kind of a well-formed message on `channel` whose payload nobody can use; the kinds repeat.
Frame wrongFrame(const std::string& channel, std::size_t index);

/// A snapshot of `bytes` bytes in all: `ledger`, cut to its newest bars or led up to by made-up ones on every minute
/// before, then blanks. Too few bytes for one bar give a snapshot without any.
std::string bigBars(std::size_t bytes, const std::string& channel, const Instrument& instrument,
                    const std::vector<Candle>& ledger, std::int64_t minute);

/// A snapshot of `bytes` bytes in all with as many rows in `gexByStrike` as fit, then blanks.
std::string bigDerived(std::size_t bytes, const std::string& channel);

}  // namespace vmr::relay
