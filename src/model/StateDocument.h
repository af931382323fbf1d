// The whole state of the panes as one JSON object, for tests, support and scripts.
#pragma once

#include <string>
#include <vector>

#include "model/AppModel.h"

namespace vmr {

/// {"clock": seconds, "panes": [...], "sim": {...}}: every pane's fields under their own names. Bars are arrays [time,
/// open, high, low, close, volume], other records objects; a missing optional or a non-finite number is null; doubles
/// round-trip. Without `sim` its part is missing; dates of the simulator are seconds since 2001.
std::string stateDocument(const Clock& clock, const std::vector<const AppModel*>& panes,
                          const SimEngine* sim = nullptr);

}  // namespace vmr
