#include "model/RenderLook.h"

#include "store/HexColor.h"

namespace vmr {

namespace {
Rgba opaque(const std::string& hex) {
    const Rgb color = HexColor::rgb(hex);
    return {static_cast<float>(color.r), static_cast<float>(color.g), static_cast<float>(color.b), 1.0F};
}

float share(double percent) { return static_cast<float>(percent / 100.0); }
}  // namespace

RenderConfig renderConfig(const GexConfig& config) {
    RenderConfig out;
    out.candleTheme = config.candleTheme;
    out.gexEnabled = config.gexEnabled;
    out.gexLabels = config.gexLabels;
    out.dexEnabled = config.dexEnabled;
    out.dexLabels = config.dexLabels;
    out.gexOpacity = share(config.gexOpacity);
    out.bubblesEnabled = config.gexBubbles;
    out.bubbleOpacity = share(config.gexBubbleOpacity);
    out.bubblePos = opaque(config.gexPosColor);
    out.bubbleNeg = opaque(config.gexNegColor);
    out.trianglesEnabled = config.hfBubbles;
    out.triangleOpacity = share(config.hfTriangleOpacity);
    out.hfCall = opaque(config.hfCallColor);
    out.hfPut = opaque(config.hfPutColor);
    out.waveEnabled = config.hfLateralEnabled;
    out.waveMode = config.hfLateralMode;
    out.waveOpacity = share(config.hfLateralOpacity);
    out.wallsEnabled = config.wallsEnabled;
    out.oiEnabled = config.oiEnabled;
    out.oiOpacity = share(config.oiOpacity);
    out.initialCandles = static_cast<double>(config.initialCandles);
    out.countdown = config.showCountdown;
    return out;
}

OverlayStyle overlayStyle(const GexConfig& config) {
    OverlayStyle out;
    out.ema1Color = opaque(config.ema1Color);
    out.ema2Color = opaque(config.ema2Color);
    out.hfLineOpacity = config.hfLineOpacity / 100;
    out.lineOpacity = config.lineOpacity / 100;
    out.showOpen = config.sessionEnabled && config.showOpen;
    out.showPrev = config.sessionEnabled && config.showPrev;
    out.showLevels = config.levelsEnabled;
    out.lineRates = config.lineRates;
    return out;
}

OscShown oscShown(const GexConfig& c) { return {c.oscNq, c.oscEs, c.oscVix, c.oscCall, c.oscPut, c.oscNet}; }

}  // namespace vmr
