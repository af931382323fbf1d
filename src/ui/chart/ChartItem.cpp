#include "ui/chart/ChartItem.h"

#include <QCoreApplication>
#include <QQuickWindow>
#include <functional>
#include <span>
#include <utility>

#include "base/Log.h"
#include "perf/StartUp.h"
#include "ui/chart/ChartItemDrawing.h"
#include "ui/gpu/ChartNode.h"

namespace vmr {

namespace {

constexpr int longestWait = 100;  // milliseconds until a frame that was not shown holds up the next one no longer

template <class T>
std::span<const T> all(const std::vector<T>* list) {
    return list ? std::span<const T>(*list) : std::span<const T>();
}

}  // namespace

ChartItem::ChartItem(QQuickItem* parent) : QQuickItem(parent), drawing_(std::make_unique<Drawing>()) {
    setFlag(ItemHasContents);
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    setAcceptHoverEvents(true);
    setActiveFocusOnTab(true);
    drawing_->renderer.addScreenLayer(drawing_->barLabels);
    drawing_->renderer.addScreenLayer(drawing_->tradingLines);
    drawing_->renderer.addScreenLayer(drawing_->axis);
    drawing_->renderer.onNeedsDisplay = [this] { requestFrame(); };
    drawing_->renderer.onViewport = [this](double first, double count, double minP, double maxP) {
        if (Perf* perf = drawing_->renderer.perf) perf->bump("ChartOverlay");
        if (pane_ && pane_->actions().viewportChanged)
            pane_->actions().viewportChanged(Viewport{first, count, minP, maxP});
        if (pane_ && pane_->surroundings().bench.baseline) emit pane_->changed();
    };
    drawing_->renderer.onInteractionEnd = [this] {
        if (pane_ && pane_->actions().interactionEnded) pane_->actions().interactionEnded();
    };
    makeInput();
    watchSwapsOf(window());  // a parent in a window has brought it there already
}

ChartItem::~ChartItem() {
    disconnect(following_);
    leavePane();
}

void ChartItem::leavePane() {
    if (!pane_) return;
    disconnect(pane_, nullptr, this, nullptr);
    pane_->setInteractingProbe({});
    if (pane_->actions().viewportChanged) pane_->actions().viewportChanged(std::nullopt);
}

PaneViewModel* ChartItem::pane() const { return pane_; }

void ChartItem::setPane(PaneViewModel* pane) {
    if (pane == pane_) return;
    leavePane();
    pane_ = pane;
    makeInput();
    if (pane_) {
        pane_->setInteractingProbe([this] { return drawing_->renderer.interacting(); });
        connect(pane_, &PaneViewModel::chartChanged, this, &ChartItem::chartTold);
        connect(pane_, &PaneViewModel::changed, this, &ChartItem::chartTold);
        connect(pane_, &PaneViewModel::accountChanged, this, &ChartItem::requestFrame);
        drawing_->renderer.setOverlayGeometry({});
        drawing_->renderer.setCandles({});
        chartDirty_ = true;
        drawnOverlays_ = 0;
        requestFrame();
    }
    emit paneChanged();
}

ChartRenderer& ChartItem::renderer() { return drawing_->renderer; }

std::uint64_t ChartItem::framesDrawn() const { return drawing_->gpu.framesRecorded(); }

void ChartItem::setProblem(const QString& problem) {
    if (problem == problem_) return;
    problem_ = problem;
    if (!problem_.isEmpty()) Log::standardOutput().line("[chart] pipeline error: " + problem_.toStdString());
    emit problemChanged();
}

// `polish` and `update` go together, before a frame: an `update` from within `updatePolish` would ask for one frame too
// many.
void ChartItem::requestFrame() {
    if (recording_) return;
    if (drawing_->follower->onItsWay()) {
        if (!unshown_.isActive()) unshown_.start(longestWait, this);
        return;
    }
    frameAwaited_ = true;
    polish();
    update();
}

void ChartItem::componentComplete() {
    QQuickItem::componentComplete();
    requestFrame();
}

void ChartItem::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() == before.size()) return;
    drawing_->input->setSize(now.width(), now.height());
    updateCrosshair();
    requestFrame();
}

void ChartItem::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange) watchSwapsOf(data.window);
    const bool shown =
        (change == ItemVisibleHasChanged && data.boolValue) || (change == ItemSceneChange && data.window);
    if (shown || change == ItemDevicePixelRatioHasChanged) requestFrame();
}

// Much of what a pane tells changes nothing on the chart. So the news of a turn are taken after it, and the renderer
// finds whether they are worth a frame; while one is on its way, they wait for it.
void ChartItem::chartTold() {
    if (std::exchange(chartDirty_, true) || frameAwaited_) return;
    QMetaObject::invokeMethod(this, &ChartItem::takeChart, Qt::QueuedConnection);
}

