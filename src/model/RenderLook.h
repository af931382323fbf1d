// The look of a chart that the settings ask for.
#pragma once

#include <array>

#include "chart/OverlayStyle.h"
#include "chart/RenderConfig.h"
#include "store/GexConfig.h"

namespace vmr {

/// Pure. Texts that are no colour give what `HexColor` gives for them.
RenderConfig renderConfig(const GexConfig& config);
OverlayStyle overlayStyle(const GexConfig& config);

/// The series of the oscillator that are shown, in their order.
using OscShown = std::array<bool, 6>;
OscShown oscShown(const GexConfig& config);

/// All of it, compared field by field.
struct RenderLook {
    RenderConfig config;
    OverlayStyle overlays;
    OscShown osc{};
    bool operator==(const RenderLook&) const = default;
};
inline RenderLook renderLook(const GexConfig& config) {
    return {renderConfig(config), overlayStyle(config), oscShown(config)};
}

}  // namespace vmr
