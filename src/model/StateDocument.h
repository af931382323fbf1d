// The whole state of the panes as one JSON object, for tests, support and scripts.
#pragma once

#include <string>
#include <vector>

#include "model/AppModel.h"

namespace vmr {

/// {"clock": seconds, "panes": [...]}: every pane's fields under their own names. Bars are arrays [time, open, high,
/// low, close, volume], other records objects; a missing optional or a non-finite number is null; doubles round-trip.
std::string stateDocument(const Clock& clock, const std::vector<const AppModel*>& panes);

}  // namespace vmr
