// What the user chose about the chart's look.
#pragma once

#include <string>

#include "gpu/Vertices.h"

namespace vmr {

/// Compared field by field. Opacities 0 to 1.
struct RenderConfig {
    std::string candleTheme = "mono";  ///< "classic", or anything else for mono
    bool gexEnabled = true;
    bool gexLabels = true;
    bool dexEnabled = false;
    bool dexLabels = false;
    float gexOpacity = 0.62F;
    bool bubblesEnabled = true;
    float bubbleOpacity = 1.0F;
    Rgba bubblePos{0.149F, 0.651F, 0.604F, 1.0F};
    Rgba bubbleNeg{0.937F, 0.325F, 0.314F, 1.0F};
    bool trianglesEnabled = true;
    float triangleOpacity = 1.0F;
    Rgba hfCall{0.0F, 0.737F, 0.831F, 1.0F};
    Rgba hfPut{1.0F, 0.478F, 0.0F, 1.0F};
    bool waveEnabled = true;
    std::string waveMode = "separated";  ///< or "net"
    float waveOpacity = 0.52F;
    bool wallsEnabled = true;
    bool oiEnabled = false;
    float oiOpacity = 0.4F;
    double initialCandles = 150.0;  ///< bars left of the right margin at first data
    bool countdown = false;         ///< whether the price axis keeps room for it
    bool operator==(const RenderConfig&) const = default;
};

}  // namespace vmr
