#include "model/ClockTexts.h"

#include "chart/MarketTexts.h"
#include "model/AppModel.h"

namespace vmr {

ClockTexts clockTexts(const AppModel& pane) {
    ClockTexts out;
    if (pane.bars.displayCandles->empty() || !pane.session.isSignedIn) return out;
    const double now = pane.clock().now();
    if (pane.config->showCountdown)
        out.countdown = countdownText(now, pane.bars.timeframe, pane.channels->isStock(), pane.sessionTime());
    if (!pane.config->showNyClock) return out;
    out.clock = newYorkClock(now);
    if (const Clock* machine = pane.practiceMachine()) out.practice = practiceMark(now, machine->now());
    return out;
}

}  // namespace vmr
