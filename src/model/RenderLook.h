// The look of a chart that the settings ask for.
#pragma once

#include "chart/OverlayStyle.h"
#include "chart/RenderConfig.h"
#include "store/GexConfig.h"

namespace vmr {

/// Pure. Texts that are no colour give what `HexColor` gives for them.
RenderConfig renderConfig(const GexConfig& config);
OverlayStyle overlayStyle(const GexConfig& config);

/// Both, compared field by field.
struct RenderLook {
    RenderConfig config;
    OverlayStyle overlays;
    bool operator==(const RenderLook&) const = default;
};
inline RenderLook renderLook(const GexConfig& config) { return {renderConfig(config), overlayStyle(config)}; }

}  // namespace vmr
