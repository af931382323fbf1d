// What a chart tells of the account's lines that it shows.
#include "chart/ChartView.h"

namespace vmr {

namespace {

EntryPill pillOf(const LineMark& mark, const ChartTrading& trading, const std::string& root, double tickValue) {
    return {mark.result, TradingTexts::result(trading.unrealized(root), tickValue)};
}

const LineMark* shownResult(const LineMarks& marks) {
    for (const LineMark& mark : marks.list())
        if (mark.result.width > 0) return &mark;
    return nullptr;
}

}  // namespace

std::optional<EntryPill> ChartView::entryPill() {
    const LineMarks& marks = tradingLines_.marks();
    const LineMark* mark = shownResult(marks);
    if (!mark || !renderer_.showsBars()) return std::nullopt;
    const EntryPill pill = pillOf(*mark, *tradingLines_.trading, tradingLines_.root, marks.tickValue());
    if (TradingTexts::room(pill.result.text.text()) > pill.box.width) askForFrame();
    return pill;
}

std::optional<TradingFacts> ChartView::tradingFacts() const {
    if (!viewport() || !tradingLines_.trading || tradingLines_.root.empty()) return std::nullopt;
    const LineMarks& marks = tradingLines_.marks();
    TradingFacts out{tradingLines_.root, {}, {}};
    for (const LineMark& mark : marks.list()) {
        using Kind = LineMark::Kind;
        const bool position = mark.kind == Kind::position;
        std::string id = position ? "entry" : mark.id.text();
        if (!mark.leg.empty()) (id += '/') += mark.leg;
        out.lines.push_back({.id = std::move(id),
                             .kind = position                   ? "position"
                                     : mark.kind == Kind::order ? "order"
                                                                : "leg",
                             .text = mark.label,
                             .tagText = std::string(mark.tagText.text()),
                             .price = mark.price,
                             .y = mark.y,
                             .shown = mark.drawn,
                             .dragged = mark.dragged,
                             .color = TradingLinesLayer::colorOf(mark),
                             .badge = mark.badge,
                             .closeMark = mark.closeMark,
                             .tag = mark.tag});
    }
    if (const LineMark* mark = shownResult(marks))
        out.pill = pillOf(*mark, *tradingLines_.trading, tradingLines_.root, marks.tickValue());
    return out;
}

}  // namespace vmr
