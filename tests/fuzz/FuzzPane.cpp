// Any bytes as a frame of the relay, into a pane that is open. "%" stands for the chart's channel, so that a mutation
// of it does not need to be found by chance.
#include <algorithm>
#include <functional>

#include "FuzzEntry.h"
#include "base/Json.h"
#include "support/pane/TestPane.h"

namespace vmr::fuzz {
namespace {

std::unique_ptr<test::TestPane> openPane() {
    auto pane = std::make_unique<test::TestPane>();
    pane->strictFeed = strict();
    pane->preferences.set("gex-last-symbol", "NQ");
    pane->open();
    const auto minute = static_cast<std::int64_t>(test::TestPane::wednesdayAt10);
    for (const char* channel : {"futures:NQM6", "futures:ESM6"})
        pane->snapshot(channel, test::flatBars(minute - 600, 11));
    return pane;
}
}  // namespace

void take(std::string_view text) {
    static std::unique_ptr<test::TestPane> pane;
    static int frames = 0;
    if (!pane) pane = openPane();
    std::string frame;
    for (const char c : text) frame += c == '%' ? "futures:NQM6" : std::string(1, c);
    const bool survived = survives([&] {
        pane->frame(frame);
        pane->time.advance(0.01);
        for (const auto* series :
             {&pane->model->bars.candles, &pane->model->bars.secondaryCandles, &pane->model->bars.vixCandles}) {
            const auto unordered = std::ranges::adjacent_find(*series, std::greater_equal(), &Candle::time);
            require(series->size() <= 5000 && unordered == series->end());
        }
        require(Json::parse(stateDocument({pane->time, {pane->model.get()}})).has_value());
        require(pane->model->log.logLines.size() <= PaneLog::maxLogLines);
    });
    // a fresh one now and then, so that what one frame left behind does not pile up
    if (!survived || ++frames % 200 == 0) pane.reset();
}

}  // namespace vmr::fuzz
