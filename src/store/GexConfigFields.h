// The one list of the settings' fields, for reading, writing and setting by name. Private to this folder.
#pragma once

#include "store/GexConfig.h"

namespace vmr {

/// Calls `visit(name, field)` for each field of `config`, in declaration order.
template <class Config, class Visit>
void visitFields(Config& config, Visit&& visit) {
#define VMR_FIELD(name) visit(#name, config.name)
    VMR_FIELD(candleTheme);
    VMR_FIELD(initialCandles);
    VMR_FIELD(lineRates);
    VMR_FIELD(lineOpacity);
    VMR_FIELD(gexEnabled);
    VMR_FIELD(gexLabels);
    VMR_FIELD(gexOpacity);
    VMR_FIELD(gexSource);
    VMR_FIELD(gexBubbles);
    VMR_FIELD(gexBubbleOpacity);
    VMR_FIELD(gexPosColor);
    VMR_FIELD(gexNegColor);
    VMR_FIELD(dexEnabled);
    VMR_FIELD(dexLabels);
    VMR_FIELD(wallsEnabled);
    VMR_FIELD(levelsEnabled);
    VMR_FIELD(sessionEnabled);
    VMR_FIELD(sessionStart);
    VMR_FIELD(showOpen);
    VMR_FIELD(showPrev);
    VMR_FIELD(vwapEnabled);
    VMR_FIELD(vwapNyEnabled);
    VMR_FIELD(showSecondary);
    VMR_FIELD(hfEnabled);
    VMR_FIELD(hfScale);
    VMR_FIELD(hfLineOpacity);
    VMR_FIELD(hfLateralEnabled);
    VMR_FIELD(hfLateralMode);
    VMR_FIELD(hfLateralOpacity);
    VMR_FIELD(hfBubbles);
    VMR_FIELD(hfCallColor);
    VMR_FIELD(hfPutColor);
    VMR_FIELD(hfTriangleOpacity);
    VMR_FIELD(hfPressure);
    VMR_FIELD(hfScaleBySymbol);
    VMR_FIELD(vixEnabled);
    VMR_FIELD(vixMode);
    VMR_FIELD(vixScale);
    VMR_FIELD(vixSmooth);
    VMR_FIELD(ema1Enabled);
    VMR_FIELD(ema1Period);
    VMR_FIELD(ema1Color);
    VMR_FIELD(ema2Enabled);
    VMR_FIELD(ema2Period);
    VMR_FIELD(ema2Color);
    VMR_FIELD(oiEnabled);
    VMR_FIELD(oiOpacity);
    VMR_FIELD(showNyClock);
    VMR_FIELD(showCountdown);
    VMR_FIELD(simEnabled);
    VMR_FIELD(simBalance);
    VMR_FIELD(simCommission);
    VMR_FIELD(oscEnabled);
    VMR_FIELD(oscHeight);
    VMR_FIELD(oscNq);
    VMR_FIELD(oscEs);
    VMR_FIELD(oscVix);
    VMR_FIELD(oscCall);
    VMR_FIELD(oscPut);
    VMR_FIELD(oscNet);
#undef VMR_FIELD
}

}  // namespace vmr
