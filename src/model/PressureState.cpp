// The HF pressure panel in the state document.
#include "chart/HfPressure.h"
#include "model/AppModel.h"
#include "model/StateRecords.h"

namespace vmr::stateRecords {

namespace {
json readouts(const HfPressure::Samples& samples) {
    const HfPressure::Readouts read = HfPressure::readouts(samples);
    const auto told = [&read](const AxisScale::Label& label) {
        return read.known ? label.text() : HfPressure::unknown;
    };
    return {{"callShare", told(HfPressure::shareText(read.callShare))},
            {"putShare", told(HfPressure::shareText(read.putShare))},
            {"call", told(HfPressure::fmt(read.call))},
            {"put", told(HfPressure::fmt(read.put))}};
}

json plot(const HfPressure::Samples& samples) {
    const HfPressure::Scale scale = HfPressure::scale(samples);
    if (!scale.drawn) return nullptr;
    json ticks = json::array();
    for (const double value : HfPressure::valueTicks(scale)) ticks.push_back(HfPressure::fmt(value).text());
    return {{"top", scale.top}, {"step", scale.step}, {"ticks", std::move(ticks)}};
}

json ladder(const HfPressure::Samples& samples) {
    json out = json::array();
    const HfPressure::Ladder ladder = HfPressure::ladder(samples);
    for (std::size_t i = 0; i < ladder.band.size(); ++i) {
        const StrikeFlow* const flow = samples.back()->atmAt(ladder.band[i]);
        const auto told = [flow](double StrikeFlow::*side) {
            return std::string(flow ? HfPressure::fmt(flow->*side).text() : HfPressure::unknown);
        };
        out.push_back({{"strike", HfPressure::strikeText(ladder.band[i]).text()},
                       {"call", told(&StrikeFlow::call)},
                       {"put", told(&StrikeFlow::put)},
                       {"atm", i == ladder.atm}});
    }
    return out;
}
}  // namespace

json pressure(const AppModel& pane) {
    HfPressure::Samples samples;
    HfPressure::visible(pane.hfp.samples, pane.clock().now(), pane.hfp.windowMin, samples);
    const auto& shown = pane.panels.pressure;
    return {{"open", pane.config->hfPressure},
            {"window", pane.hfp.windowMin.get()},
            {"visible", samples.size()},
            {"readouts", readouts(samples)},
            {"plot", plot(samples)},
            {"strip", shown ? json(shown->times) : json(nullptr)},
            {"ladder", ladder(samples)},
            {"overlay", shown ? json(shown->overlay) : json(nullptr)},
            {"pointed", shown ? json(shown->pointed) : json(nullptr)}};
}

}  // namespace vmr::stateRecords
