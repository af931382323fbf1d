// The call and put walls of the derived fields.
#pragma once

#include <vector>

#include "market/FieldView.h"
#include "market/Records.h"

namespace vmr::LevelsParser {

/// At most two levels, the call wall first, at chart prices (strike times ratio) and labelled with their strikes. The
/// ratio is `etfRatio`, else `indexEtfRatio`, else 1; one that is not above 0 gives none. A wall that is missing, not
/// above 0 or without a finite price is left out. `ids` names each level afresh.
std::vector<PriceLevel> parse(const FieldView& fields, UuidSource& ids);

}  // namespace vmr::LevelsParser
