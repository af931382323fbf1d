#include "ui/pane/PaneBinding.h"

#include <utility>

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

PaneBinding::PaneBinding(AppModel& model, PaneViewModel& view, MainLoop& main, const std::string& setupProblem,
                         const std::string& signInHint, SimEngine* sim)
    : model_(model), view_(view), main_(main), setupProblem_(text(setupProblem)), signInHint_(text(signInHint)) {
    setActions();
    watch();
    if (sim)
        connections_.push_back(sim->changed.connect([this](SimEngine::Field) { view_.chart.tellAccountChanged(); }));
    RendererBridge bridge;
    bridge.interacting = [this] { return view_.chart.interacting(); };
    bridge.setOverlayGeometry = [this](const OverlayLists& lists) {
        overlays_ = &lists;
        ++overlayRevision_;
        mark(chartConcern);
    };
    model_.setRendererBridge(std::move(bridge));
    marked_ = sessionConcern | toolbarConcern | toastConcern | chartConcern;
    flush();
}

PaneBinding::~PaneBinding() {
    model_.viewport.reset();
    model_.setRendererBridge({});
    view_.session.setActions({});
    view_.toolbar.setActions({});
    view_.chart.setActions({});
    view_.chart.setChart({});
}

void PaneBinding::setActions() {
    view_.session.setActions({
        [this](const QString& email, const QString& password, bool remember) {
            model_.signIn(email.toStdString(), password.toStdString(), remember);
        },
        [this] { model_.signOut(); },
    });
    view_.toolbar.setActions({
        [this](const QString& symbol) { model_.switchSymbol(symbol.toStdString()); },
        [this](int minutes) { model_.setTimeframe(minutes); },
    });
    view_.chart.setActions({
        [this] { model_.flashMarketClosedNotice(); },
        [this] { model_.interactionEnded(); },
        [this](const std::optional<Viewport>& viewport) { model_.viewport = viewport; },
    });
}

template <class... Fields>
void PaneBinding::watch(Concern concern, Fields&... fields) {
    (connections_.push_back(fields.changed.connect([this, concern] { mark(concern); })), ...);
}

void PaneBinding::watch() {
    watch(sessionConcern, model_.isSignedIn, model_.signingIn, model_.authError, model_.userEmail, model_.connected,
          model_.connLimited, model_.status);
    watch(toolbarConcern, model_.chartChannel, model_.timeframe, model_.catFutures, model_.catStocks);
    watch(toastConcern, model_.toast, model_.marketClosedNotice);
    watch(chartConcern, model_.displayCandles, model_.timeframe, model_.config, model_.levels, model_.strikes,
          model_.etfRatio, model_.gammaFlipStrike, model_.secStrikes, model_.secEtfRatio, model_.bubblePts,
          model_.trianglePts);
    connections_.push_back(model_.chartVersionChanged.connect([this] { mark(chartConcern); }));
}

void PaneBinding::mark(Concern concern) {
    const bool first = marked_ == 0;
    marked_ |= concern;
    if (!first) return;
    main_.post([this, alive = std::weak_ptr<int>(alive_)] {
        if (!alive.expired()) flush();
    });
}

void PaneBinding::flush() {
    ++flushes_;
    const unsigned concerns = std::exchange(marked_, 0);  // what the views do in turn belongs to the next flush
    if (concerns & toolbarConcern) view_.toolbar.set(toolbarState());
    if (concerns & toastConcern) view_.toast.set(toastState());
    if (concerns & chartConcern) view_.chart.setChart(chartState());
    if (concerns & sessionConcern) view_.session.set(sessionState());
}

SessionViewModel::State PaneBinding::sessionState() const {
    return {.entered = model_.isSignedIn,
            .signingIn = model_.signingIn,
            .authError = text(model_.authError.get().value_or("")),
            .setupProblem = setupProblem_,
            .signInHint = signInHint_,
            .userEmail = text(model_.userEmail),
            .connected = model_.connected,
            .connLimited = model_.connLimited,
            .status = text(model_.status)};
}

ToolbarViewModel::State PaneBinding::toolbarState() const {
    ToolbarViewModel::State out{.symbol = text(model_.currentSymbol()), .timeframe = model_.timeframe};
    for (const auto& future : model_.futuresList()) out.futures.push_back(text(future.first));
    for (const auto& stock : model_.stockList()) out.stocks.push_back(text(stock));
    return out;
}

ToastViewModel::State PaneBinding::toastState() const {
    if (const auto& toast = model_.toast.get()) return {text(toast->title), text(toast->detail.value_or(""))};
    if (model_.marketClosedNotice) return {QObject::tr("Market Closed"), QObject::tr("Trading resumes next session.")};
    return {};
}

ChartViewModel::Chart PaneBinding::chartState() const {
    return {.candles = &model_.displayCandles.get(),
            .timeframe = model_.timeframe,
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
            .simRoot = model_.simRoot};
}

}  // namespace vmr
