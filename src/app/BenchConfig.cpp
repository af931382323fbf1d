#include "app/BenchConfig.h"

namespace vmr {

GexConfig everythingOn(GexConfig c) {
    for (bool* field : {&c.gexEnabled,     &c.gexBubbles,  &c.dexEnabled,       &c.wallsEnabled, &c.levelsEnabled,
                        &c.sessionEnabled, &c.showOpen,    &c.showPrev,         &c.vwapEnabled,  &c.vwapNyEnabled,
                        &c.showSecondary,  &c.hfEnabled,   &c.hfLateralEnabled, &c.hfBubbles,    &c.vixEnabled,
                        &c.ema1Enabled,    &c.ema2Enabled, &c.oscEnabled,       &c.oscNq,        &c.oscEs,
                        &c.oscVix,         &c.oscCall,     &c.oscPut,           &c.oscNet})
        *field = true;
    return c;
}

}  // namespace vmr
