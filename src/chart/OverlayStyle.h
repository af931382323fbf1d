// What the user chose about the look of the overlay series and session lines.
#pragma once

#include "gpu/Vertices.h"

namespace vmr {

/// Compared field by field. Opacities as shares, 0 to 1.
struct OverlayStyle {
    Rgba ema1Color{1, 1, 1, 1};
    Rgba ema2Color{1, 1, 1, 1};
    double hfLineOpacity = 1;
    double lineOpacity = 1;  ///< of the session lines and levels
    bool showOpen = true;    ///< the session's open
    bool showPrev = true;    ///< what the session before left: high, low, close
    bool showLevels = true;  ///< support and resistance
    bool lineRates = true;   ///< the VWAP lines' pills tell their values
    bool operator==(const OverlayStyle&) const = default;
};

}  // namespace vmr
