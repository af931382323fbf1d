// Any bytes as a frame of the relay, into a pane that is open. "%" stands for the chart's channel, so that a mutation
// of it does not need to be found by chance.
#include "FuzzEntry.h"
#include "base/Json.h"
#include "model/TestPane.h"

namespace {
using namespace vmr;

std::unique_ptr<test::TestPane> openPane() {
    auto pane = std::make_unique<test::TestPane>();
    pane->preferences.set("gex-last-symbol", "NQ");
    pane->open();
    const auto minute = static_cast<std::int64_t>(test::TestPane::wednesdayAt10);
    for (const char* channel : {"futures:NQM6", "futures:ESM6"})
        pane->snapshot(channel, test::flatBars(minute - 600, 11));
    return pane;
}

void checkSeries(const std::vector<Candle>& bars) {
    fuzz::require(bars.size() <= 5000);
    for (std::size_t i = 1; i < bars.size(); ++i) fuzz::require(bars[i - 1].time < bars[i].time);
}
}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static std::unique_ptr<test::TestPane> pane;
    static int frames = 0;
    if (!pane) pane = openPane();
    std::string frame;
    for (const char c : fuzz::textOf(data, size)) {
        if (c == '%')
            frame += "futures:NQM6";
        else
            frame += c;
    }
    const bool survived = fuzz::survives([&] {
        pane->frame(frame);
        pane->time.advance(0.01);
        for (const auto* series : {&pane->model->candles, &pane->model->secondaryCandles, &pane->model->vixCandles})
            checkSeries(*series);
        fuzz::require(Json::parse(stateDocument(pane->time, {pane->model.get()})).has_value());
        fuzz::require(pane->model->logLines.size() <= AppModel::maxLogLines);
    });
    // a fresh one now and then, so that what one frame left behind does not pile up
    if (!survived || ++frames % 200 == 0) pane.reset();
    return 0;
}
