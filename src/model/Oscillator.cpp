#include "model/Oscillator.h"

#include "market/MinuteChannel.h"

namespace vmr {

void Oscillator::take(JsonView payload) {
    constexpr double pace = 1.0 / 120;  // seconds
    OscParser::merge(payload, oscByMin);
    keepNewest(oscByMin, OscParser::minutesCap);
    if (rebuildScheduled) return;
    rebuildScheduled = true;
    work_.afterOnChart(pace, [this] {
        rebuildScheduled = false;
        oscLines.edit([this](OscLines& lines) { OscParser::build(oscByMin, lines); });
    });
}

}  // namespace vmr
