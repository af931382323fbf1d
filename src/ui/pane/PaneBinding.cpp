#include "ui/pane/PaneBinding.h"

#include "model/AppModel.h"
#include "sim/SimEngine.h"
#include "store/HexColor.h"

namespace vmr {

namespace {

Rgba opaque(const std::string& hex) {
    const Rgb color = HexColor::rgb(hex);
    return {static_cast<float>(color.r), static_cast<float>(color.g), static_cast<float>(color.b), 1.0F};
}

float share(double percent) { return static_cast<float>(percent / 100.0); }

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

}  // namespace

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

PaneBinding::PaneBinding(AppModel& model, PaneViewModel& view, const std::string& setupProblem,
                         const std::string& signInHint, SimEngine* sim)
    : model_(model), view_(view), setupProblem_(text(setupProblem)), signInHint_(text(signInHint)) {
    view_.setActions({
        [this](const QString& email, const QString& password, bool remember) {
            model_.signIn(email.toStdString(), password.toStdString(), remember);
        },
        [this] { model_.signOut(); },
        [this](const QString& symbol) { model_.switchSymbol(symbol.toStdString()); },
        [this](int minutes) { model_.setTimeframe(minutes); },
        [this] { model_.flashMarketClosedNotice(); },
        [this] { model_.interactionEnded(); },
        [this](const std::optional<Viewport>& viewport) { model_.viewport = viewport; },
    });
    watch();
    if (sim) connections_.push_back(sim->changed.connect([this](SimEngine::Field) { view_.tellAccountChanged(); }));
    copyFields();
    RendererBridge bridge;
    bridge.interacting = [this] { return view_.interacting(); };
    bridge.setOverlayGeometry = [this](const OverlayLists& lists) {
        overlays_ = &lists;
        ++overlayRevision_;
        copyChart();
    };
    model_.setRendererBridge(std::move(bridge));
    copyChart();
}

PaneBinding::~PaneBinding() {
    model_.viewport.reset();
    model_.setRendererBridge({});
    view_.setActions({});
    view_.setChart({});
}

void PaneBinding::watch() {
    const auto fields = [this] { copyFields(); };
    const auto chart = [this] { copyChart(); };
    connections_.push_back(model_.isSignedIn.changed.connect(fields));
    connections_.push_back(model_.signingIn.changed.connect(fields));
    connections_.push_back(model_.authError.changed.connect(fields));
    connections_.push_back(model_.userEmail.changed.connect(fields));
    connections_.push_back(model_.connected.changed.connect(fields));
    connections_.push_back(model_.connLimited.changed.connect(fields));
    connections_.push_back(model_.status.changed.connect(fields));
    connections_.push_back(model_.chartChannel.changed.connect(fields));
    connections_.push_back(model_.timeframe.changed.connect(fields));
    connections_.push_back(model_.catFutures.changed.connect(fields));
    connections_.push_back(model_.catStocks.changed.connect(fields));
    connections_.push_back(model_.toast.changed.connect(fields));
    connections_.push_back(model_.marketClosedNotice.changed.connect(fields));
    connections_.push_back(model_.displayCandles.changed.connect(chart));
    connections_.push_back(model_.chartVersionChanged.connect(chart));
    connections_.push_back(model_.config.changed.connect(chart));
    connections_.push_back(model_.levels.changed.connect(chart));
    connections_.push_back(model_.strikes.changed.connect(chart));
    connections_.push_back(model_.etfRatio.changed.connect(chart));
    connections_.push_back(model_.gammaFlipStrike.changed.connect(chart));
    connections_.push_back(model_.secStrikes.changed.connect(chart));
    connections_.push_back(model_.secEtfRatio.changed.connect(chart));
    connections_.push_back(model_.bubblePts.changed.connect(chart));
    connections_.push_back(model_.trianglePts.changed.connect(chart));
}

void PaneBinding::copyFields() {
    PaneViewModel::Fields out;
    out.entered = model_.isSignedIn;
    out.signingIn = model_.signingIn;
    out.authError = text(model_.authError.get().value_or(""));
    out.setupProblem = setupProblem_;
    out.signInHint = signInHint_;
    out.userEmail = text(model_.userEmail);
    out.connected = model_.connected;
    out.connLimited = model_.connLimited;
    out.status = text(model_.status);
    out.symbol = text(model_.currentSymbol());
    out.timeframe = model_.timeframe;
    if (const auto& toast = model_.toast.get()) {
        out.notice = text(toast->title);
        out.noticeDetail = text(toast->detail.value_or(""));
    } else if (model_.marketClosedNotice) {
        out.notice = QObject::tr("Market Closed");
        out.noticeDetail = QObject::tr("Trading resumes next session.");
    }
    for (const auto& future : model_.futuresList()) out.futures.push_back(text(future.first));
    for (const auto& stock : model_.stockList()) out.stocks.push_back(text(stock));
    view_.setFields(std::move(out));
}

void PaneBinding::copyChart() {
    view_.setChart({.candles = &model_.displayCandles.get(),
                    .config = renderConfig(model_.config),
                    .sessionHHMM = model_.sessionHHMM(),
                    .overlays = overlays_,
                    .overlayRevision = overlayRevision_,
                    .levels = &model_.levels.get(),
                    .strikes = &model_.strikes.get(),
                    .etfRatio = model_.etfRatio,
                    .flipStrike = model_.gammaFlipStrike,
                    .secStrikes = &model_.secStrikes.get(),
                    .secRatio = model_.secEtfRatio,
                    .bubbles = &model_.bubblePts.get(),
                    .triangles = &model_.trianglePts.get(),
                    .simRoot = model_.simRoot});
}

}  // namespace vmr
