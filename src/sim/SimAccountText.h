// The account as the text of its file: one compact JSON object.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sim/SimRecords.h"

namespace vmr::sim {

/// The text, every number in the shortest form that reads back as the same; nothing when one is not finite. Dates are
/// numbers, identities upper-case, fields without a value left out.
std::optional<std::string> accountText(const Snapshot& account);

/// The account, all or nothing: a missing field, a wrong type or an unknown word anywhere gives nothing. `trades` and
/// `openTrades` may be missing, unknown keys are passed over, and the content is not judged.
std::optional<Snapshot> readAccount(std::string_view text);

}  // namespace vmr::sim
