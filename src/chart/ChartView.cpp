#include "chart/ChartView.h"

#include <algorithm>
#include <utility>

#include "perf/Perf.h"

namespace vmr {

ChartView::ChartView(const Surroundings& at)
    : main_(at.main),
      renderer_(at.gpu, at.clock),
      watermark_(at.glyphs),
      barLabels_(at.glyphs),
      tradingLines_(at.glyphs),
      markedStrike_(at.glyphs),
      pills_(at.glyphs, ribbons_),
      axes_(at.glyphs, at.session),
      markedTag_(at.glyphs, markedStrike_),
      tradingTags_(at.glyphs, tradingLines_),
      input_(renderer_, at.session, at.clock, at.main, at.perf) {
    renderer_.addScreenLayer(watermark_);
    renderer_.addScreenLayer(barLabels_);
    renderer_.addScreenLayer(tradingLines_);
    renderer_.addScreenLayer(markedStrike_);
    renderer_.addScreenLayer(pills_);
    renderer_.addScreenLayer(axes_);
    renderer_.addScreenLayer(markedTag_);
    renderer_.addScreenLayer(tradingTags_);
    renderer_.perf = at.perf;
    renderer_.onNeedsDisplay = [this] { askForFrame(); };
    renderer_.onInteractionEnd = [this] {
        if (source_) source_->interactionEnded();
    };
    tradingLines_.trading = at.trading;
    tradingLines_.axes = markedStrike_.axes = &axes_;
    barLabels_.others = &pills_;
    pills_.account = axes_.account = markedStrike_.account = &tradingLines_;
    pills_.marked = axes_.marked = &markedStrike_;
    input_.trading = at.trading;
    input_.drawnMarks = &tradingLines_.marks();
    input_.onMarketClosedOrder = [this] {
        if (source_) source_->marketClosedOrder();
    };
    input_.onLiveRefresh = [this](bool on) {
        if (onLiveRefresh) onLiveRefresh(on);
        if (on) askForFrame();
    };
}

ChartView::~ChartView() { viewport_->publish(std::nullopt); }

void ChartView::askForFrame() {
    if (recording_) return;
    (onlyData_ ? calmFrameAwaited_ : frameAwaited_) = true;
    if (onNeedsFrame) onNeedsFrame(onlyData_ ? Need::calm : forPeer_ ? Need::join : Need::now);
}

void ChartView::askForOscillator() {
    if (below.onNeedsFrame) below.onNeedsFrame(recording_ ? Need::join : onlyData_ ? Need::calm : Need::now);
}

void ChartView::setSource(ChartSource* source) {
    if (source == source_) return;
    input_.letGo();  // the old source may hold back work until the drag ends
    source_ = source;
    contentDirty_ = source != nullptr;
    if (source)
        startOver();
    else
        setRoot({});
    askForFrame();
}

// Much of what a pane tells changes nothing on the chart. So the changes of a turn are read after it, once, and the
// renderer finds whether they are worth a frame; when one is awaited anyway, that reads them. A calm frame may be some
// time off, so it is left only what may wait as long.
void ChartView::contentChanged() {
    contentDirty_ = true;
    if (frameAwaited_ || std::exchange(readPosted_, true)) return;
    main_.post(whileThere_([this] {
        readPosted_ = false;
        if (calmFrameAwaited_ && source_ && onlyDataDiffers(source_->chartContent())) return;
        readSource();
    }));
}

bool ChartView::onlyDataDiffers(const ChartContent& content) const {
    return shown_ && shown_->chart == content.chart && shown_->timeframe == content.timeframe &&
           shown_->revisions.look == content.revisions.look && !renderer_.candles().empty() && !content.candles.empty();
}

void ChartView::readSource() {
    if (source_ && std::exchange(contentDirty_, false)) setContent(source_->chartContent());
}

void ChartView::startOver() {
    shown_.reset();
    ribbonsDue_ = false;
    ribbons_.clear();
    pills_.clear();
    input_.letGo();
    renderer_.startOver();
    viewport_->publish(std::nullopt);
    askForOscillator();
    if (onStartOver) onStartOver();
}

void ChartView::setCovered(std::span<const PointRect> boxes) {
    if (std::ranges::equal(covered_, boxes)) return;
    covered_.assign(boxes.begin(), boxes.end());
    pills_.covered = markedStrike_.covered = covered_;
    askForFrame();
}

void ChartView::setRoot(std::string_view root) {
    if (tradingLines_.root == root) return;
    if (input_.draggingLine()) input_.letGo();
    tradingLines_.root = input_.simRoot = root;
    askForFrame();
}

// The bars come last, so that the camera's rules for them see the rest as it is.
void ChartView::setContent(const ChartContent& content) {
    using Revisions = ChartContent::Revisions;
    const bool hadBars = !renderer_.candles().empty();
    onlyData_ = onlyDataDiffers(content);
    if (shown_ && shown_->chart != content.chart) startOver();
    const auto differs = [&](std::uint64_t Revisions::*part) {
        return !shown_ || shown_->revisions.*part != content.revisions.*part;
    };
    if (axes_.setTimeframe(content.timeframe)) askForFrame();
    if (axes_.setCountdown(content.look && content.look->countdown)) askForFrame();
    if (shown_ && content.hud && shown_->totals != content.totals) askForFrame();  // with which the line changes
    renderer_.sessionHHMM = content.sessionHHMM;
    if (differs(&Revisions::look)) renderer_.setRenderConfig(content.look ? *content.look : RenderConfig{});
    if (differs(&Revisions::levels)) renderer_.setLevels(content.levels);
    showNames(content, differs(&Revisions::levels) || differs(&Revisions::look));
    if (differs(&Revisions::strikes)) renderer_.setStrikes(content.strikes, content.etfRatio, content.flipStrike);
    if (differs(&Revisions::secStrikes)) renderer_.setSecStrikes(content.secStrikes, content.secRatio);
    if (markedStrike_.set(content.markedStrike, content.etfRatio)) askForFrame();
    setRoot(content.simRoot);
    if (differs(&Revisions::markers)) renderer_.setBubbles(content.bubbles, content.triangles);
    if (differs(&Revisions::overlays) || differs(&Revisions::srLines) || shown_->style != content.overlayStyle) {
        // ribbons cost the most of a tick, so of several changes before a frame only the last one's are made
        ribbonsDue_ = source_ && !recording_;
        if (ribbonsDue_)
            askForFrame();
        else
            makeRibbons(content);
    }
    if (differs(&Revisions::candles)) setBars(content.candles);
    if (differs(&Revisions::osc)) askForOscillator();
    shown_ = {content.chart, content.timeframe, content.revisions, content.overlayStyle, content.totals};
    onlyData_ = false;
    if (hadBars && renderer_.candles().empty()) askForFrame();
}

void ChartView::showNames(const ChartContent& content, bool newWalls) {
    bool asks = pills_.setSecondSymbol(content.secondSymbol);
    asks |= watermark_.set(content.symbol, content.timeframe);
    if (newWalls) asks |= pills_.setWalls(content.levels, !content.look || content.look->wallsEnabled);
    if (asks) askForFrame();
}

void ChartView::makeRibbons(const ChartContent& content) {
    ribbonsDue_ = false;
    if (pills_.setLines(content.srLines, content.revisions.srLines, content.overlayStyle)) askForFrame();
    renderer_.setOverlayGeometry(ribbons_.make({.series = content.overlays,
                                                .lines = content.srLines,
                                                .linesRevision = content.revisions.srLines,
                                                .style = content.overlayStyle,
                                                .candles = content.candles,
                                                .timeframe = content.timeframe}));
}

void ChartView::setBars(std::span<const Candle> candles) {
    const auto ends = [this] {
        const auto& bars = renderer_.candles();
        return std::pair(bars.size(), bars.empty() ? 0 : bars.back().time);
    };
    const auto before = ends();
    renderer_.setCandles(candles);
    barsMoved_ = barsMoved_ || before != ends();
    if (renderer_.perf && !renderer_.candles().empty()) renderer_.perf->startUp("bars");
}

std::optional<OverlayFacts> ChartView::overlayFacts() const {
    if (!viewport()) return std::nullopt;
    OverlayFacts out;
    for (const PillLayer::Mark& mark : pills_.marks())
        (mark.pill ? out.pills : out.labels).push_back({std::string(mark.text), mark.box, mark.ground()});
    std::ranges::reverse(out.pills);
    for (const BarLabelLayer::Mark& mark : barLabels_.marks()) {
        const BarLabel& label = *mark.label;
        out.strikes.push_back({label.text.substr(0, label.text.find_last_not_of(' ') + 1),
                               mark.box,
                               {static_cast<float>(label.r), static_cast<float>(label.g), static_cast<float>(label.b),
                                static_cast<float>(mark.opacity)}});
    }
    const auto ticks = [](const std::vector<AxisLayer::Named>& labels, std::vector<OverlayFacts::Tick>& to) {
        for (const AxisLayer::Named& label : labels) to.push_back({std::string(label.text.text()), label.at});
    };
    ticks(axes_.labels().priceTexts, out.prices);
    ticks(axes_.labels().timeTexts, out.times);
    if (const auto marked = markedStrike_.shownAt())
        out.marked = OverlayFacts::Tick{std::string(markedStrike_.title()), *marked};
    if (!watermark_.shown()) return out;
    if (!watermark_.title().empty()) out.watermark.emplace_back(watermark_.title());
    out.watermark.push_back(std::string(WatermarkLayer::nameBegin).append(WatermarkLayer::nameEnd));
    return out;
}

bool ChartView::record(double width, double height, double pixelRatio, double nowMonotonic, bool whole) {
    recording_ = true;
    frameAwaited_ = calmFrameAwaited_ = false;
    readSource();
    if (ribbonsDue_ && source_) makeRibbons(source_->chartContent());
    input_.setSize(width, height);
    input_.endLostDrag();
    tradingLines_.dragged = input_.draggedLine();
    const bool animating = renderer_.drawFrame(width, height, pixelRatio, nowMonotonic, whole);
    const std::optional<Viewport> moved = renderer_.movedTo();
    if (moved) viewport_->publish(moved);
    if (std::exchange(barsMoved_, false) || moved) {
        askForOscillator();
        if (onMoved) onMoved();
    }
    recording_ = false;
    return animating || input_.liveRefresh();
}

}  // namespace vmr
