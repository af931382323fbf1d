// The fields of "derived:SOURCE" as JSON text.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "relay/OptionChain.h"

namespace vmr::relay {

/// Keys and the JSON text of their values, in a fixed order.
using JsonFields = std::vector<std::pair<std::string_view, std::string>>;

/// Everything that the channel publishes: `gexByStrike`, the walls, the flip (null when there is none) and the totals,
/// over all expirations and per expiration under `byExpiration`; `expirations`, `etfRatio` and `spot`.
JsonFields chainFields(const OptionChain& chain, const ChainState& state);

/// An object of `fields`; with `before`, of those alone that differ from it. "{}" when none does.
std::string objectOf(const JsonFields& fields, const JsonFields* before = nullptr);

}  // namespace vmr::relay
