// Which of a pane's panels are open.
#pragma once

#include "base/Signal.h"

namespace vmr {

/// All closed at first. Main thread.
struct PanelsOpen {
    Observable<bool> configPanelOpen{false}, accountPanelOpen{false}, templatesPanelOpen{false}, simPanelOpen{false};
};

}  // namespace vmr