// The bars come last, so that the camera's rules see the rest as it is.
void ChartItem::takeChart() {
    if (!pane_ || !std::exchange(chartDirty_, false)) return;
    const auto& chart = pane_->chart();
    ChartRenderer& renderer = drawing_->renderer;
    if (drawing_->axis.setTimeframe(pane_->timeframe())) requestFrame();
    renderer.sessionHHMM = chart.sessionHHMM;
    renderer.setRenderConfig(chart.config);
    renderer.setLevels(all(chart.levels));
    renderer.setStrikes(all(chart.strikes), chart.etfRatio, chart.flipStrike);
    renderer.setSecStrikes(all(chart.secStrikes), chart.secRatio);
    drawing_->input->simRoot = chart.simRoot;
    if (std::exchange(drawing_->tradingLines.root, chart.simRoot) != chart.simRoot) requestFrame();
    renderer.setBubbles(all(chart.bubbles), all(chart.triangles));
    if (chart.overlays && std::exchange(drawnOverlays_, chart.overlayRevision) != chart.overlayRevision)
        renderer.setOverlayGeometry(*chart.overlays);
    const bool emptied = pane_->empty() && !renderer.candles().empty();
    const auto lastBar = [&] { return renderer.candles().empty() ? 0 : renderer.candles().back().time; };
    const auto before = std::pair(renderer.candles().size(), lastBar());
    renderer.setCandles(all(chart.candles));
    barsMoved_ = barsMoved_ || before != std::pair(renderer.candles().size(), lastBar());
    if (!renderer.candles().empty()) startUpStage("bars");
    if (emptied) requestFrame();
}

void ChartItem::updatePolish() {
    animating_ = false;
    frameAwaited_ = false;
    if (!window() || width() <= 0 || height() <= 0) return;
    recording_ = true;
    takeChart();
    const auto record = [this] {
        const unsigned glyphs = drawing_->atlas.generation();
        animating_ = drawing_->renderer.drawFrame(width(), height(), window()->effectiveDevicePixelRatio(),
                                                  drawing_->clock.monotonic());
        drawing_->follower->recorded(drawing_->renderer.inputLagMs().has_value());
        const bool barsMoved = std::exchange(barsMoved_, false);
        if (barsMoved || drawing_->renderer.camera().snapLerps) updateCrosshair();  // with this frame, not after it
        return drawing_->atlas.generation() == glyphs;
    };
    if (!record()) {  // a layer's new glyphs moved those that another layer had drawn already
        Perf* const perf = std::exchange(drawing_->renderer.perf, nullptr);  // it is one frame
        record();
        drawing_->renderer.perf = perf;
    }
    recording_ = false;
    drawing_->recordedAt = drawing_->clock.monotonic();
}

// On the render thread with the main thread blocked, or on the main thread.
QSGNode* ChartItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    const QPointer<ChartItem> self(this);
    const auto report = [self](const QString& problem) {
        postToMain([self, problem] {
            if (self) self->setProblem(problem);
        });
    };
    if (!rhiOf(*window())) {
        report(tr("The chart needs OpenGL, Vulkan, Metal or Direct3D, and this window has only software drawing."));
        delete old;
        return nullptr;
    }
    auto* node = static_cast<ChartNode*>(old);
    if (!node) {
        node = new ChartNode(*window());
        node->onProblem = report;
        node->sampleCount = sampleCount_;
    }
    node->setItemSize(size());
    const bool given = drawing_->gpu.swapFrame(node->replay().frame());
    if (given) {
        drawing_->follower->handedOver();
        drawing_->timeGate();
    }
    auto& atlas = drawing_->atlas;
    if (auto change = atlas.takeChange(node->needsAtlas())) {
        node->replay().changeAtlas({atlas.size(), change->at, std::move(change->pixels)});
        node->atlasGiven();
    }
    node->markDirty(QSGNode::DirtyMaterial);
    if (!old && !given) {
        drawing_->follower->lost();  // with the node before
        requestFrame();
    }
    return node;
}

// A frame that is recorded while another one is being rendered waits for that, and the main thread with it: input that
// comes in the meantime has to wait for the frame after. So the next one is recorded when the last one is shown.
void ChartItem::frameShown() {
    if (drawing_->follower->onItsWay()) return;  // the news are of the frame before
    if (!drawing_->renderer.candles().empty()) startUpStage("drawn");
    const bool asked = unshown_.isActive();
    unshown_.stop();
    if (asked || animating_ || drawing_->input->liveRefresh()) requestFrame();
}

void ChartItem::frameTaken() {
    drawing_->follower->lost();
    frameShown();
}

// A window out of sight shows nothing.
void ChartItem::timerEvent(QTimerEvent* event) {
    if (event->timerId() == unshown_.timerId()) frameTaken();
}

}  // namespace vmr
