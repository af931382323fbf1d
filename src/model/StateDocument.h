// The whole state of the panes as one JSON object, for tests, support and scripts.
#pragma once

#include <string>
#include <vector>

#include "model/AppModel.h"
#include "services/cloud/Announcements.h"
#include "services/cloud/UpdateChecker.h"

namespace vmr {

/// What the document is made from. What is null is missing from it.
struct StateSources {
    const Clock& clock;
    std::vector<const AppModel*> panes;
    const SimEngine* sim = nullptr;
    const Announcements* notices = nullptr;
    const UpdateChecker* updates = nullptr;
};

/// {"clock": seconds, "panes": [...], "sim": {...}, "announcement": ..., "maintenance": ..., "update": ...}: every
/// pane's fields under their own names. Bars are arrays [time, open, high, low, close, volume], other records objects;
/// a missing optional or a non-finite number is null; doubles round-trip. Dates of the simulator are seconds since
/// 2001.
std::string stateDocument(const StateSources& sources);

}  // namespace vmr
