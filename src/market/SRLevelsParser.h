// The support/resistance channel: sessions and their levels.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "base/Json.h"
#include "market/Records.h"
#include "market/RepairTally.h"

namespace vmr {

/// Sessions by their open, seconds since 1970.
using SRSessions = std::map<std::int64_t, SRSession>;

/// Times and level numbers are truncated toward zero; a level or session with one that no 64-bit integer holds is left
/// out and counted.
namespace SRLevelsParser {

/// Stores each readable session of a payload, replacing what stood under its time: those under `sessions`, or else the
/// payload itself as one session.
void merge(JsonView payload, SRSessions& into, RepairTally& tally);

/// One session; its own `sessionOpenTs` wins over `fallbackTs`. Nothing when `from` is no object or its time is 0.
std::optional<SRSession> session(JsonView from, std::int64_t fallbackTs, RepairTally& tally);

/// The levels of an array of objects, in order, without those that have no price; empty for anything else.
std::vector<SRLevel> levels(JsonView value, RepairTally& tally);

}  // namespace SRLevelsParser
}  // namespace vmr
