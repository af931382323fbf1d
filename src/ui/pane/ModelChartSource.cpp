#include "ui/pane/ModelChartSource.h"

#include "chart/ChartView.h"
#include "model/AppModel.h"
#include "store/HexColor.h"

namespace vmr {

namespace {

Rgba opaque(const std::string& hex) {
    const Rgb color = HexColor::rgb(hex);
    return {static_cast<float>(color.r), static_cast<float>(color.g), static_cast<float>(color.b), 1.0F};
}

float share(double percent) { return static_cast<float>(percent / 100.0); }

}  // namespace

OverlayStyle overlayStyle(const GexConfig& config) {
    return {.ema1Color = opaque(config.ema1Color),
            .ema2Color = opaque(config.ema2Color),
            .hfLineOpacity = config.hfLineOpacity / 100,
            .lineOpacity = config.lineOpacity / 100,
            .showOpen = config.sessionEnabled && config.showOpen,
            .showPrev = config.sessionEnabled && config.showPrev,
            .showLevels = config.levelsEnabled};
}

RenderConfig renderConfig(const GexConfig& config) {
    RenderConfig out;
    out.candleTheme = config.candleTheme;
    out.gexEnabled = config.gexEnabled;
    out.gexLabels = config.gexLabels;
    out.dexEnabled = config.dexEnabled;
    out.dexLabels = config.dexLabels;
    out.gexOpacity = share(config.gexOpacity);
    out.bubblesEnabled = config.gexBubbles;
    out.bubbleOpacity = share(config.gexBubbleOpacity);
    out.bubblePos = opaque(config.gexPosColor);
    out.bubbleNeg = opaque(config.gexNegColor);
    out.trianglesEnabled = config.hfBubbles;
    out.triangleOpacity = share(config.hfTriangleOpacity);
    out.hfCall = opaque(config.hfCallColor);
    out.hfPut = opaque(config.hfPutColor);
    out.waveEnabled = config.hfLateralEnabled;
    out.waveMode = config.hfLateralMode;
    out.waveOpacity = share(config.hfLateralOpacity);
    out.wallsEnabled = config.wallsEnabled;
    out.oiEnabled = config.oiEnabled;
    out.oiOpacity = share(config.oiOpacity);
    out.initialCandles = static_cast<double>(config.initialCandles);
    return out;
}

template <class... Fields>
void ModelChartSource::watch(std::uint64_t ChartContent::Revisions::*part, Fields&... fields) {
    (connections_.push_back(fields.changed.connect([this, part] { changed(part); })), ...);
}

ModelChartSource::ModelChartSource(AppModel& model) : model_(model), look_(renderConfig(model.config)) {
    using Revisions = ChartContent::Revisions;
    connections_.push_back(model.config.changed.connect([this] {
        look_ = renderConfig(model_.config);
        changed(&Revisions::look);
    }));
    watch(&Revisions::candles, model.displayCandles, model.timeframe);
    connections_.push_back(model.chartVersionChanged.connect([this] { changed(&Revisions::candles); }));
    watch(&Revisions::levels, model.levels);
    watch(&Revisions::strikes, model.strikes, model.etfRatio, model.gammaFlipStrike);
    watch(&Revisions::secStrikes, model.secStrikes, model.secEtfRatio);
    watch(&Revisions::markers, model.bubblePts, model.trianglePts);
    watch(&Revisions::srLines, model.srLines);
    RendererBridge bridge;
    bridge.interacting = [this] { return port_ && port_->interacting(); };
    bridge.setOverlayGeometry = [this](const OverlayLists&) { changed(&Revisions::overlays); };
    model.setRendererBridge(std::move(bridge));
}

ModelChartSource::~ModelChartSource() {
    setPort(nullptr);
    model_.setRendererBridge({});
}

void ModelChartSource::changed(std::uint64_t ChartContent::Revisions::*part) {
    ++(revisions_.*part);
    if (port_) port_->contentChanged();
}

void ModelChartSource::setPort(ChartPort* port) {
    port_ = port;
    camera_.end();
    model_.viewport.reset();
    if (auto* view = dynamic_cast<ChartView*>(port))
        camera_ = view->viewportState()->changed.connect([this] { model_.viewport = port_->viewport(); });
}

ChartContent ModelChartSource::chartContent() const {
    ChartContent out;
    out.timeframe = model_.timeframe;
    out.sessionHHMM = model_.sessionHHMM();
    out.simRoot = model_.simRoot;
    out.look = &look_;
    out.candles = model_.displayCandles.get();
    out.levels = model_.levels.get();
    out.strikes = model_.strikes.get();
    out.etfRatio = model_.etfRatio;
    out.flipStrike = model_.gammaFlipStrike;
    out.secStrikes = model_.secStrikes.get();
    out.secRatio = model_.secEtfRatio;
    out.bubbles = model_.bubblePts.get();
    out.triangles = model_.trianglePts.get();
    out.overlays = &model_.overlays();
    out.overlayStyle = overlayStyle(model_.config);
    out.srLines = model_.srLines.get();
    out.revisions = revisions_;
    return out;
}

void ModelChartSource::interactionEnded() { model_.interactionEnded(); }

void ModelChartSource::marketClosedOrder() { model_.flashMarketClosedNotice(); }

}  // namespace vmr
