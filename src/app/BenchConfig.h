// The settings of a benchmark run.
#pragma once

#include "store/GexConfig.h"

namespace vmr {

/// `config` with everything on that a chart can show.
GexConfig everythingOn(GexConfig config);

}  // namespace vmr
